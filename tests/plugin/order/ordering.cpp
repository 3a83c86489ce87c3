// order/ordering.cpp: elements that sorts have trouble with

#include "ordering.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "support/elements.hpp"

namespace arrayfold::test {
namespace {

/// A permutation of 0 to count - 1 that `arrange(first, last, less)` needs the most comparisons for: what is greater is
/// decided only when it is asked, so that each pivot turns out to be among the smallest.
template <class Arrange>
std::vector<std::int32_t> adversarial(std::size_t count, Arrange arrange) {
  const auto undecided = static_cast<std::int32_t>(count);
  std::vector<std::int32_t> values(count, undecided), order(count);
  std::iota(order.begin(), order.end(), 0);
  std::int32_t decided = 0, candidate = 0;
  const auto decide = [&](std::int32_t i) { values[static_cast<std::size_t>(i)] = decided++; };
  arrange(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
    const auto& x = values[static_cast<std::size_t>(a)];
    const auto& y = values[static_cast<std::size_t>(b)];
    if (x == undecided && y == undecided) decide(a == candidate ? a : b);
    if (x == undecided)
      candidate = a;
    else if (y == undecided)
      candidate = b;
    return x < y;
  });
  for (auto& value : values)
    if (value == undecided) value = decided++;
  return values;
}

/// A way to fill an array of any length.
template <class T>
struct PatternOf {
  const char* name;
  std::function<std::vector<T>(std::size_t count)> fill;
};

template <class T>
std::vector<T> each(std::size_t count, const std::function<T(std::size_t)>& element) {
  std::vector<T> x(count);
  for (std::size_t i = 0; i < count; ++i) x[i] = element(i);
  return x;
}

/// Drawn from a few, with an engine that begins the same way for each count.
template <class T>
std::vector<T> elements_from(std::size_t count, const std::vector<T>& few) {
  std::mt19937 engine(static_cast<unsigned>(count));
  return each<T>(count, [&](std::size_t) { return few[engine() % few.size()]; });
}

template <class T>
std::vector<T> converted(const std::vector<std::int32_t>& values) {
  return std::vector<T>(values.begin(), values.end());
}

/// Groups of elements whose upper bits are alike, beside the ends of the range: each element is the `step`-th number
/// behind its group's first.
template <class T>
std::vector<T> alike(std::size_t count, std::size_t groups) {
  return each<T>(count, [=](std::size_t i) {
    if (i % 97 == 3) return i % 2 == 0 ? std::numeric_limits<T>::lowest() : std::numeric_limits<T>::max();
    const auto group = static_cast<int>(i % groups), step = static_cast<int>(i * 7919 % 1009);
    if constexpr (std::is_integral_v<T>)
      return static_cast<T>(group * (std::numeric_limits<T>::max() / 1000) + step);
    else
      return std::ldexp(1 + static_cast<T>(step) * std::numeric_limits<T>::epsilon(), group);
  });
}

template <class T>
std::vector<PatternOf<T>> patterns_of_numbers() {
  using Limits = std::numeric_limits<T>;
  const auto at = [](auto element) {
    return [=](std::size_t count) {
      return each<T>(count, [=](std::size_t i) { return static_cast<T>(element(i, count)); });
    };
  };
  return {
      {"random", [](std::size_t count) { return random_elements<T>(count, static_cast<unsigned>(count)); }},
      {"two values",
       [](std::size_t count) {
         return elements_from<T>(count, {3, -1});
       }},
      {"ten values",
       [](std::size_t count) {
         return elements_from<T>(count, {0, 1, 2, 3, 4, 5, 6, -7, -8, 9});
       }},
      {"all equal", at([](std::size_t, std::size_t) { return 7; })},
      {"sorted", at([](std::size_t i, std::size_t) { return static_cast<std::int32_t>(i); })},
      {"reversed", at([](std::size_t i, std::size_t count) { return static_cast<std::int32_t>(count - i); })},
      {"up and down", at([](std::size_t i, std::size_t count) { return std::min(i, count - i); })},
      {"ends of the range",
       [](std::size_t count) {
         return elements_from<T>(count, {Limits::lowest(), Limits::max(), Limits::lowest() + 1, Limits::max() - 1, 0, 1,
                                         -1, Limits::min()});
       }},
      {"alike in their upper bits", [](std::size_t count) { return alike<T>(count, 1); }},
      {"alike in many groups",
       [](std::size_t count) { return alike<T>(count, std::min(count / 20 + 1, std::size_t{100})); }},
      {"against sort",
       [](std::size_t count) {
         return converted<T>(
             adversarial(count, [](auto first, auto last, auto less) { std::sort(first, last, less); }));
       }},
      {"against nth_element",
       [](std::size_t count) {
         return converted<T>(adversarial(count, [](auto first, auto last, auto less) {
           std::nth_element(first, first + (last - first) / 2, last, less);
         }));
       }},
  };
}

/// What only floating-point numbers have.
template <class T>
std::vector<PatternOf<T>> floating_patterns() {
  using Limits = std::numeric_limits<T>;
  constexpr T infinity = Limits::infinity(), nan = Limits::quiet_NaN(), tiny = Limits::denorm_min();
  const auto few = [](const std::vector<T>& values) {
    return [=](std::size_t count) { return elements_from<T>(count, values); };
  };
  return {
      {"infinity and one", few({infinity, 1})},
      {"infinities", few({infinity, -infinity})},
      {"infinities among few", few({infinity, -infinity, 0, 1, -2})},
      {"infinity and the largest", few({infinity, Limits::max(), Limits::lowest(), -infinity})},
      {"denormals", few({tiny, -tiny, 2 * tiny, -3 * tiny, Limits::min(), -Limits::min(), 0})},
      {"zeros of both signs", few({T{0}, -T{0}})},
      {"zeros of both signs among others", few({T{0}, -T{0}, 1, -1, tiny})},
      {"only NaN", few({nan})},
      {"NaN of both signs among others", few({nan, -nan, 1, 2, 3, -infinity, infinity, -T{0}})},
      {"a few NaN",
       [](std::size_t count) {
         auto x = random_elements<T>(count, static_cast<unsigned>(count) + 1);
         for (std::size_t i = 5; i < count; i += 100) x[i] = nan;
         return x;
       }},
      {"NaN in front",
       [](std::size_t count) {
         auto x = random_elements<T>(count, static_cast<unsigned>(count) + 2);
         if (count != 0) x[0] = nan;
         return x;
       }},
      {"NaN at the end",
       [](std::size_t count) {
         auto x = each<T>(count, [](std::size_t i) { return static_cast<T>(i); });
         if (count != 0) x[count - 1] = nan;
         return x;
       }},
  };
}

template <class T>
std::vector<PatternOf<T>> patterns_of() {
  auto all = patterns_of_numbers<T>();
  if constexpr (std::is_floating_point_v<T>)
    for (auto& pattern : floating_patterns<T>()) all.push_back(pattern);
  return all;
}

}  // namespace

