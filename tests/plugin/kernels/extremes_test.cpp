// kernels/extremes_test.cpp: the smallest and the largest element, on every target, against plain loops

#include "kernels/extremes.hpp"

#include <functional>
#include <limits>

#include "blocks.hpp"
#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

template <class T>
using Limits = std::numeric_limits<T>;

template <class T>
struct Case {
  const char* name;
  Extreme<T> Extremes<T>::*extreme;
  T start;
  bool (*beats)(T, T);
};

template <class T>
std::vector<Case<T>> cases() {
  return {{"smallest", &Extremes<T>::smallest, Limits<T>::max(), [](T b, T a) { return b < a; }},
          {"largest", &Extremes<T>::largest, Limits<T>::lowest(), [](T b, T a) { return b > a; }}};
}

/// Elements as they come, few different ones, and zeros of both signs with NaN among numbers on either side of them.
template <class T>
std::vector<std::vector<T>> fillings(std::size_t count) {
  const auto mixed = mixed_values<T>(count, 1), drawn = mixed_values<T>(count, 2);
  std::vector<std::vector<T>> all = {mixed, mixed, mixed, mixed};
  for (std::size_t i = 0; i < count; ++i) {
    const bool odd = drawn[i] < T{0};
    all[1][i] = static_cast<T>(odd ? 3 : 4);
    if constexpr (std::is_floating_point_v<T>) {
      const T zero = odd ? -T{0} : T{0};
      all[2][i] = drawn[i] > 500 ? T{5} : drawn[i] < -500 ? Limits<T>::quiet_NaN() : zero;
      all[3][i] = drawn[i] > 500 ? T{-5} : drawn[i] < -500 ? Limits<T>::quiet_NaN() : zero;
    }
  }
  return all;
}

// ---- Positions

template <class T>
std::ptrdiff_t first_of(const Case<T>& by, const std::vector<T>& x, T start) {
  std::ptrdiff_t found = -1;
  for (std::size_t i = 0; i < x.size(); ++i)
    if (by.beats(x[i], start)) start = x[i], found = static_cast<std::ptrdiff_t>(i);
  return found;
}

template <class T>
void expect_first(const Case<T>& by, const std::vector<T>& x, T start) {
  Memory<T> memory(x, x.size() % 3);
  const T* found = (extremes<T>().*by.extreme).first(memory.data(), x.size(), start);
  EXPECT_EQ(found == nullptr ? -1 : found - memory.data(), first_of(by, x, start)) << by.name << " of " << x.size();
}

template <class T>
void expect_first_of_every_length() {
  for (const std::size_t length : lengths())
    for (const auto& x : fillings<T>(length))
      for (const auto& by : cases<T>()) {
        expect_first(by, x, by.start);
        if (!x.empty()) expect_first(by, x, x[0]);
        expect_first(by, x, T{0});
        if constexpr (std::is_floating_point_v<T>) expect_first(by, x, Limits<T>::quiet_NaN());
      }
}

TEST(ExtremeLoops, OfEveryLength_AreFirstFoundWhereALoopFindsThem) {
  on_each_target([] {
    expect_first_of_every_length<double>();
    expect_first_of_every_length<float>();
    expect_first_of_every_length<std::int32_t>();
    expect_first_of_every_length<std::int64_t>();
  });
}

TEST(ExtremeLoops, AtEachPlace_AreFound) {
  on_each_target([] {
    for (const std::size_t length : {5u, 33u, 70u, 2100u})
      for (std::size_t place = 0; place<length; place += length> 100 ? 13 : 1)
        for (const auto& by : cases<double>()) {
          std::vector<double> x(length, 1.0);
          x[place] = by.beats(0.0, 1.0) ? 0.0 : 2.0;
          expect_first(by, x, by.start);
          expect_first(by, x, 1.0);
        }
  });
}

// ---- Values

template <class T>
void expect_values(const std::vector<T>& x) {
  Memory<T> memory(x, 1);
  for (const auto& by : cases<T>())
    for (const std::size_t stride : {std::size_t{1}, std::size_t{0}})
      for (const T start : {by.start, T{0}, T{1}}) {
        const auto choose = [&](T a, T b) { return by.beats(b, a) ? b : a; };
        const auto of_pair = [&](T a, T b) { return a != a ? b : choose(a, b); };
        const T expected = scanned(x, stride, start, of_pair, choose);
        const T actual = (extremes<T>().*by.extreme).by_blocks(memory.data(), x.size(), stride, start);
        EXPECT_TRUE(same_bits(std::vector<T>{actual}, {expected})) << by.name << " of " << x.size();
      }
}

template <class T>
void expect_values_of_every_length() {
  for (const std::size_t length : lengths())
    for (const auto& x : fillings<T>(length)) expect_values(x);
}

TEST(ExtremeLoops, OfEveryLength_AreThoseOfAScanInBlocks) {
  on_each_target([] {
    expect_values_of_every_length<double>();
    expect_values_of_every_length<float>();
    expect_values_of_every_length<std::int32_t>();
    expect_values_of_every_length<std::int64_t>();
  });
}

TEST(ExtremeLoops, OfIntegersBeyondTheCache_AreFound) {
  on_each_target([] {
    for (const std::size_t length : {200'000u, 200'003u}) {
      std::vector<std::int32_t> x(length, 7);
      for (const std::size_t place : {std::size_t{0}, length / 3, length - 1}) {
        x[place] = -3, x[length - 1 - place / 2] = 11;
        expect_values(x);
        x.assign(length, 7);
      }
    }
  });
}

}  // namespace
}  // namespace arrayfold::test
