// script/library/text_functions.cpp: text: format, join, split, find, replace, trim, upper, lower
//
// Positions count characters, as `len` does. All forms of strings are taken, and the results are strings in UTF-8. A
// byte that is not part of a valid character counts as a character and is kept.

#include <fmt/args.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "script/library/arguments.hpp"
#include "script/module/array_module.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

// ---- format

constexpr std::int64_t longest_field = 1'000'000;

/// Fails on a width or precision that would fill the memory. fmt itself takes up to 2147483647. It reads the pattern
/// as fmt does, and leaves it to fmt to say what is wrong in it. It also finds the arguments that are written as reals.
class FieldCheck {
 public:
  FieldCheck(const BuiltinCall& call, std::string_view pattern)
      : call_(call), pattern_(pattern), is_written_as_real_(call.count()) {}

  /// Whether a field writes the argument as a real: its type is one of `aAeEfFgG`.
  bool is_written_as_real(std::size_t i) const { return is_written_as_real_[i]; }

  void check() {
    while (at_ < pattern_.size()) {
      if (pattern_[at_++] != '{') continue;
      if (next_is('{')) {
        ++at_;
      } else {
        field();
      }
    }
  }

 private:
  bool next_is(char c) const { return at_ < pattern_.size() && pattern_[at_] == c; }
  bool next_is_digit() const { return at_ < pattern_.size() && pattern_[at_] >= '0' && pattern_[at_] <= '9'; }

  std::int64_t number() {
    std::int64_t x = 0;
    for (; next_is_digit(); ++at_) x = std::min<std::int64_t>(10 * x + (pattern_[at_] - '0'), INT32_MAX);
    return x;
  }

  /// The argument that a brace names by its number, or the next one.
  std::size_t argument() { return static_cast<std::size_t>(next_is_digit() ? number() : next_argument_++); }

  /// A field, from behind its brace on.
  void field() {
    const std::size_t written = argument() + 1;
    while (at_ < pattern_.size() && !next_is('}')) {
      if (next_is_digit()) {
        require_short(number());
      } else if (pattern_[at_++] == '{') {
        require_short_argument(argument());
        if (next_is('}')) ++at_;
      }
    }
    if (written < is_written_as_real_.size() && next_is('}') &&
        std::string_view("aAeEfFgG").find(pattern_[at_ - 1]) != std::string_view::npos)
      is_written_as_real_[written] = true;
  }

  void require_short_argument(std::size_t i) const {
    if (i + 1 >= call_.count() || !call_.arguments[i + 1].is_number()) return;
    const Number x = number_of(call_.arguments[i + 1]);
    if (!x.is_real()) require_short(x.whole);
  }

  void require_short(std::int64_t x) const {
    if (x > longest_field) call_.fail(fmt::format("a width or precision is more than {}", longest_field));
  }

  const BuiltinCall& call_;
  std::string_view pattern_;
  std::size_t at_ = 0;
  std::int64_t next_argument_ = 0;
  std::vector<bool> is_written_as_real_;
};

using FormatArguments = fmt::dynamic_format_arg_store<fmt::format_context>;

void add_argument(FormatArguments& arguments, const BuiltinCall& call, const Value& value, bool is_real) {
  if (!value.is_number()) return arguments.push_back(call.printer(Detail::brief).text(value));
  const Number x = number_of(value);
  if (!x.is_real() && !is_real) return arguments.push_back(x.whole);
  // The sign of NaN, which comes from the processor, means nothing.
  arguments.push_back(std::isnan(x.real) ? std::numeric_limits<double>::quiet_NaN() : x.real);
}

/// The values that a pattern is filled with, for the end of a message; empty where there are none.
std::string formatted_values(const BuiltinCall& call) {
  std::vector<std::string> kinds;
  std::string number;
  for (std::size_t i = 1; i < call.count(); ++i) {
    kinds.push_back(kind_in_words(call.arguments[i]));
    if (number.empty()) number = number_in_array(call.caller, call.arguments[i]);
  }
  if (kinds.empty()) return {};
  return fmt::format("; behind the pattern: {}{}", fmt::join(kinds, ", "), number);
}

Value format(const BuiltinCall& call) {
  const std::string pattern(text_argument(call, 0));
  FieldCheck fields(call, pattern);
  fields.check();
  FormatArguments arguments;
  for (std::size_t i = 1; i < call.count(); ++i)
    add_argument(arguments, call, call.arguments[i], fields.is_written_as_real(i));
  try {
    return Value(fmt::vformat(pattern, arguments));
  } catch (const fmt::format_error& error) {
    call.fail(error.what() + formatted_values(call));
  }
}

// ---- Parts and whole

Value join(const BuiltinCall& call) {
  TableWalk walk(table_argument(call, 0));
  const std::string separator(has_argument(call, 1) ? text_argument(call, 1) : "");
  const Printer printer = call.printer(Detail::brief);
  std::string joined;
  for (bool is_first = true; const Entry entry = walk.next(); is_first = false) {
    if (!is_first) joined += separator;
    joined += printer.text(Value::sharing(*entry.value));
  }
  return Value(joined);
}

constexpr std::size_t nowhere = std::string_view::npos;

