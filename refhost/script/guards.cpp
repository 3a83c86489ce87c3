// script/guards.cpp: what the host checks because the module does not

#include "script/guards.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <limits>
#include <string_view>

#include "script/diagnostics.hpp"
#include "script/value_kinds.hpp"

namespace hvm {
namespace {

using Extents = std::vector<std::int64_t>;

// More elements than any memory holds: whoever shows such extents has wrapped around.
constexpr std::int64_t most_elements = std::int64_t{1} << 48;
// An array without elements may still have rows, which a module walks one by one.
constexpr std::int64_t most_empty_rows = std::int64_t{1} << 20;

/// The product of the extents that are not zero; nothing when one is negative or the product passes `limit`.
std::optional<std::int64_t> claimed(const Extents& extents, std::int64_t limit) {
  std::int64_t product = 1;
  for (const std::int64_t extent : extents) {
    if (extent < 0) return std::nullopt;
    if (extent > 0 && __builtin_mul_overflow(product, extent, &product)) return std::nullopt;
    if (product > limit) return std::nullopt;
  }
  return product;
}

bool is_empty(const Extents& extents) {
  for (const std::int64_t extent : extents)
    if (extent == 0) return true;
  return false;
}

std::int64_t element_count(const Extents& extents) {
  return is_empty(extents) ? 0 : claimed(extents, most_elements).value_or(0);
}

bool are_sound(const Extents& extents) {
  return claimed(extents, is_empty(extents) ? most_empty_rows : most_elements).has_value();
}

void require_sound(const Extents& extents) {
  if (are_sound(extents)) return;
  throw Failure(fmt::format("the array's extents ({}) claim more than its elements", fmt::join(extents, ", ")));
}

bool are_numbers(std::vector<Value>& values) {
  for (const Value& value : values)
    if (!value.is_number()) return false;
  return true;
}

/// The extents that `reshape` would read from its arguments.
Extents requested_extents(std::vector<Value>& arguments) {
  Extents extents;
  for (Value& argument : arguments) extents.push_back(HVM_AsInt(argument.address()));
  return extents;
}

void guard_reshape(const ModuleCaller& caller, Value& self, std::vector<Value>& arguments) {
  const auto present = shape_of(caller, self);
  if (!present || !are_numbers(arguments)) return;
  const Extents requested = requested_extents(arguments);
  const auto text = [&] { return fmt::format("({})", fmt::join(requested, ", ")); };
  for (const std::int64_t extent : requested)
    if (extent < 0) throw Failure(fmt::format("reshape: the extents {} are negative", text()));
  const std::int64_t count = element_count(*present);
  const bool is_beyond =
      is_empty(requested) ? !are_sound(requested) : !claimed(requested, std::max<std::int64_t>(count, 1));
  if (is_beyond) throw Failure(fmt::format("reshape: the extents {} claim more than the {} elements", text(), count));
}

bool is_integer_array(const Value& value, std::string_view& kind) {
  if (!value.is_object()) return false;
  kind = type_name_of(object_of(value.record()));
  return kind == "$xintarray" || kind == "$xint64array";
}

/// What an integer array makes of a number operand.
std::int64_t as_read(std::string_view kind, Value& number) {
  return kind == "$xintarray" ? HVM_AsInt(number.address()) : HVM_AsInt64(number.address());
}

void guard_zero(BinaryOperator op, const Value& array, Value& number) {
  std::string_view kind;
  if (!is_integer_array(array, kind) || !number.is_number() || as_read(kind, number) != 0) return;
  throw Failure(fmt::format("'{}' of an integer array with zero", spelling(op)));
}

void guard_index(const Extents& extents, std::size_t axis, Value& index) {
  const std::int64_t at = HVM_AsInt(index.address());
  if (at >= 0 && at < extents[axis]) return;
  throw Failure(fmt::format("index {} is outside of axis {}, which has {} elements (shape ({}))", at, axis,
                            extents[axis], fmt::join(extents, ", ")));
}

}  // namespace

void guard_call(const std::string& name, std::vector<Value>& arguments) {
  if (name != "xarange") return;
  if (arguments.size() > 3) throw Failure("xarange: it takes at most three arguments (start, stop, step)");
  if (arguments.size() < 3 || !are_numbers(arguments)) return;
  const auto number = [&](std::size_t i) { return HVM_AsInt(arguments[i].address()); };
  if (number(2) == 0) throw Failure("xarange: the step is zero as an integer");
  const auto length =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(number(1)) - static_cast<std::uint32_t>(number(0)));
  if (number(2) == -1 && length == std::numeric_limits<std::int32_t>::min())
    throw Failure("xarange: the range has more than 2147483647 elements");
}

void guard_extents(const ModuleCaller& caller, Value& object) {
  if (const auto extents = shape_of(caller, object)) require_sound(*extents);
}

void guard_method(const ModuleCaller& caller, Value& self, const std::string& name, std::vector<Value>& arguments) {
  if (name == "shape") return;
  if (name == "reshape") return guard_reshape(caller, self, arguments);
  guard_extents(caller, self);
}

void guard_operator(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right) {
  if (op == BinaryOperator::divide || op == BinaryOperator::remainder) {
    guard_zero(op, left, right);
    // The side of a number is not looked at: 0 / a is a / 0 for the array.
    guard_zero(op, right, left);
  }
  if (left.is_object()) guard_extents(caller, left);
  if (right.is_object()) guard_extents(caller, right);
}

void guard_indices(const ModuleCaller& caller, Value& object, std::vector<Value>& indices) {
  for (const Value& index : indices)
    if (!index.is_number()) throw Failure(fmt::format("an index must be a number, not {}", kind_in_words(index)));
  const auto extents = shape_of(caller, object);
  if (!extents) return;
  require_sound(*extents);
  const std::size_t aligned = std::min(indices.size(), extents->size());
  for (std::size_t i = 0; i < aligned; ++i)
    guard_index(*extents, extents->size() - aligned + i, indices[indices.size() - aligned + i]);
  if (is_empty(*extents))
    throw Failure(fmt::format("the array has no elements (shape ({}))", fmt::join(*extents, ", ")));
}

}  // namespace hvm
