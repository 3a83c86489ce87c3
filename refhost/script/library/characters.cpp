// script/library/characters.cpp: parts of strings, by character

#include "script/library/characters.hpp"

#include <fmt/format.h>

#include <limits>

#include "script/library/numbers.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/integer_value.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

std::size_t position_of(const Value& index) {
  if (!is_integer(index))
    throw Failure(fmt::format("the position in a string is an integer, not {}", kind_in_words(index)));
  const std::int64_t position = number_of(index).whole;
  if (position < 0) throw Failure(fmt::format("the position {} in a string is negative", position));
  return static_cast<std::size_t>(position);
}

}  // namespace

Value character_at(const Value& text, ValueSpan indices) {
  if (indices.size() != 1) throw Failure(fmt::format("a string takes one index, not {}", indices.size()));
  const std::size_t position = position_of(indices[0]);
  return with_characters(text, [&](auto whole) {
    auto rest = whole.substr(character_offset(whole, position));
    if (rest.empty())
      throw Failure(fmt::format("the position {} is beyond the string, which has {}", position,
                                counted(character_count(whole), "character", "characters")));
    const auto begin = rest;
    take_character(rest);
    return Value(begin.substr(0, begin.size() - rest.size()));
  });
}

Value characters_between(const Value& text, const Value& low, const Value& high) {
  const std::size_t first = low.is_nil() ? 0 : position_of(low);
  const std::size_t last = high.is_nil() ? std::numeric_limits<std::size_t>::max() : position_of(high);
  return with_characters(text, [&](auto whole) {
    const auto rest = whole.substr(character_offset(whole, first));
    if (last <= first) return Value(rest.substr(0, 0));
    return Value(rest.substr(0, character_offset(rest, last - first)));
  });
}

}  // namespace hvm
