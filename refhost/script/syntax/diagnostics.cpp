// script/syntax/diagnostics.cpp: the text of an error report, and the nearest name

#include "script/syntax/diagnostics.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::size_t kept_calls = 8;
constexpr std::size_t shown_columns = 100;

/// Characters that would move the text of a terminal, or hide in it. They are shown as a question mark.
bool is_shown_as_mark(char32_t c) {
  const bool turns_direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
  return (is_control(c) && c != '\t') || turns_direction;
}

/// The columns that a character takes up where it is shown.
std::size_t shown_width(char32_t c) {
  constexpr std::size_t widest_tab = 8;
  return c == '\t' ? widest_tab : is_shown_as_mark(c) ? 1 : display_width(c);
}

std::size_t shown_width(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) width += shown_width(take_character(text));
  return width;
}

/// The front of `text` that fits into so many columns.
std::string_view fitting_front(std::string_view text, std::size_t columns) {
  std::string_view rest = text;
  std::size_t end = 0;
  for (std::size_t width = 0; !rest.empty(); end = text.size() - rest.size())
    if ((width += shown_width(take_character(rest))) > columns) break;
  return text.substr(0, end);
}

/// The back of `text` that fits into so many columns.
std::string_view fitting_back(std::string_view text, std::size_t columns) {
  std::size_t width = shown_width(text);
  while (width > columns) width -= shown_width(take_character(text));
  return text;
}

/// A text as it is shown.
std::string shown(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::string_view before = text;
    const char32_t c = take_character(text);
    out += is_shown_as_mark(c) ? "?" : before.substr(0, before.size() - text.size());
  }
  return out;
}

/// Blanks as wide as `text`; a tab stays a tab.
std::string blanks_under(std::string_view text) {
  std::string blanks;
  while (!text.empty()) {
    const char32_t c = take_character(text);
    blanks += c == '\t' ? "\t" : std::string(shown_width(c), ' ');
  }
  return blanks;
}

/// The line and a caret under its column, which counts characters from 1. A line that is too wide is cut around the
/// caret.
std::string caret_lines(std::string_view line, std::size_t column) {
  const std::size_t caret = character_offset(line, column - 1);
  const std::string_view before = line.substr(0, caret);
  const bool is_cut = shown_width(before) > shown_columns;
  const std::string_view front = is_cut ? fitting_back(before, shown_columns / 2) : before;
  const std::string_view whole = line.substr(before.size() - front.size());
  const std::string_view part = fitting_front(whole, std::max(shown_columns, shown_width(front) + 1));
  const std::string_view lead = is_cut ? "..." : "";
  const std::string under = std::string(lead.size(), ' ') + blanks_under(front);
  return fmt::format("    {}{}{}\n    {}^\n", lead, shown(part), part.size() < whole.size() ? "..." : "", under);
}

std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    before.swap(above);
    above.swap(row);
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      row[j + 1] = std::min({above[j] + (a[i] == b[j] ? 0 : 1), row[j] + 1, above[j + 1] + 1});
      if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j]) row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
    }
  }
  return row.back();
}

std::string report_of(const char* severity, const std::string& message, const SourceText& source, Span span) {
  const Place place = source.place(span.begin);
  return fmt::format("{}:{}:{}: {}: {}\n", source.name(), place.line, place.column, severity, message) +
         caret_lines(source.line_text(place.line), place.column);
}

}  // namespace

ScriptError::ScriptError(std::string message, SourcePtr source, Span span, Completeness completeness)
    : message_(std::move(message)), source_(std::move(source)), span_(span), completeness_(completeness) {}

void ScriptError::add_call(const std::string& function, const SourceText& source, Span span) {
  add_step(fmt::format("in {}, called", function), source, span);
}

void ScriptError::add_use(const std::string& script, const SourceText& source, Span span) {
  add_step(fmt::format("in {}, used", script), source, span);
}

void ScriptError::add_step(const std::string& what, const SourceText& source, Span span) {
  if (calls_.size() == kept_calls) {
    ++omitted_calls_;
    return;
  }
  const Place place = source.place(span.begin);
  calls_.push_back(fmt::format("  {} at {}:{}:{}\n", what, source.name(), place.line, place.column));
}

std::string ScriptError::report() const {
  std::string text = report_of("error", message_, *source_, span_);
  for (const std::string& note : notes_) text += fmt::format("  {}\n", note);
  for (const std::string& call : calls_) text += call;
  if (omitted_calls_ > 0) text += fmt::format("  and {} calls more\n", omitted_calls_);
  return text;
}

std::string warning_report(const std::string& message, const SourceText& source, Span span) {
  return report_of("warning", message, source, span);
}

std::string suggestion(std::string_view name, const std::vector<std::string_view>& candidates) {
  constexpr std::size_t longest_compared = 40;
  if (name.size() > longest_compared) return {};
  std::size_t best = name.size() < 6 ? 2 : 3;  // one letter of a short name may differ, two of a longer one
  std::string_view nearest;
  for (const std::string_view candidate : candidates) {
    if (candidate.size() > longest_compared) continue;
    const std::size_t distance = edit_distance(name, candidate);
    if (distance > 0 && distance < best) best = distance, nearest = candidate;
  }
  return nearest.empty() ? std::string{} : fmt::format(" (did you mean '{}'?)", nearest);
}

}  // namespace hvm