std::vector<Pattern> patterns(Kind kind) {
  return with_element(kind, [](auto zero) {
    using T = decltype(zero);
    std::vector<Pattern> all;
    for (const auto& pattern : patterns_of<T>())
      all.push_back({pattern.name, [fill = pattern.fill](const Extents& extents) {
                       return TestArray(extents, fill(size_of(extents)));
                     }});
    return all;
  });
}

TestArray drawn_from(Kind kind, std::size_t length, const Numbers& few) {
  std::mt19937 engine(static_cast<unsigned>(length));
  Numbers drawn;
  for (std::size_t i = 0; i < length; ++i) drawn.push_back(few[engine() % few.size()]);
  return TestArray(kind, {length}, drawn);
}

std::vector<std::size_t> lengths() {
  std::vector<std::size_t> all(301);
  std::iota(all.begin(), all.end(), 0);
  all.insert(all.end(), {333, 400, 511, 512, 513, 640, 777, 900, 1000, 5000});
  return all;
}

void OrderingTest::for_each_array(Kind kind, const Check& check) const {
  for (const auto& pattern : patterns(kind)) {
    const auto check_filled = [&](const Extents& extents) {
      const TestArray array = pattern.fill(extents);
      Operand operand(ctx(), array);
      const Value value = operand.value();
      check(value, array, pattern.name + " of " + dtype_of(kind));
      EXPECT_TRUE(from_host(value) == array) << "the operand has changed";
    };
    for (const std::size_t length : lengths()) check_filled({length});
    for (const Extents& extents : shapes) check_filled(extents);
  }
}

}  // namespace arrayfold::test
