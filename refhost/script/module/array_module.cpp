// script/module/array_module.cpp: all that the host knows of the module with the arrays

#include "script/module/array_module.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "script/module/recent_shapes.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/text/integer_value.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

// More elements than any memory holds: the product of such extents has wrapped around.
constexpr std::int64_t most_elements = std::int64_t{1} << 48;
// An array without elements may still have rows, which the module walks one by one.
constexpr std::int64_t most_empty_rows = std::int64_t{1} << 20;

std::string type_name(const Value& object) { return type_name_of(object_of(object.record())); }

/// The kind in the name of an array type; empty for the name of another type.
std::string_view array_kind(std::string_view name) {
  constexpr std::string_view front = "$x";
  constexpr std::string_view back = "array";
  const bool is_array = name.size() > front.size() + back.size() && name.substr(0, front.size()) == front &&
                        name.substr(name.size() - back.size()) == back;
  return is_array ? name.substr(front.size(), name.size() - front.size() - back.size()) : std::string_view{};
}

// ---- Extents

/// The product of the extents that are not zero; no value when one is negative or the product is more than `limit`.
std::optional<std::int64_t> limited_product(const Extents& extents, std::int64_t limit) {
  std::int64_t product = 1;
  for (const std::int64_t extent : extents) {
    if (extent < 0) return std::nullopt;
    if (extent > 0 && __builtin_mul_overflow(product, extent, &product)) return std::nullopt;
    if (product > limit) return std::nullopt;
  }
  return product;
}

bool is_empty(const Extents& extents) { return std::find(extents.begin(), extents.end(), 0) != extents.end(); }

bool are_sound(const Extents& extents) {
  return limited_product(extents, is_empty(extents) ? most_empty_rows : most_elements).has_value();
}

void require_sound(const Extents& extents) {
  if (are_sound(extents)) return;
  throw Failure(fmt::format("an array cannot have the extents {}", in_parentheses(extents)));
}

// ---- Operators

/// What to do instead, where the kinds of the operands tell; begins with a colon.
std::string advice(BinaryOperator op, const std::optional<std::string>& left, const std::optional<std::string>& right) {
  if (left == "bool" || right == "bool") return ": a bool array takes '*=' with a number, and no other operator";
  if (!left && !right) return "";
  if (op == BinaryOperator::equal || op == BinaryOperator::not_equal) return ": it compares whole arrays of one kind";
  const bool has_doubles = left == "double" || right == "double";
  if (op == BinaryOperator::remainder && has_doubles) return ": doubles have no remainder";
  return "";
}

/// What selects elements by an array of this kind, as the end of a sentence.
const char* selection_for(const std::optional<std::string>& kind) {
  if (!kind) return "";
  return kind == "bool" ? "; mask(a, m) gives the elements where m is true, after use \"arrays\""
                        : "; take(a, positions) gives several elements, after use \"arrays\"";
}

/// The number that an integer array reads from an operand.
std::int64_t as_read(std::string_view type, Value& number) {
  return type == int_array_type ? HVM_AsInt(number.address()) : HVM_AsInt64(number.address());
}

void check_zero(BinaryOperator op, const Value& array, Value& number, bool is_number_first) {
  if (!array.is_object() || !number.is_number()) return;
  const std::string type = type_name(array);
  const bool is_integer_array = type == int_array_type || type == int64_array_type;
  if (!is_integer_array || as_read(type, number) != 0) return;
  const std::string written = number_text(number);
  std::string reason;
  if (is_number_first) reason = fmt::format(": {0} {1} a computes a {1} {0}", written, spelling(op));
  if (written != "0") reason += fmt::format("{} {} is read as 0", reason.empty() ? ":" : ", and", written);
  throw Failure(fmt::format("'{}' of an integer array with zero{}", spelling(op), reason));
}

// ---- Kinds in quotations

/// Whether an extent in a quotation is certainly no int.
bool is_no_int(const Expression& extent) {
  return is_literal(extent) && !std::holds_alternative<IntegerLiteral>(extent.form);
}

// ---- Arguments

bool are_numbers(const std::vector<Value>& values) {
  return std::all_of(values.begin(), values.end(), [](const Value& value) { return value.is_number(); });
}

/// The arguments that a function reads as integers of 32 bits and by which it makes an array.
struct IntArguments {
  std::string_view function;
  std::size_t first;
  std::size_t count;
};
constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
constexpr IntArguments int_arguments[] = {
    {"xzeros", 0, all}, {"xones", 0, all}, {"xempty", 0, all},  {"xrand", 0, all},   {"xrandn", 0, all},
    {"xeye", 0, 2},     {"xarange", 0, 3}, {"xlinspace", 2, 1}, {"xlogspace", 2, 1},
};

