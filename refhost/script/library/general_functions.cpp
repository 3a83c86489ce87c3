// script/library/general_functions.cpp: print, len, type, str, range, assert, error, exit, clock

#include <fmt/format.h>

#include <chrono>

#include "script/library/arguments.hpp"
#include "script/library/characters.hpp"
#include "script/library/range.hpp"
#include "script/library/truth.hpp"
#include "script/stop/interruption.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

constexpr std::int64_t longest_range_table = 10'000'000;

Value print(const BuiltinCall& call) {
  const Printer printer = call.printer(Detail::brief);
  std::string text;
  for (const Value& argument : call.arguments) {
    if (!text.empty() || &argument != &call.arguments.front()) text += ' ';
    text += printer.text(argument);
  }
  call.print_lines(text);
  return {};
}

std::size_t characters_in(const Value& text) {
  return with_characters(text, [](auto characters) { return character_count(characters); });
}

Value len(const BuiltinCall& call) {
  Value& value = call.arguments[0];
  if (value.is_string()) return Value(static_cast<int>(characters_in(value)));
  if (value.is_table()) return Value(static_cast<int>(entry_count(table_of(value.record()))));
  const auto shape = value.is_object() ? shape_of(call.caller, value) : std::nullopt;
  if (!shape) call.fail(fmt::format("{} has no length", kind_in_words(value)));
  if (shape->empty()) call.fail("a zero-dimensional array has no length");
  return integer_value(shape->front());
}

Value type(const BuiltinCall& call) { return Value(kind_name(call.arguments[0])); }

Value str(const BuiltinCall& call) {
  const Value& value = call.arguments[0];
  if (value.is_string()) return value;
  return Value(call.printer(Detail::full).text(value));
}

Value range(const BuiltinCall& call) {
  Range range(call.arguments);
  if (range.count() > longest_range_table)
    call.fail(fmt::format("a table of {} numbers is too long; 'for' walks a range without one", range.count()));
  Value table = Value::table();
  for (int i = 0; range.has_more(); ++i, range.advance()) {
    obey_interruption();
    const Value number = range.value();
    set_entry(table_of(table.record()), i, number.record());
  }
  return table;
}

Value assertion(const BuiltinCall& call) {
  if (truth(call.arguments[0])) return {};
  if (call.arguments.size() == 1) throw Failure("assertion failed");
  throw Failure(fmt::format("assertion failed: {}", call.printer(Detail::brief).text(call.arguments[1])));
}

Value error(const BuiltinCall& call) { throw Failure(call.printer(Detail::brief).text(call.arguments[0])); }

Value exit(const BuiltinCall& call) {
  constexpr int highest_status = 255;
  const std::int64_t status = call.count() == 0 ? 0 : integer_argument(call, 0);
  if (status < 0 || status > highest_status)
    call.fail(fmt::format("the status is from 0 to {}, not {}", highest_status, status));
  throw ScriptExit(static_cast<int>(status));
}

Value clock(const BuiltinCall&) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return Value(std::chrono::duration<double>(now).count());
}

// clang-format off
constexpr Builtin general_rows[] = {
    {"assert", 1, 2, assertion, "assert(condition)\nassert(condition, text)", "Fails unless the condition holds.",
     "assert(1 < 2)\n"
     "assert(1 > 2, \"too small\")  # expect error: too small", Gives::nothing},
    {"clock", 0, 0, clock, "clock()", "Gives a time in seconds, for measuring durations.",
     "begin = clock()\n"
     "for i in range(1000) do end\n"
     "print(clock() - begin < 60)  # expect: 1"},
    {"error", 1, 1, error, "error(text)", "Fails with this message.",
     "error(\"no month 13\")  # expect error: no month 13", Gives::nothing},
    {"exit", 0, 1, exit, "exit()\nexit(status)", "Ends the script, with a status from 0 to 255.",
     "if not has(args, 0) then exit() end", Gives::nothing},
    {"len", 1, 1, len, "len(x)",
     "Gives the characters of a string, the entries of a table, or the first extent of an array.",
     "print(len(\"text\"), len([7, 8]))  # expect: 4 2"},
    {"print", 0, -1, print, "print(value, ...)", "Prints values with blanks between them.",
     "print(\"x =\", 2.5, [1, \"a\"])  # expect: x = 2.5 [1, \"a\"]", Gives::nothing},
    {"range", 1, 3, range, "range(stop)\nrange(start, stop)\nrange(start, stop, step)",
     "Gives a table of whole numbers; a for loop over a range makes no table.",
     "print(range(3), range(1, 3), range(4, 0, -2))  # expect: [0, 1, 2] [1, 2] [4, 2]\n"
     "for i in range(2) do print(i) end  # expect: 0 1"},
    {"str", 1, 1, str, "str(x)", "Gives the full text of a value.",
     "print(\"x\" + str(0.1))  # expect: x0.1"},
    {"type", 1, 1, type, "type(x)", "Gives the name of the kind of a value.",
     "print(type(1), type(1.0), type(\"a\"), type([]))  # expect: int real string table"},
};
// clang-format on

}  // namespace

BuiltinFamily general_functions() { return family_of(general_rows); }

}  // namespace hvm