/// As `text.find(part, from)`, but the time grows with the sum of the lengths, not with their product.
std::size_t next_bytes(std::string_view text, std::string_view part, std::size_t from) {
  if (from > text.size()) return nowhere;
  const void* found = memmem(text.data() + from, text.size() - from, part.data(), part.size());
  return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) : nowhere;
}

/// The offset of the next occurrence of `part`, which does not begin or end inside a character.
std::size_t next_occurrence(std::string_view text, std::string_view part, std::size_t from) {
  for (std::size_t at = next_bytes(text, part, from); at != nowhere; at = next_bytes(text, part, at + 1))
    if (is_character_boundary(text, at) && is_character_boundary(text, at + part.size())) return at;
  return nowhere;
}

/// Calls `take` with each piece of `text` between the occurrences of `separator`.
template <class Take>
void for_each_piece(std::string_view text, std::string_view separator, Take take) {
  std::size_t begin = 0;
  for (std::size_t end; (end = next_occurrence(text, separator, begin)) != nowhere; begin = end + separator.size())
    take(text.substr(begin, end - begin));
  take(text.substr(begin));
}

/// Calls `take` with each piece of `text` that has no blanks.
template <class Take>
void for_each_word(std::string_view text, Take take) {
  while (!text.empty()) {
    if (const std::size_t blank = blank_length(text)) {
      text.remove_prefix(blank);
      continue;
    }
    const std::string_view begin = text;
    while (!text.empty() && blank_length(text) == 0) take_character(text);
    take(begin.substr(0, begin.size() - text.size()));
  }
}

Value split(const BuiltinCall& call) {
  const std::string text(text_argument(call, 0));
  Value pieces = Value::table();
  const auto take = [&](std::string_view piece) { append_entry(table_of(pieces.record()), Value(piece).record()); };
  if (!has_argument(call, 1)) {
    for_each_word(text, take);
    return pieces;
  }
  const std::string separator(text_argument(call, 1));
  if (separator.empty()) call.fail("the separator is empty");
  for_each_piece(text, separator, take);
  return pieces;
}

Value find(const BuiltinCall& call) {
  const std::string_view text = text_argument(call, 0);
  const std::string_view part = text_argument(call, 1);
  const std::int64_t start = has_argument(call, 2) ? integer_argument(call, 2) : 0;
  if (start < 0) call.fail(fmt::format("the start {} is negative", start));
  const std::size_t first = character_offset(text, static_cast<std::size_t>(start));
  const std::size_t skipped = character_count(text.substr(0, first));
  if (skipped < static_cast<std::size_t>(start)) return {};
  const std::size_t at = next_occurrence(text, part, first);
  if (at == nowhere) return {};
  return integer_value(static_cast<std::int64_t>(skipped + character_count(text.substr(first, at - first))));
}

Value replace(const BuiltinCall& call) {
  const std::string_view text = text_argument(call, 0);
  const std::string_view old_part = text_argument(call, 1);
  const std::string_view new_part = text_argument(call, 2);
  if (old_part.empty()) call.fail("the part to replace is empty");
  std::string replaced;
  bool is_first = true;
  for_each_piece(text, old_part, [&](std::string_view piece) {
    if (!std::exchange(is_first, false)) replaced += new_part;
    replaced += piece;
  });
  return Value(replaced);
}

Value trim(const BuiltinCall& call) { return Value(trimmed(text_argument(call, 0))); }
Value upper(const BuiltinCall& call) { return Value(upper_case(text_argument(call, 0))); }
Value lower(const BuiltinCall& call) { return Value(lower_case(text_argument(call, 0))); }

// clang-format off
constexpr Builtin text_rows[] = {
    {"find", 2, 3, find, "find(text, part)\nfind(text, part, start)",
     "Gives the position of the first occurrence, nil when there is none.",
     "print(find(\"banana\", \"an\"), find(\"banana\", \"an\", 2))  # expect: 1 3"},
    {"format", 1, -1, format, "format(pattern, value, ...)", "Puts values into the {} of a pattern.",
     "print(format(\"{:.2f} of {:>3}\", 0.5, \"m\"))  # expect: 0.50 of m"},
    {"join", 1, 2, join, "join(table)\njoin(table, separator)", "Makes one string of the values of a table.",
     "print(join([1, \"a\"], \", \"))  # expect: 1, a"},
    {"lower", 1, 1, lower, "lower(text)", "Gives the text in lower case.",
     "print(lower(\"Text\"))  # expect: text"},
    {"replace", 3, 3, replace, "replace(text, old, new)", "Replaces all occurrences of a part.",
     "print(replace(\"a.b.c\", \".\", \"-\"))  # expect: a-b-c"},
    {"split", 1, 2, split, "split(text)\nsplit(text, separator)",
     "Makes a table of the parts between blanks or separators.",
     "print(split(\"a,b\", \",\"), split(\" two words\"))  # expect: [\"a\", \"b\"] [\"two\", \"words\"]"},
    {"trim", 1, 1, trim, "trim(text)", "Gives the text without the blanks at both ends.",
     "print(trim(\"  text \"))  # expect: text"},
    {"upper", 1, 1, upper, "upper(text)", "Gives the text in upper case.",
     "print(upper(\"Text\"))  # expect: TEXT"},
};
// clang-format on

}  // namespace

BuiltinFamily text_functions() { return family_of(text_rows); }

}  // namespace hvm
