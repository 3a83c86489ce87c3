// create/xarray.cpp: xarray
//
// The way from a script's data to an array. The first argument is a quotation that names the dtype. Without a second
// argument, the arguments in the quotation are the extents; otherwise the second argument, a table or a quoted data
// literal, holds the elements.

#include <algorithm>
#include <new>

#include "array/boxing.hpp"
#include "array/storage.hpp"
#include "reader/array_spec.hpp"
#include "reader/evaluation.hpp"
#include "reader/table_conversion.hpp"

namespace arrayfold {
namespace {

/// An array that keeps the gathered elements, fitted to the extents: too many are cut at the end, too few are followed
/// by zeros. It has no container yet. required: under the float name everything is read, computed and stored as
/// doubles, and then the host has no such type.
template <class Kind>
auto keeping(const Shape& extents, std::vector<StoredElement<Kind>>& elements) {
  const std::size_t count = checked_size(extents, sizeof(StoredElement<Kind>));
  if (count > elements.max_size()) throw std::bad_alloc();
  auto array = std::make_unique<ArrayOf<typename Kind::stored>>();
  array->data.swap(elements);
  reserve_elements(array->data, count);
  array->data.resize(count);
  return array;
}

template <class Kind>
Outcome from_dimensions(Kind kind, const Call& call, const Shape& extents) {
  std::vector<StoredElement<Kind>> none;
  auto array = keeping<Kind>(extents, none);
  array->array = make_zeros<StoredElement<Kind>>(extents);
  give_array(call, kind, std::move(array));
  return Outcome::handled;
}

template <class Kind>
Outcome from_gathered(Kind kind, const Call& call, ArrayData<StoredElement<Kind>>& data) {
  Shape extents;
  for (const int extent : data.shape) extents.push_back(extent_of(extent));
  auto array = keeping<Kind>(extents, data.values);
  array->array = make_container<StoredElement<Kind>>(extents);
  std::copy(array->data.begin(), array->data.end(), array->array->storage().begin());
  give_array(call, kind, std::move(array));
  return Outcome::handled;
}

template <class Kind>
Outcome from_table(Kind kind, const Call& call) {
  ArrayData<StoredElement<Kind>> data;
  auto* hash = load<HostHash*>(call.args[1].payload);
  // required: the array is made of the elements that were read, whether or not the table was read to its end.
  read_table_data<Kind>(data, call.ctx, hash, Kind::message, 0);
  return from_gathered(kind, call, data);
}

template <class Kind>
Outcome from_literal(Kind kind, const Call& call) {
  auto data = read_code_value<Kind>(call.ctx, call.args + 1);
  return data ? from_gathered(kind, call, *data) : Outcome::failed;
}

/// Calls `build(kind)` for the kind of this dtype name; returns `otherwise` when there is none.
template <class Build>
Outcome for_dtype(const std::string& name, Outcome otherwise, Build build) {
  const auto found = dtype_table.find(name);
  if (found == dtype_table.end()) return otherwise;
  Outcome outcome = otherwise;
  const auto try_as = [&](auto kind) {
    if (found->second != decltype(kind)::code) return false;
    outcome = build(kind);
    return true;
  };
  for_kinds(all_kinds{}, [&](auto... kind) { return (try_as(kind) || ...); });
  return outcome;
}

/// Reads extents from the values of the quotation's arguments. False when there are none, or one is no 32-bit integer.
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
  return for_dtype(spec.name, Outcome::failed, [&](auto kind) { return from_dimensions(kind, call, extents); });
}

// required: a second argument of another tag counts as handled, unlike arguments that are no extents.
Outcome make_from_data(const Call& call, const ArraySpec& spec) {
  return for_dtype(spec.name, Outcome::handled, [&](auto kind) {
    if (call.args[1].tag == ValueTag::code) return from_literal(kind, call);
    if (call.args[1].tag == ValueTag::table) return from_table(kind, call);
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