/// The module would read another number, and make an array of another size.
void require_32_bits(const std::string& name, std::vector<Value>& arguments, std::size_t first, std::size_t count) {
  for (std::size_t i = first; i < arguments.size() && i - first < count; ++i)
    if (is_beyond_32_bits(arguments[i]))
      throw Failure(
          fmt::format("{}: argument {} must fit into 32 bits; this is {}", name, i + 1, number_text(arguments[i])));
}

[[noreturn]] void fail_negative(const Extents& requested, std::int64_t count) {
  const auto is_negative = [](std::int64_t extent) { return extent < 0; };
  std::string message = fmt::format("reshape: the extents {} are negative", in_parentheses(requested));
  if (std::count_if(requested.begin(), requested.end(), is_negative) > 1) throw Failure(message);
  message += ", and none is inferred from the others";
  // The extent that would fit in the place of the negative one.
  Extents fitting = requested;
  std::int64_t& open = *std::find_if(fitting.begin(), fitting.end(), is_negative);
  open = 1;
  const auto others = is_empty(fitting) ? std::nullopt : limited_product(fitting, most_elements);
  if (!others || count % *others != 0) throw Failure(message);
  open = count / *others;
  throw Failure(fmt::format("{}. Write reshape{}.", message, in_parentheses(fitting)));
}

void check_reshape(const ModuleCaller& caller, Value& self, std::vector<Value>& arguments) {
  const auto present = shape_of(caller, self);
  if (!present || !are_numbers(arguments)) return;
  require_32_bits("reshape", arguments, 0, all);
  Extents requested;
  for (Value& argument : arguments) requested.push_back(HVM_AsInt(argument.address()));
  const std::string text = in_parentheses(requested);
  const std::int64_t count = element_count(*present);
  for (const std::int64_t extent : requested)
    if (extent < 0) fail_negative(requested, count);
  if (is_empty(requested) && !are_sound(requested))
    throw Failure(fmt::format("reshape: an array cannot have the extents {}", text));
  if (!is_empty(requested) && !limited_product(requested, std::max<std::int64_t>(count, 1)))
    throw Failure(fmt::format("reshape: the extents {} need more elements than the {} of the array", text, count));
}

void check_range(std::vector<Value>& arguments) {
  if (arguments.size() < 3 || !are_numbers(arguments)) return;
  const auto number = [&](std::size_t i) { return std::int64_t{HVM_AsInt(arguments[i].address())}; };
  const std::int64_t start = number(0), stop = number(1), step = number(2);
  if (step == 0) throw Failure("xarange: the step is zero as an integer");
  // The module divides the distance by the step, and then what it counts up to, both wrapped to 32 bits.
  const auto wrapped = [](std::int64_t x) { return std::int64_t{static_cast<std::int32_t>(x)}; };
  const auto has_no_quotient = [&](std::int64_t dividend, std::int64_t divisor) {
    return wrapped(dividend) == std::numeric_limits<std::int32_t>::min() && divisor == -1;
  };
  const bool counts = wrapped(stop - start) / step > 0;
  const bool counts_to_no_quotient =
      stop > start ? has_no_quotient(stop - start + step - 1, step) : has_no_quotient(start - stop - step - 1, -step);
  if (has_no_quotient(stop - start, step) || (counts && counts_to_no_quotient))
    throw Failure("xarange: argument 1 and argument 2 are more than 2147483647 apart");
}

/// The module reads 32 bits of an index: those of a longer one would be another index, and NaN would be 0.
void check_index(const Extents& extents, std::size_t axis, Value& index) {
  if (index.tag() == ValueTag::real && std::isnan(HVM_AsDouble(index.address()))) throw Failure("an index is NaN");
  const bool is_wide = index.tag() == ValueTag::integer64;
  const std::int64_t at = is_wide ? HVM_AsInt64(index.address()) : HVM_AsInt(index.address());
  if (at >= 0 && at < extents[axis]) return;
  throw Failure(fmt::format("index {} is outside of axis {}, which has {} elements (shape {})", at, axis, extents[axis],
                            in_parentheses(extents)));
}

}  // namespace

bool is_array_module(const ModuleFunctions& module) {
  return module.find("xarray") != nullptr && type_named("$xdoublearray") != nullptr;
}

bool do_broadcast(const Extents& left, const Extents& right) {
  const std::size_t common = std::min(left.size(), right.size());
  return std::equal(left.rbegin(), left.rbegin() + static_cast<std::ptrdiff_t>(common), right.rbegin(),
                    [](std::int64_t a, std::int64_t b) { return a == b || a == 1 || b == 1; });
}

bool names_kind(std::string_view name) {
  constexpr std::string_view kinds[] = {"bool", "int", "int64", "double", "float"};
  return std::find(std::begin(kinds), std::end(kinds), name) != std::end(kinds);
}

