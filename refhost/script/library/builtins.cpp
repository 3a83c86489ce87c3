// script/library/builtins.cpp: print, len, type, str, range, assert, clock

#include "script/library/builtins.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "script/library/range.hpp"
#include "script/library/truth.hpp"
#include "script/module/object_text.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/printer.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

constexpr std::int64_t longest_range_table = 10'000'000;

Printer printer_for(const BuiltinCall& call, Detail detail) {
  return Printer(detail, object_text(call.caller, call.checks, detail));
}

Value print(const BuiltinCall& call) {
  const Printer printer = printer_for(call, Detail::brief);
  std::string text;
  for (const Value& argument : call.arguments) {
    if (!text.empty() || &argument != &call.arguments.front()) text += ' ';
    text += printer.text(argument);
  }
  const SourceText& source = *call.caller.source;
  call.print(text, source, source.line(call.span.end > 0 ? call.span.end - 1 : 0));
  return {};
}

std::size_t characters_in(const Value& text) {
  const HostValue& record = text.record();
  return text.tag() == ValueTag::wide_string ? character_count(wide_text_of(record)) : character_count(text_of(record));
}

Value len(const BuiltinCall& call) {
  Value& value = call.arguments[0];
  if (value.is_string()) return Value(static_cast<int>(characters_in(value)));
  if (value.is_table()) return Value(static_cast<int>(entry_count(table_of(value.record()))));
  const auto shape = value.is_object() ? shape_of(call.caller, value) : std::nullopt;
  if (!shape) throw Failure(fmt::format("len: {} has no length", kind_in_words(value)));
  if (shape->empty()) throw Failure("len: a zero-dimensional array has no length");
  const std::int64_t extent = shape->front();
  return extent == static_cast<std::int32_t>(extent) ? Value(static_cast<int>(extent)) : Value(extent);
}

Value type(const BuiltinCall& call) { return Value(kind_name(call.arguments[0])); }

Value str(const BuiltinCall& call) {
  const Value& value = call.arguments[0];
  if (value.is_string()) return value;
  return Value(printer_for(call, Detail::full).text(value));
}

Value range(const BuiltinCall& call) {
  Range range(call.arguments);
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
  throw Failure(fmt::format("assertion failed: {}", printer_for(call, Detail::brief).text(call.arguments[1])));
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

}  // namespace

const Builtin* find_builtin(std::string_view name) {
  const auto found = std::find_if(builtins.begin(), builtins.end(), [&](const Builtin& b) { return b.name == name; });
  return found == builtins.end() ? nullptr : &*found;
}

std::vector<std::string_view> builtin_names() {
  std::vector<std::string_view> names;
  names.reserve(builtins.size());
  for (const Builtin& builtin : builtins) names.push_back(builtin.name);
  return names;
}

Value call_builtin(const Builtin& builtin, const BuiltinCall& call) {
  const int count = static_cast<int>(call.arguments.size());
  if (count < builtin.minimum || (builtin.maximum >= 0 && count > builtin.maximum)) {
    const std::string wanted = builtin.minimum == builtin.maximum
                                   ? counted(static_cast<std::size_t>(builtin.minimum), "argument", "arguments")
                                   : fmt::format("{} to {} arguments", builtin.minimum, builtin.maximum);
    throw Failure(fmt::format("{}: it takes {}, not {}", builtin.name, wanted, count));
  }
  return builtin.body(call);
}

}  // namespace hvm
