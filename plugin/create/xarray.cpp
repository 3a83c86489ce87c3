// create/xarray.cpp: xarray
//
// The way from a script's data to an array. The first argument is a quotation that names the dtype; alone, its
// arguments are the dimensions, with a second argument the elements come from there: a table, or a quoted data literal.

#include <algorithm>
#include <new>

#include "array/boxing.hpp"
#include "reader/expression_reader.hpp"
#include "array/storage.hpp"
#include "reader/table_conversion.hpp"
#include "host/entry.hpp"

namespace arrayfold {
namespace {

// required: under the float name everything is read, computed and stored as doubles, and then the host has no such
// type.
template <class Kind>
using StoredKind = std::conditional_t<std::is_same_v<Kind, XTFloat>, XTDouble, Kind>;

/// Fits the gathered elements to the extents, copies them into the array's container and hands it over under the name
/// of `Kind`. Too many are cut at the end, too few are followed by zeros. The gathered elements stay with the array.
template <class Kind>
void give_elements(const Call& call, const Shape& extents, std::vector<typename StoredKind<Kind>::element>& elements) {
  using Element = typename StoredKind<Kind>::element;
  const std::size_t count = checked_size(extents, sizeof(Element));
  if (count > elements.max_size()) throw std::bad_alloc();
  auto array = std::make_unique<ArrayOf<StoredKind<Kind>>>();
  array->data.swap(elements);
  array->data.resize(count);
  array->array = std::make_shared<xarray_of<Element>>(extents);
  std::copy(array->data.begin(), array->data.end(), array->array->storage().begin());
  give_array<Kind>(call.ctx, call.result, std::move(array));
}

template <class Kind>
Outcome from_dimensions(const Call& call, const Shape& extents) {
  std::vector<typename StoredKind<Kind>::element> zeros;
  give_elements<Kind>(call, extents, zeros);
  return Outcome::handled;
}

template <class Kind>
Outcome from_gathered(const Call& call, ArrayData<typename StoredKind<Kind>::element>& data) {
  Shape extents;
  for (const int extent : data.shape) extents.push_back(extent_of(extent));
  give_elements<Kind>(call, extents, data.values);
  return Outcome::handled;
}

template <class Kind>
Outcome from_table(const Call& call) {
  ArrayData<typename StoredKind<Kind>::element> data;
  auto* hash = load<HostHash*>(call.args[1].payload);
  // required: whether all of it could be read does not matter; the array is made of what there is.
  read_table_data<Kind>(data, call.ctx, hash, Reading<Kind>::message, 0);
  return from_gathered<Kind>(call, data);
}

template <class Kind>
Outcome from_literal(const Call& call) {
  auto data = read_code_value<Kind>(call.ctx, call.args + 1);
  return data ? from_gathered<Kind>(call, *data) : Outcome::failed;
}

/// Calls `build(kind)` for the kind of this dtype name, and answers `otherwise` when there is none.
template <class Build>
Outcome for_dtype(const std::string& name, Outcome otherwise, Build build) {
  const auto found = dtype_table.find(name);
  if (found == dtype_table.end()) return otherwise;
  switch (found->second) {
    case ElementKind::boolean:
      return build(XTBool{});
    case ElementKind::int32:
      return build(XTInt{});
    case ElementKind::int64:
      return build(XTInt64{});
    case ElementKind::float32:
      return build(XTFloat{});
    case ElementKind::float64:
      return build(XTDouble{});
  }
  return otherwise;
}

/// Reads dimensions from what the quotation's arguments evaluated to. False: there are none, or one is no 32-bit
/// integer.
bool read_dimensions(const ExpressionEvaluator& evaluator, Shape& extents) {
  for (const ScalarRef& result : evaluator.results()) {
    if (result.index() != int_scalar) return false;
    extents.push_back(extent_of(std::get<int_scalar>(result)));
  }
  return !extents.empty();
}

Outcome make_by_dimensions(const Call& call, const ArraySpec& spec) {
  ExpressionEvaluator evaluator(call.ctx, spec.frame_base);
  evaluate_cell_list(evaluator, spec.args);
  Shape extents;
  if (!read_dimensions(evaluator, extents)) return Outcome::failed;
  return for_dtype(spec.name, Outcome::failed,
                   [&](auto kind) { return from_dimensions<decltype(kind)>(call, extents); });
}

// required: data that is of no use counts as handled, unlike dimensions that are of no use.
Outcome make_from_data(const Call& call, const ArraySpec& spec) {
  return for_dtype(spec.name, Outcome::handled, [&](auto kind) {
    using Kind = decltype(kind);
    if (call.args[1].tag == ValueTag::code) return from_literal<Kind>(call);
    if (call.args[1].tag == ValueTag::table) return from_table<Kind>(call);
    return Outcome::handled;
  });
}

}  // namespace

Outcome xarray(const Call& call) {
  const auto spec = read_array_spec(call.ctx, call.args);
  if (!spec) return Outcome::failed;
  return call.nargs == 1 ? make_by_dimensions(call, *spec) : make_from_data(call, *spec);
}

}  // namespace arrayfold
