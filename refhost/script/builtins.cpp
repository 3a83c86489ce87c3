// script/builtins.cpp: print, len, type, str, range, assert, clock

#include "script/builtins.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "script/diagnostics.hpp"
#include "script/printer.hpp"
#include "script/value_kinds.hpp"

namespace hvm {
namespace {

constexpr std::int64_t longest_range_table = 10'000'000;

Value print(const BuiltinCall& call) {
  const Printer printer(call.caller, Detail::brief, call.has_guards);
  std::string text;
  for (const Value& argument : call.arguments) {
    if (!text.empty() || &argument != &call.arguments.front()) text += ' ';
    text += printer.text(argument);
  }
  const SourceText& source = *call.caller.source;
  call.print(text, source, source.line(call.span.end > 0 ? call.span.end - 1 : 0));
  return {};
}

Value len(const BuiltinCall& call) {
  Value& value = call.arguments[0];
  if (value.is_string()) return Value(HVM_StringLen(value.address()));
  if (value.is_table()) return Value(static_cast<int>(entry_count(table_of(value.record()))));
  const auto shape = value.is_object() ? shape_of(call.caller, value) : std::nullopt;
  if (!shape) throw Failure(fmt::format("len: {} has no length", kind_in_words(value)));
  if (shape->empty()) throw Failure("len: an array without axes has no length");
  const std::int64_t extent = shape->front();
  return extent == static_cast<std::int32_t>(extent) ? Value(static_cast<int>(extent)) : Value(extent);
}

Value type(const BuiltinCall& call) { return Value(kind_name(call.arguments[0])); }

Value str(const BuiltinCall& call) {
  const Value& value = call.arguments[0];
  if (value.is_string()) return value;
  return Value(Printer(call.caller, Detail::full, call.has_guards).text(value));
}

Value range(const BuiltinCall& call) {
  Range range = range_of(call.arguments);
  if (range.count() > longest_range_table)
    throw Failure(
        fmt::format("range: a table of {} numbers is too long; 'for' walks a range without one", range.count()));
  Value table = Value::table();
  for (int i = 0; range.has_more(); ++i, range.advance()) {
    const Value number = range.value();
    if (HostValue* place = slot(table_of(table.record()), i)) assign(*place, number.record());
  }
  return table;
}

Value assertion(const BuiltinCall& call) {
  if (truth(call.arguments[0])) return {};
  if (call.arguments.size() == 1) throw Failure("assertion failed");
  const Printer printer(call.caller, Detail::brief, call.has_guards);
  throw Failure(fmt::format("assertion failed: {}", printer.text(call.arguments[1])));
}

Value clock(const BuiltinCall&) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return Value(std::chrono::duration<double>(now).count());
}

constexpr std::array<Builtin, 7> builtins{{{"assert", 1, 2, assertion},
                                           {"clock", 0, 0, clock},
                                           {"len", 1, 1, len},
                                           {"print", 0, -1, print},
                                           {"range", 1, 3, range},
                                           {"str", 1, 1, str},
                                           {"type", 1, 1, type}}};

std::int64_t range_argument(const Value& value, bool& is_short) {
  HostValue record = value.record();
  if (value.tag() == ValueTag::integer64) is_short = false;
  const bool is_integer = value.tag() == ValueTag::integer || value.tag() == ValueTag::integer64;
  if (!is_integer) throw Failure(fmt::format("range: it takes integers, not {}", kind_in_words(value)));
  return HVM_AsInt64(&record);
}

}  // namespace

const Builtin* find_builtin(std::string_view name) {
  const auto found = std::find_if(builtins.begin(), builtins.end(), [&](const Builtin& b) { return b.name == name; });
  return found == builtins.end() ? nullptr : &*found;
}

std::vector<std::string_view> builtin_names() {
  std::vector<std::string_view> names;
  for (const Builtin& builtin : builtins) names.push_back(builtin.name);
  return names;
}

Value call_builtin(const Builtin& builtin, const BuiltinCall& call) {
  const int count = static_cast<int>(call.arguments.size());
  if (count < builtin.least || (builtin.most >= 0 && count > builtin.most)) {
    const auto least = static_cast<std::size_t>(builtin.least);
    const std::string wanted = builtin.least == builtin.most
                                   ? counted(least, "argument", "arguments")
                                   : fmt::format("{} to {} arguments", builtin.least, builtin.most);
    throw Failure(fmt::format("{}: it takes {}, not {}", builtin.name, wanted, count));
  }
  return builtin.body(call);
}

std::int64_t Range::count() const {
  if (!has_more()) return 0;
  // As unsigned numbers, the distance and the step of any range fit.
  const auto distance = step > 0 ? static_cast<std::uint64_t>(stop) - static_cast<std::uint64_t>(start)
                                 : static_cast<std::uint64_t>(start) - static_cast<std::uint64_t>(stop);
  const std::uint64_t stride = step > 0 ? static_cast<std::uint64_t>(step) : 0 - static_cast<std::uint64_t>(step);
  return static_cast<std::int64_t>(std::min<std::uint64_t>((distance - 1) / stride + 1, INT64_MAX));
}

void Range::advance() {
  if (__builtin_add_overflow(start, step, &start)) start = stop;
}

Range range_of(std::vector<Value>& arguments) {
  if (arguments.empty() || arguments.size() > 3)
    throw Failure(fmt::format("range: it takes 1 to 3 arguments, not {}", arguments.size()));
  Range range;
  std::vector<std::int64_t> numbers;
  for (const Value& argument : arguments) numbers.push_back(range_argument(argument, range.is_short));
  if (numbers.size() > 1) range.start = numbers[0];
  range.stop = numbers.size() > 1 ? numbers[1] : numbers[0];
  if (numbers.size() > 2) range.step = numbers[2];
  if (range.step == 0) throw Failure("range: the step is zero");
  return range;
}

}  // namespace hvm
