// cli/expectations.cpp: the comments of a script that say what a line must print, or how it must fail

#include "cli/expectations.hpp"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::string_view blanks = " \t\r\n";

bool take(std::string_view& text, std::string_view front) {
  if (text.substr(0, front.size()) != front) return false;
  text.remove_prefix(front.size());
  return true;
}

/// The expectation behind `# expect`; no value when the words are not one.
std::optional<Expectation> read(std::string_view rest) {
  Expectation expectation;
  if (take(rest, " error:")) {
    expectation.form = Expectation::Form::error;
  } else if (take(rest, " ~")) {
    expectation.form = Expectation::Form::numbers;
    const auto number = std::from_chars(rest.data(), rest.data() + rest.size(), expectation.tolerance);
    const bool is_tolerance = number.ec == std::errc{} && expectation.tolerance >= 0;
    rest.remove_prefix(static_cast<std::size_t>(number.ptr - rest.data()));
    if (!is_tolerance || !take(rest, ":")) return std::nullopt;
  } else if (!take(rest, ":")) {
    return std::nullopt;
  }
  expectation.text = trimmed(rest);
  return expectation;
}

/// Text cut into numbers and the text between them.
struct Pieces {
  std::vector<double> numbers;
  std::string between;
};

bool may_begin_number(std::string_view text, std::size_t at) {
  const char before = at > 0 ? text[at - 1] : ' ';
  return !(std::isalnum(static_cast<unsigned char>(before)) || before == '_' || before == '.');
}

Pieces pieces_of(std::string_view text) {
  Pieces pieces;
  for (std::size_t at = 0; at < text.size();) {
    double number = 0;
    const auto read = std::from_chars(text.data() + at, text.data() + text.size(), number);
    if (read.ec == std::errc{} && may_begin_number(text, at)) {
      pieces.numbers.push_back(number);
      pieces.between += '#';
      at = static_cast<std::size_t>(read.ptr - text.data());
    } else {
      if (blanks.find(text[at]) == std::string_view::npos) pieces.between += text[at];
      ++at;
    }
  }
  return pieces;
}

bool are_close(double got, double expected, double tolerance) {
  if (std::isnan(expected) || std::isinf(expected)) return got == expected || (std::isnan(got) && std::isnan(expected));
  return std::fabs(got - expected) <= tolerance * std::fmax(1.0, std::fabs(expected));
}

bool are_numbers_met(const Expectation& expectation, const std::string& printed) {
  const Pieces expected = pieces_of(expectation.text);
  const Pieces got = pieces_of(printed);
  // Bare numbers are compared as numbers alone; with any text between them, that must be equal too.
  const bool has_frame = expected.between.find_first_not_of('#') != std::string::npos;
  if (has_frame && expected.between != got.between) return false;
  if (expected.numbers.size() != got.numbers.size() || expected.numbers.empty()) return false;
  for (std::size_t i = 0; i < expected.numbers.size(); ++i)
    if (!are_close(got.numbers[i], expected.numbers[i], expectation.tolerance)) return false;
  return true;
}

constexpr const char* form_of_expectations =
    "an expectation is '# expect: text', '# expect ~tolerance: numbers', '# expect error: text' or "
    "'# expect warning: text'";

/// Whether a comment is an expectation but for capitals or further signs: `# Expect: 3`, `## expect: 3`.
bool is_misspelt(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of("# "), text.size());
  std::string word(text.substr(begin, text.find(':') - begin));
  std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::tolower(c); });
  const bool is_meant = word == "expect" || word == "expect error" || word == "expect warning";
  return is_meant && text.find(':') != std::string_view::npos && text.substr(0, word.size()) != word;
}

/// A part of a comment that says what a line does.
struct ExpectingComment {
  std::size_t line;
  std::string_view text;  // behind `# expect`, or behind `# expect warning:`
  bool is_of_warning;
  Span span;
};

/// Where the next part of a comment begins: a part that expects a warning, or that allows one.
std::size_t next_part(std::string_view text) {
  return std::min(std::min(text.find("# expect warning:"), text.find("# allow:")), text.size());
}

std::vector<ExpectingComment> expecting_comments(const SourcePtr& source, const TokenList& words) {
  std::vector<ExpectingComment> found;
  auto word = words.tokens.begin();
  std::size_t code_line = 0;
  for (const Comment& comment : words.comments) {
    for (; word != words.tokens.end() && word->span.begin < comment.span.begin; ++word)
      if (word->kind != TokenKind::newline) code_line = source->line(word->span.begin);
    const std::size_t line = comment.is_alone ? code_line : source->line(comment.span.begin);
    std::string_view rest = source->text(comment.span);
    while (!rest.empty()) {
      rest.remove_prefix(1);  // the `#`
      const std::size_t end = next_part(rest);
      std::string_view text = trimmed(rest.substr(0, end));
      rest.remove_prefix(end);
      if (is_misspelt(text)) throw ScriptError(form_of_expectations, source, comment.span);
      if (!take(text, "expect") || (!text.empty() && std::string_view(" :~").find(text[0]) == std::string_view::npos))
        continue;
      const bool is_of_warning = take(text, " warning:");
      found.push_back({line, text, is_of_warning, comment.span});
    }
  }
  return found;
}

}  // namespace

std::string with_single_blanks(const std::string& text) {
  std::string result;
  for (const char c : trimmed(text)) {
    const bool is_blank = blanks.find(c) != std::string_view::npos;
    if (!is_blank) result += c;
    if (is_blank && result.back() != ' ') result += ' ';
  }
  return result;
}

std::map<std::size_t, Expectation> expectations_of(const SourcePtr& source, const TokenList& words) {
  std::map<std::size_t, Expectation> found;
  for (const ExpectingComment& comment : expecting_comments(source, words)) {
    if (comment.is_of_warning) continue;
    const auto expectation = read(comment.text);
    if (!expectation) throw ScriptError(form_of_expectations, source, comment.span);
    const auto [entry, is_new] = found.try_emplace(comment.line, *expectation);
    if (!is_new) entry->second.text += " " + expectation->text;
  }
  return found;
}

std::multimap<std::size_t, std::string> expected_warnings_of(const SourcePtr& source, const TokenList& words) {
  std::multimap<std::size_t, std::string> found;
  for (const ExpectingComment& comment : expecting_comments(source, words))
    if (comment.is_of_warning) found.emplace(comment.line, trimmed(comment.text));
  return found;
}

bool is_contained(const std::string& expected, const std::string& text) {
  return with_single_blanks(text).find(with_single_blanks(expected)) != std::string::npos;
}

bool is_met(const Expectation& expectation, const std::string& printed) {
  if (expectation.form == Expectation::Form::numbers) return are_numbers_met(expectation, printed);
  return with_single_blanks(printed) == with_single_blanks(expectation.text);
}

bool is_met_by_error(const Expectation& expectation, const std::string& message) {
  return expectation.form == Expectation::Form::error && is_contained(expectation.text, message);
}

}  // namespace hvm
