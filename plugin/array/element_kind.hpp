// array/element_kind.hpp: the kinds of element, one row each
//
// A row is an empty type that names the kind's element, its dtype as scripts write it and its object type as the host
// knows it. It is also the tag that tells the array classes apart. Nothing else in the module spells these names.

#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace arrayfold {

/// The code of a kind, by which the dtype names are looked up.
enum class ElementKind : int { boolean = 1, int32 = 2, int64 = 3, float32 = 4, float64 = 5 };

struct XTBool {
  using element = bool;
  static constexpr ElementKind code = ElementKind::boolean;
  static constexpr char dtype[] = "bool";
  static constexpr char type_name[] = "$xboolarray";
};

struct XTInt {
  using element = std::int32_t;
  static constexpr ElementKind code = ElementKind::int32;
  static constexpr char dtype[] = "int";
  static constexpr char type_name[] = "$xintarray";
};

struct XTInt64 {
  using element = std::int64_t;
  static constexpr ElementKind code = ElementKind::int64;
  static constexpr char dtype[] = "int64";
  static constexpr char type_name[] = "$xint64array";
};

// required: this kind stands in every order of kinds and is never registered with the host. No object of its type comes
// into being, so the host answers null for its name and a script that asks for it gets no array.
struct XTFloat {
  using element = float;
  static constexpr ElementKind code = ElementKind::float32;
  static constexpr char dtype[] = "float";
  static constexpr char type_name[] = "$xfloatarray";
};

struct XTDouble {
  using element = double;
  static constexpr ElementKind code = ElementKind::float64;
  static constexpr char dtype[] = "double";
  static constexpr char type_name[] = "$xdoublearray";
};

/// A list of kinds in an order that matters.
template <class... Kind>
struct kinds {};

/// Calls `use(kind...)` with a value of each kind of the list, in its order.
template <class... Kind, class Use>
constexpr auto for_kinds(kinds<Kind...>, Use use) {
  return use(Kind{}...);
}

using registered_kinds = kinds<XTBool, XTInt, XTInt64, XTDouble>;  // in the order of registration
using real_first = kinds<XTDouble, XTFloat, XTInt, XTInt64>;       // the order of most entries
using int_first = kinds<XTInt, XTInt64, XTFloat, XTDouble>;        // the order of `unbox_numeric`

/// The five dtype names and their kinds; looked up exactly as written. Built at load, never changed.
extern const std::unordered_map<std::string, ElementKind> dtype_table;

}  // namespace arrayfold
