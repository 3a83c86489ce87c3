// array/element_kind.hpp: the kinds of element, one row each
//
// A row is an empty type that owns all that is true of a kind: its element, the kind in which its results are stored,
// the names by which scripts and the host know it, and how an element is read from a host value, given to one and made
// from a floating-point number. It is also the tag that tells the array classes apart. Nothing else in the module
// spells these names.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <unordered_map>

#include "host/host_operations.hpp"
#include "kernels/conversion.hpp"

namespace arrayfold {

/// The code of a kind, by which the dtype names are looked up.
enum class ElementKind : int { boolean = 1, int32 = 2, int64 = 3, float32 = 4, float64 = 5 };

// Each row has
//   element      the type of an element in memory
//   stored       the kind in which arrays of computed results are stored
//   code         its ElementKind
//   dtype        its name in scripts
//   type_name    the name of its object type
//   literal      the value of a literal that is an element in a quoted data literal
//   message      what `read_table_data` hands from table to table; no script ever sees it
//   read         the element that the host reads in a number
//   give         gives the stored element to the host as a number
//   from_double  a floating-point number as an element: NaN and what the type cannot hold become its smallest value

struct XTBool {
  using element = bool;
  using stored = XTBool;
  using literal = bool;
  static constexpr ElementKind code = ElementKind::boolean;
  static constexpr char dtype[] = "bool";
  static constexpr char type_name[] = "$xboolarray";
  static constexpr char message[] = "初始化数组类型不对，必须是bool类型";

  static element read(HostValue* value) { return HVM_AsBool(value) != 0; }
  /// required: a truth value is given as its stored byte, an integer.
  static void give(HostContext ctx, HostValue* value, const element* stored_element) {
    HVM_SetInt(ctx, value, load<std::uint8_t>(stored_element));
  }
  static constexpr element from_double(double x) { return x != 0; }
};

struct XTInt {
  using element = std::int32_t;
  using stored = XTInt;
  using literal = std::int32_t;
  static constexpr ElementKind code = ElementKind::int32;
  static constexpr char dtype[] = "int";
  static constexpr char type_name[] = "$xintarray";
  static constexpr char message[] = "初始化数据数组不对，必须是int类型";

  static element read(HostValue* value) { return HVM_AsInt(value); }
  static void give(HostContext ctx, HostValue* value, const element* stored_element) {
    HVM_SetInt(ctx, value, *stored_element);
  }
  static constexpr element from_double(double x) { return truncated<element>(x); }
};

struct XTInt64 {
  using element = std::int64_t;
  using stored = XTInt64;
  using literal = std::int64_t;
  static constexpr ElementKind code = ElementKind::int64;
  static constexpr char dtype[] = "int64";
  static constexpr char type_name[] = "$xint64array";
  static constexpr char message[] = "初始化数据数组不对，必须是int64类型";

  static element read(HostValue* value) { return HVM_AsInt64(value); }
  static void give(HostContext ctx, HostValue* value, const element* stored_element) {
    HVM_SetInt64(ctx, value, *stored_element);
  }
  static constexpr element from_double(double x) { return truncated<element>(x); }
};

struct XTDouble {
  using element = double;
  using stored = XTDouble;
  using literal = double;
  static constexpr ElementKind code = ElementKind::float64;
  static constexpr char dtype[] = "double";
  static constexpr char type_name[] = "$xdoublearray";
  static constexpr char message[] = "初始化数据数组不对，必须是double类型";

  static element read(HostValue* value) { return HVM_AsDouble(value); }
  static void give(HostContext ctx, HostValue* value, const element* stored_element) {
    HVM_SetReal(ctx, value, *stored_element);
  }
  static constexpr element from_double(double x) { return x; }
};

// required: this kind stands in every order of kinds and is never registered with the host. No object of its type comes
// into being, so the host returns null for its name and a script that asks for it gets no array. What is made under its
// name is stored in doubles.
struct XTFloat {
  using element = float;
  using stored = XTDouble;
  using literal = double;
  static constexpr ElementKind code = ElementKind::float32;
  static constexpr char dtype[] = "float";
  static constexpr char type_name[] = "$xfloatarray";
  static constexpr char message[] = "初始化数据数组不对，必须是float类型";

  static element read(HostValue* value) { return static_cast<element>(HVM_AsDouble(value)); }
  static void give(HostContext ctx, HostValue* value, const element* stored_element) {
    HVM_SetReal(ctx, value, static_cast<double>(*stored_element));
  }
  static constexpr element from_double(double x) { return static_cast<element>(x); }
};

/// The type of an element of computed results.
template <class Kind>
using StoredElement = typename Kind::stored::element;

/// A computed number as an element of `Kind`: integers without the fraction of a floating-point number, or without the
/// upper half of a wider integer.
template <class Kind, class Computed>
constexpr typename Kind::element element_from(Computed x) {
  if constexpr (std::is_floating_point_v<Computed>)
    return Kind::from_double(static_cast<double>(x));
  else
    return static_cast<typename Kind::element>(x);
}

/// A list of kinds in an order that matters.
template <class... Kind>
struct kinds {};

/// Calls `use(kind...)` with a value of each kind of the list, in its order.
template <class... Kind, class Use>
constexpr auto for_kinds(kinds<Kind...>, Use use) {
  return use(Kind{}...);
}

/// The number of kinds in a list.
template <class... Kind>
constexpr std::size_t kind_count(kinds<Kind...>) {
  return sizeof...(Kind);
}

using all_kinds = kinds<XTBool, XTInt, XTInt64, XTFloat, XTDouble>;  // by code
using registered_kinds = kinds<XTBool, XTInt, XTInt64, XTDouble>;    // in the order of registration
using double_first = kinds<XTDouble, XTFloat, XTInt, XTInt64>;       // the order of most entries
using int_first = kinds<XTInt, XTInt64, XTFloat, XTDouble>;          // the order of `unbox_numeric`

/// One value per kind of a list, looked up by kind. A source exports its template instances through such a table.
template <class Kinds, template <class Kind> class Value>
class KindTable;

template <class... Kind, template <class> class Value>
class KindTable<kinds<Kind...>, Value> {
 public:
  constexpr explicit KindTable(Value<Kind>... values) : rows_{{values}...} {}

  template <class Wanted>
  constexpr Value<Wanted> of() const {
    return static_cast<const Row<Wanted>&>(rows_).value;
  }

 private:
  template <class OfKind>
  struct Row {
    Value<OfKind> value;
  };
  struct Rows : Row<Kind>... {};

  Rows rows_;
};

/// The five dtype names and their kinds; looked up exactly as written. Built at load, never changed.
extern const std::unordered_map<std::string, ElementKind> dtype_table;

}  // namespace arrayfold