std::string_view array_kind_of(const Value& value) {
  return value.is_object() ? array_kind(type_name_of(object_of(value.record()))) : std::string_view{};
}

bool is_integer_array(const Value& value) {
  if (!value.is_object()) return false;
  const char* name = type_name_of(object_of(value.record()));
  return std::strncmp(name, "$xint", 5) == 0 && (name == int_array_type || name == int64_array_type);
}

std::optional<std::string> kind_of_array(const Value& value) {
  const std::string_view kind = array_kind_of(value);
  return kind.empty() ? std::nullopt : std::optional<std::string>(kind);
}

namespace {

std::optional<Extents> asked_shape(const ModuleCaller& caller, Value& object) {
  std::vector<Value> none;
  Value table;
  try {
    if (!call_method(caller, object, "shape", none, table) || !table.is_table()) return std::nullopt;
  } catch (const Failure&) {
    return std::nullopt;
  }
  Extents extents;
  TableWalk walk(table_of(table.record()));
  while (const Entry entry = walk.next()) {
    if (!HVM_NumberCheck(entry.value)) return std::nullopt;
    extents.push_back(HVM_AsInt64(entry.value));
  }
  return extents;
}

/// The extents of an object, valid until the next question; null when it has none.
const Extents* extents_of(const ModuleCaller& caller, Value& object) {
  const HostAny* any = object_of(object.record());
  if (const Extents* known = caller.shapes.find(any)) return known;
  auto asked = asked_shape(caller, object);
  return asked ? caller.shapes.keep(any, std::move(*asked)) : nullptr;
}

}  // namespace

std::optional<Extents> shape_of(const ModuleCaller& caller, Value& object) {
  const Extents* extents = extents_of(caller, object);
  return extents ? std::optional(*extents) : std::nullopt;
}

std::optional<std::string> dump_of(const ModuleCaller& caller, Value& object) {
  std::vector<Value> none;
  Value text;
  if (!call_method(caller, object, "dump", none, text) || !text.is_string()) return std::nullopt;
  return std::string(text_of(text.record()));
}

std::optional<std::string> element_text(const ModuleCaller& caller, Value& object, const Extents& position) {
  std::vector<Value> indices;
  for (const std::int64_t index : position) indices.emplace_back(static_cast<int>(index));
  // The module reads no element without an index; one index reaches the element of a zero-dimensional array.
  if (indices.empty()) indices.emplace_back(0);
  const auto element = read_element(caller, object, indices);
  if (!element || !element->is_number()) return std::nullopt;
  HostValue record = element->record();
  // The elements of a bool array come as the integers 0 and 1, and are shown as its dump shows them.
  if (kind_of_array(object) == "bool") return HVM_AsBool(&record) ? "true" : "false";
  if (element->tag() == ValueTag::real) return real_text(HVM_AsDouble(&record), Detail::brief);
  return fmt::format("{}", HVM_AsInt64(&record));
}

Value double_matrix(const ModuleCaller& caller, const ModuleFunctions& module, std::size_t rows, std::size_t columns,
                    const std::function<double()>& next) {
  const arrayfold::EntryFunction zeros = module.find("xzeros");
  if (!zeros) throw Failure("the module has no arrays of doubles");
  constexpr std::size_t largest_extent = std::numeric_limits<std::int32_t>::max();
  if (rows > largest_extent || columns > largest_extent)
    throw Failure(fmt::format("an array cannot have {} rows and {} columns", rows, columns));
  std::vector<Value> place{Value(static_cast<int>(rows)), Value(static_cast<int>(columns))};
  Value matrix = call_function(caller, "xzeros", zeros, place);
  if (!matrix.is_object()) throw Failure("the module made no array");
  for (std::size_t row = 0; row < rows; ++row) {
    place[0] = Value(static_cast<int>(row));
    for (std::size_t column = 0; column < columns; ++column) {
      place[1] = Value(static_cast<int>(column));
      Value element(next());
      if (!write_element(caller, matrix, place, element)) throw Failure("the module's array takes no element");
    }
  }
  return matrix;
}

std::string number_in_array(const ModuleCaller& caller, const Value& value) {
  Value array = value;
  const auto shape = kind_of_array(array) ? shape_of(untraced(caller), array) : std::nullopt;
  return shape && shape->empty() ? "; x[0] is the number in an array x without axes" : "";
}

std::string described(const ModuleCaller& caller, Value& value) {
  if (!value.is_object()) return kind_in_words(value);
  const auto shape = shape_of(caller, value);
  return shape ? fmt::format("{} {}", type_name(value), in_parentheses(*shape)) : type_name(value);
}

