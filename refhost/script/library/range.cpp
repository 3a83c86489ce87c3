// script/library/range.cpp: the numbers of a `range`

#include "script/library/range.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "script/library/numbers.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/text/integer_value.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

Range::Range(const std::vector<Value>& arguments) {
  if (arguments.empty() || arguments.size() > 3)
    throw Failure(fmt::format("range: it takes 1 to 3 arguments, not {}", arguments.size()));
  std::vector<std::int64_t> numbers;
  numbers.reserve(arguments.size());
  for (const Value& argument : arguments) numbers.push_back(number(argument));
  if (numbers.size() > 1) start_ = numbers[0];
  stop_ = numbers.size() > 1 ? numbers[1] : numbers[0];
  if (numbers.size() > 2) step_ = numbers[2];
  if (step_ == 0) throw Failure("range: the step is zero");
}

std::int64_t Range::number(const Value& argument) {
  if (argument.tag() == ValueTag::integer64) is_short_ = false;
  if (!is_integer(argument)) throw Failure(fmt::format("range: it takes integers, not {}", kind_in_words(argument)));
  return number_of(argument).whole;
}

std::int64_t Range::count() const {
  if (!has_more()) return 0;
  // As unsigned numbers, the distance and the step of any range fit.
  const auto distance = step_ > 0 ? static_cast<std::uint64_t>(stop_) - static_cast<std::uint64_t>(start_)
                                  : static_cast<std::uint64_t>(start_) - static_cast<std::uint64_t>(stop_);
  const std::uint64_t stride = step_ > 0 ? static_cast<std::uint64_t>(step_) : 0 - static_cast<std::uint64_t>(step_);
  return static_cast<std::int64_t>(std::min<std::uint64_t>((distance - 1) / stride + 1, INT64_MAX));
}

void Range::advance() {
  if (__builtin_add_overflow(start_, step_, &start_)) start_ = stop_;
}

}  // namespace hvm
