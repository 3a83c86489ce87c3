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

/// Blanks as wide as `text`; a tab stays a tab.
std::string blanks_under(std::string_view text) {
  std::string blanks;
  while (!text.empty()) {
    const char32_t c = take_character(text);
    blanks += c == '\t' ? "\t" : std::string(display_width(c), ' ');
  }
  return blanks;
}

/// The line and a caret under its column, which counts characters from 1. A line beyond the width is cut around the
/// column.
std::string caret_lines(std::string_view line, std::size_t column) {
  const std::size_t first = column > shown_columns ? column - shown_columns / 2 : 0;
  const std::size_t begin = character_offset(line, first);
  const std::size_t end = character_offset(line, first + shown_columns);
  const std::size_t caret = character_offset(line, column - 1);
  const std::string_view lead = first > 0 ? "..." : "";
  const std::string under = std::string(lead.size(), ' ') + blanks_under(line.substr(begin, caret - begin));
  std::string shown{line.substr(begin, end - begin)};
  for (char& c : shown)
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t') c = '?';
  return fmt::format("    {}{}{}\n    {}^\n", lead, shown, end < line.size() ? "..." : "", under);
}

/// How many letters differ, are missing, or have changed places with their neighbours.
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