std::string undefined_operator(const ModuleCaller& caller, const std::string& name, BinaryOperator op, Value& left,
                               Value& right) {
  const auto left_kind = kind_of_array(left);
  const auto right_kind = kind_of_array(right);
  if (left_kind && right_kind && left_kind != right_kind)
    return fmt::format("{} array {} {} array: the kinds differ, and only arrays of one kind combine", *left_kind, name,
                       *right_kind);
  const std::string number = number_in_array(caller, left_kind ? left : right);
  const bool is_beside_number = left.is_number() || right.is_number();
  return fmt::format("'{}' is not defined for {} and {}{}", name, described(caller, left), described(caller, right),
                     is_beside_number && !number.empty() ? number + "." : advice(op, left_kind, right_kind));
}

std::string thrown_operator(const ModuleCaller& caller, const std::string& message, Value& left, Value& right) {
  if (left.is_object() && right.is_object()) {
    const auto left_shape = shape_of(caller, left);
    const auto right_shape = shape_of(caller, right);
    if (left_shape && right_shape && !do_broadcast(*left_shape, *right_shape))
      return fmt::format("the shapes {} and {} do not broadcast; {}", in_parentheses(*left_shape),
                         in_parentheses(*right_shape), message);
  }
  return fmt::format("{} (operands: {} and {})", message, described(caller, left), described(caller, right));
}

const char* failing_quotation(const std::string& function, const Quotation* dtype, const Quotation* data,
                              std::size_t arguments) {
  const auto* variable = dtype ? std::get_if<Variable>(&dtype->subject->form) : nullptr;
  if (function != "xarray" || !variable || dtype->form == Quotation::Form::data) return nullptr;
  if (dtype->form == Quotation::Form::text) return "`dtype` is `@$name`";
  if (data && data->form != Quotation::Form::data) return "`data` quotes something else than a data literal";
  if (arguments > 1) return nullptr;
  if (dtype->arguments.empty()) return "`dtype` stands alone and has no extents";
  const bool has_no_int = std::any_of(dtype->arguments.begin(), dtype->arguments.end(),
                                      [](const ExpressionPtr& extent) { return is_no_int(*extent); });
  // The module has read the extents before it looks at the name; nothing else is left when the name is one of a kind.
  return has_no_int || names_kind(variable->name) ? "an extent in `dtype` is no int"
                                                  : "`dtype` stands alone and names no kind";
}

void ArrayChecks::call(const std::string& function, std::vector<Value>& arguments) const {
  if (!are_on_) return;
  // Every call comes by here: names of other lengths are told apart without a look at their letters.
  constexpr std::string_view range_function = "xarange";
  const bool is_range = function == range_function;
  if (is_range && arguments.size() > 3) throw Failure("xarange: it takes at most three arguments (start, stop, step)");
  if (std::any_of(arguments.begin(), arguments.end(), is_beyond_32_bits))
    for (const IntArguments& read : int_arguments)
      if (function == read.function) require_32_bits(function, arguments, read.first, read.count);
  if (is_range) check_range(arguments);
}

void ArrayChecks::method(const ModuleCaller& caller, Value& self, const std::string& name,
                         std::vector<Value>& arguments) const {
  if (!are_on_ || name == "shape") return;
  if (name == "reshape") return check_reshape(caller, self, arguments);
  extents(caller, self);
}

void ArrayChecks::operation(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right) const {
  if (!are_on_) return;
  if (op == BinaryOperator::divide || op == BinaryOperator::remainder) {
    check_zero(op, left, right, false);
    // The module does not look at which operand is the number: it computes 0 / a as a / 0.
    check_zero(op, right, left, true);
  }
  if (left.is_object()) extents(caller, left);
  if (right.is_object()) extents(caller, right);
}

bool ArrayChecks::indices(const ModuleCaller& caller, Value& object, ValueSpan indices) const {
  if (!are_on_) return false;
  for (const Value& index : indices)
    if (!index.is_number()) {
      const std::string number = number_in_array(caller, index);
      throw Failure(fmt::format("an index must be a number, not {}{}", kind_in_words(index),
                                number.empty() ? selection_for(kind_of_array(index)) : number));
    }
  const Extents* extents = extents_of(caller, object);
  if (!extents) return false;
  require_sound(*extents);
  const std::size_t aligned = std::min(indices.size(), extents->size());
  for (std::size_t i = 0; i < aligned; ++i)
    check_index(*extents, extents->size() - aligned + i, indices[indices.size() - aligned + i]);
  if (is_empty(*extents)) throw Failure(fmt::format("the array has no elements (shape {})", in_parentheses(*extents)));
  return indices.size() < extents->size();
}

void ArrayChecks::extents(const ModuleCaller& caller, Value& object) const {
  if (!are_on_) return;
  if (const Extents* extents = extents_of(caller, object)) require_sound(*extents);
}

}  // namespace hvm
