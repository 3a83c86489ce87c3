// processors/object_calls.cpp: methods, operators and elements over fixed input

#include <limits>

#include "processors/digest.hpp"
#include "processors/inputs.hpp"

namespace arrayfold::test {
namespace {

struct Operator {
  const char* name;
  const char* name_in_place;  // null for comparisons
  Opcode opcode;
};

constexpr Operator operators[] = {{"+", "+=", Opcode::add},
                                  {"-", "-=", Opcode::subtract},
                                  {"*", "*=", Opcode::multiply},
                                  {"/", "/=", Opcode::divide},
                                  {"%", "%=", Opcode::remainder},
                                  {"<", nullptr, Opcode::less},
                                  {"<=", nullptr, Opcode::less_equal},
                                  {">", nullptr, Opcode::greater},
                                  {">=", nullptr, Opcode::greater_equal},
                                  {"==", nullptr, Opcode::equal},
                                  {"!=", nullptr, Opcode::not_equal}};

/// The kinds that a host makes objects of.
const std::vector<Kind> registered = {Kind::boolean, Kind::int32, Kind::int64, Kind::float64};

bool divides(const Operator& op) { return op.opcode == Opcode::divide || op.opcode == Opcode::remainder; }

/// The array without the divisors by which a division of integers ends the process.
TestArray as_divisors(TestArray array) {
  if (!is_integer(array.kind())) return array;
  for (std::size_t i = 0; i < array.size(); ++i)
    if (array[i] == 0 || array[i] == -1) array.set(i, static_cast<int>(i % 5) + 2);
  return array;
}

void operate_on_arrays(DigestedCalls& calls, const TestArray& a, const TestArray& b) {
  for (const Operator& op : operators) {
    const Value left = to_host(calls.ctx(), a), right = to_host(calls.ctx(), divides(op) ? as_divisors(b) : b);
    calls.operate(op.name, op.opcode, left, right);
    if (op.name_in_place == nullptr) continue;
    Value changed = left;
    calls.change(op.name_in_place, op.opcode, changed, right);
  }
}

/// A number that no kind reads as zero or -1.
const std::vector<Value>& numbers() {
  static const std::vector<Value> all = {Value(3), Value(-7), Value(2.5), Value(std::int64_t{5'000'000'007}),
                                         Value(std::numeric_limits<int>::min())};
  return all;
}
/// The others, by which doubles alone are divided.
const std::vector<Value>& odd_numbers() {
  using Limits = std::numeric_limits<double>;
  static const std::vector<Value> all = {Value(0),
                                         Value(-1),
                                         Value(-0.0),
                                         Value(0.1),
                                         Value(Limits::quiet_NaN()),
                                         Value(-Limits::infinity()),
                                         Value(Limits::max())};
  return all;
}

void operate_with_number(DigestedCalls& calls, const Operator& op, const TestArray& array, const Value& number) {
  Value object = to_host(calls.ctx(), array);
  calls.operate(op.name, op.opcode, object, number);
  calls.operate(op.name, op.opcode, number, object);
  if (op.name_in_place != nullptr) calls.change(op.name_in_place, op.opcode, object, number);
}

void operate_with_numbers(DigestedCalls& calls, const TestArray& array) {
  for (const Operator& op : operators) {
    for (const Value& number : numbers()) operate_with_number(calls, op, array, number);
    if (divides(op) && is_integer(array.kind())) continue;
    for (const Value& number : odd_numbers()) operate_with_number(calls, op, array, number);
  }
}

void call_operators(DigestedCalls& calls) {
  for (const Kind kind : registered)
    for (const Content content : all_contents) {
      for (const Extents& extents : shapes()) {
        if (size_of(extents) > 10'000) continue;
        const TestArray a = fixed_array(kind, extents, content);
        operate_on_arrays(calls, a, fixed_array(kind, extents, content, 2));
        operate_on_arrays(calls, a, a);
        operate_with_numbers(calls, a);
      }
      for (const auto& [a, b] : broadcast_shapes())
        operate_on_arrays(calls, fixed_array(kind, a, content), fixed_array(kind, b, content, 2));
    }
  for (const Kind first : registered)
    for (const Kind second : registered)
      operate_on_arrays(calls, fixed_array(first, {5}, Content::few), fixed_array(second, {5}, Content::few));
}

std::vector<Value> indices_of(std::size_t place, const Extents& extents) {
  std::vector<Value> indices(extents.size());
  for (std::size_t axis = extents.size(); axis-- > 0; place /= extents[axis])
    indices[axis] = Value(static_cast<int>(place % extents[axis]));
  return indices;
}

void access_elements(DigestedCalls& calls) {
  for (const Kind kind : registered)
    for (const Extents& extents : {Extents{70}, {5, 7}, {3, 1, 4}, {2, 1, 3, 2, 2, 2}}) {
      Value array = to_host(calls.ctx(), fixed_array(kind, extents, Content::special));
      for (std::size_t place = 0; place < size_of(extents); ++place) {
        const std::vector<Value> indices = indices_of(place, extents);
        calls.read(array, indices);
        calls.write(array, indices, place % 2 == 0 ? Value(static_cast<int>(place)) : Value(-1.75));
        calls.read(array, {indices.back()});
      }
      calls.add("element written", array);
    }
}

void call_methods(DigestedCalls& calls) {
  for (const Kind kind : registered)
    for (const Extents& extents : shapes())
      for (const Content content : all_contents) {
        if (size_of(extents) > 300) continue;
        Value array = to_host(calls.ctx(), fixed_array(kind, extents, content));
        calls.method(array, "dump", {});
        calls.method(array, "dump", {Value(2)});
        calls.method(array, "shape", {});
        const int size = static_cast<int>(size_of(extents));
        for (const std::vector<Value>& wanted :
             {std::vector<Value>{Value(size)}, {Value(1), Value(size), Value(1)}, {Value(size / 2), Value(2)}}) {
          calls.method(array, "reshape", wanted);
          calls.add("reshape", array);
        }
      }
}

}  // namespace

void call_methods_and_operators(DigestedCalls& calls) {
  call_operators(calls);
  access_elements(calls);
  call_methods(calls);
}

}  // namespace arrayfold::test
