// reader/table_conversion.hpp: gathering elements and shape from host tables and data literals
//
// Shape is not verified: each depth records the count of the last table or row that was visited there, numbers and
// nested tables may mix, and the elements are whatever came, in their order. Fitting them to the shape is the caller's.

#pragma once

#include <optional>
#include <vector>

#include "array/element_kind.hpp"
#include "reader/expression_reader.hpp"
#include "reader/table_cursor.hpp"

namespace arrayfold {

/// The working record of one conversion.
template <class T>
struct ArrayData {
  std::uint32_t cell_count = 0;  // cells of the row that ended last
  std::vector<int> shape;        // one entry for each depth
  std::vector<T> values;         // in order of arrival
};

/// How the elements of a kind are read from a host value, and what tells a script's author when they cannot be. The
/// elements are those that `xarray` stores: doubles under the float name.
template <class Kind>
struct Reading;

template <>
struct Reading<XTBool> {
  using element = bool;
  static constexpr ScalarIndex taken = unreadable_scalar;
  static constexpr char message[] = "初始化数组类型不对，必须是bool类型";
  static bool read(HostValue* value) { return HVM_AsBool(value) != 0; }
};

template <>
struct Reading<XTInt> {
  using element = std::int32_t;
  static constexpr ScalarIndex taken = int_scalar;
  static constexpr char message[] = "初始化数据数组不对，必须是int类型";
  static std::int32_t read(HostValue* value) { return HVM_AsInt(value); }
};

template <>
struct Reading<XTInt64> {
  using element = std::int64_t;
  static constexpr ScalarIndex taken = int64_scalar;
  static constexpr char message[] = "初始化数据数组不对，必须是int64类型";
  static std::int64_t read(HostValue* value) { return HVM_AsInt64(value); }
};

template <>
struct Reading<XTDouble> {
  using element = double;
  static constexpr ScalarIndex taken = real_scalar;
  static constexpr char message[] = "初始化数据数组不对，必须是double类型";
  static double read(HostValue* value) { return HVM_AsDouble(value); }
};

template <>
struct Reading<XTFloat> : Reading<XTDouble> {
  static constexpr char message[] = "初始化数据数组不对，必须是float类型";
};

/// Gathers from `hash` and the tables in it, from `depth` on. 0 at the first leaf that is no number: what was gathered
/// stands. `message` is the kind's, handed from level to level and never shown. Tables may nest however deep.
template <class Kind>
int read_table_data(ArrayData<typename Reading<Kind>::element>& data, HostContext ctx, HostHash* hash,
                    const char* message, std::size_t depth);

/// Gathers from a row of a data literal and the rows in it. Always true: a row that cannot be read ends early.
template <class Kind>
bool read_code_data(HostContext ctx, ExpressionEvaluator& evaluator, const HostCodeNode* node,
                    ArrayData<typename Reading<Kind>::element>& data, std::size_t depth);

/// Gathers from the data literal in `value`; nothing when it holds none.
template <class Kind>
std::optional<ArrayData<typename Reading<Kind>::element>> read_code_value(HostContext ctx, HostValue* value);

#define ARRAYFOLD_TABLE_CONVERSION(prefix, Kind)                                                                     \
  prefix template int read_table_data<Kind>(ArrayData<Reading<Kind>::element>&, HostContext, HostHash*, const char*, \
                                            std::size_t);                                                            \
  prefix template bool read_code_data<Kind>(HostContext, ExpressionEvaluator&, const HostCodeNode*,                  \
                                            ArrayData<Reading<Kind>::element>&, std::size_t);                        \
  prefix template std::optional<ArrayData<Reading<Kind>::element>> read_code_value<Kind>(HostContext, HostValue*);

ARRAYFOLD_TABLE_CONVERSION(extern, XTBool)
ARRAYFOLD_TABLE_CONVERSION(extern, XTInt)
ARRAYFOLD_TABLE_CONVERSION(extern, XTInt64)
ARRAYFOLD_TABLE_CONVERSION(extern, XTFloat)
ARRAYFOLD_TABLE_CONVERSION(extern, XTDouble)

}  // namespace arrayfold
