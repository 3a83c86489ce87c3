// script/explain/creation_conditions.cpp: arrays that are made with other elements than they seem

#include "script/explain/creation_conditions.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "script/explain/array_integers.hpp"
#include "script/explain/condition_words.hpp"
#include "script/explain/script_words.hpp"
#include "script/text/number_text.hpp"

namespace hvm {
namespace {

/// The call of a function with another first argument: that one as a real.
std::string call_with_real_start(const AnsweredCall& call) {
  const auto texts = argument_texts(call.text());
  if (texts.empty()) return {};
  std::string start = short_text(texts[0], "");
  if (!start.empty() && start.back() == 'L') start.pop_back();
  const bool is_literal = !start.empty() && start.find_first_not_of("-0123456789") == std::string::npos;
  if (!is_literal && !is_name(start)) return {};
  std::string text = fmt::format("{}({}{}", call.function, start, is_literal ? ".0" : " * 1.0");
  for (std::size_t i = 1; i < texts.size(); ++i) text += fmt::format(", {}", texts[i]);
  return short_text(text + ')', "");
}

/// Integers between two ends. Wider than 64 bits, so that no difference wraps.
struct IntegerSpacing {
  __extension__ using Wide = __int128;
  Wide start;
  Wide stop;
  std::int32_t count;

  explicit IntegerSpacing(const std::vector<Value>& arguments)
      : count(arguments.size() > 2 ? as_int(arguments[2]) : 50) {
    const bool is_wide = arguments[0].tag() == ValueTag::integer64;
    start = is_wide ? as_int64(arguments[0]) : as_int(arguments[0]);
    stop = is_wide ? as_int64(arguments[1]) : as_int(arguments[1]);
  }
  /// Whether they lose a fraction.
  bool is_cut() const {
    if (count <= 1) return false;
    const Wide range = stop < start ? start - stop : stop - start;
    const auto narrow = static_cast<std::uint32_t>(range);  // for which processors divide soonest
    const auto steps = static_cast<std::uint32_t>(count - 1);
    return narrow == range ? narrow % steps != 0 : range % steps != 0;
  }
};

}  // namespace

bool are_cut(const std::vector<Value>& arguments) noexcept {
  const IntegerSpacing spacing(arguments);
  return spacing.is_cut() || (spacing.count > 1 && has_fraction(arguments[1]));
}

bool are_odd_powers(const std::vector<Value>& arguments) noexcept {
  const IntegerSpacing spacing(arguments);
  const bool is_wide = arguments[0].tag() == ValueTag::integer64;
  const IntegerSpacing::Wide stop = spacing.count > 1 ? spacing.stop : spacing.start;
  const bool has_odd_ends = std::min(spacing.start, stop) < 0 || std::max(spacing.start, stop) > (is_wide ? 18 : 9);
  return spacing.count > 0 && (has_odd_ends || are_cut(arguments));
}

namespace {

std::string real_start_remedy(const AnsweredCall& call) {
  const std::string written = call_with_real_start(call);
  return written.empty() ? "give a real as its start" : "write " + written;
}

}  // namespace

Found integer_spacing(const AnsweredCall& call) {
  return Finding{fmt::format("{} gives integers, which lose their fractions: the kind is that of its start; {}",
                             short_text(call.text(), call.function), real_start_remedy(call))};
}

Found integer_powers(const AnsweredCall& call) {
  return Finding{fmt::format("{} gives integers, which do not hold these powers: the kind is that of its start; {}",
                             short_text(call.text(), call.function), real_start_remedy(call))};
}

Found integer_range(const AnsweredCall& call) {
  for (const Value& argument : call.arguments)
    if (has_fraction(argument))
      return Finding{
          fmt::format("xarange reads {} as {}: it counts in integers; for fractions use "
                      "xlinspace(start, stop, count)",
                      number_text(argument), as_int(argument))};
  return {};
}

Found empty_range(const AnsweredCall& call) {
  const std::int64_t start = as_int(call.arguments[0]);
  const std::int64_t range = as_int(call.arguments[1]) - start;
  const std::int64_t step = as_int(call.arguments[2]);
  const bool is_beyond = range > 0 ? step > range : range < 0 && step < range;
  if (!is_beyond) return {};
  return Finding{
      fmt::format("{} has no elements: with a step beyond the whole range even the start is left out; give "
                  "a step of {}",
                  short_text(call.text(), call.function), range)};
}

Found draws_without_elements(const AnsweredCall& call) {
  const std::string remedy = call.function == "xrand"
                                 ? "xrand(n) draws n numbers from 0 to 1, and xrand(n) * (high - low) + low from low"
                                 : "xrandn(n) draws n numbers, and xrandn(n) * s + m those around m";
  return Finding{
      fmt::format("{} has no elements: its arguments are extents; {}", short_text(call.text(), call.function), remedy)};
}

Found fraction_of_an_argument(const AnsweredCall& call) {
  for (const Value& argument : call.arguments)
    if (has_fraction(argument))
      return Finding{fmt::format("{} reads {} as {}: it takes an integer here; give one", call.function,
                                 number_text(argument), as_int64(argument))};
  return {};
}

}  // namespace hvm
