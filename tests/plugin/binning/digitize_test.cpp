// binning/digitize_test.cpp: xdigitize beside the array library's own

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "binnings.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

TestArray places(const Extents& extents, const Numbers& numbers) { return TestArray(Kind::float64, extents, numbers); }

/// Elements of the first kind among edges of the second.
class Digitize : public OverPairs<ArrayResultTest> {
 protected:
  static TestArray elements(const Numbers& x) { return TestArray(first(), {x.size()}, x); }
  static TestArray edges(const Numbers& x) { return TestArray(second(), {x.size()}, x); }

  TestArray digitized(const TestArray& array, const TestArray& among) const {
    Operand operand(ctx(), array), second(ctx(), among);
    return given(call("xdigitize", {operand.value(), second.value()}), Kind::float64);
  }

  void expect_library(const TestArray& array, const TestArray& among, const std::string& what) const {
    ASSERT_EQ(difference(digitized(array, among), library_digitize(array, among)), "")
        << what << ": " << array.size() << " among " << among.size();
  }

  /// More edges than elements, fewer, and as many, below and above the counts at which the module goes another way.
  using Draw = std::function<Number()>;
  void expect_library_everywhere(const std::string& what, const Draw& element, const Draw& edge, bool sorted) const {
    for (const std::size_t count : {1u, 2u, 3u, 10u, 100u, 1000u})
      for (const std::size_t edge_count : {0u, 1u, 2u, 3u, 4u, 7u, 8u, 9u, 99u, 100u, 101u, 1023u}) {
        const Numbers x = drawn(count, element);
        Numbers among = drawn(edge_count, edge);
        if (sorted) std::sort(among.begin(), among.end(), below);
        expect_library(elements(x), edges(among), what);
      }
  }
  static Numbers drawn(std::size_t count, const Draw& draw) {
    Numbers x;
    for (std::size_t i = 0; i < count; ++i) x.push_back(draw());
    return x;
  }
  /// The ends of the range of the edges' kind around 0.
  static Numbers extremes() {
    if (second() == Kind::int32) return {INT32_MIN, 0, INT32_MAX};
    if (second() == Kind::int64) return {INT64_MIN, 0, INT64_MAX};
    const double max = limits_of(second()).max;
    return {-max, 0, max};
  }
  static bool below(const Number& a, const Number& b) { return a.as<double>() < b.as<double>(); }

  /// Small numbers, halves among them where the kind has those: equal ones are frequent.
  static Draw small(Kind kind, unsigned seed) {
    return [kind, engine = std::mt19937(seed)]() mutable {
      const auto half = static_cast<double>(engine() % 100) - 50;
      return is_integer(kind) ? half : half / 2;
    };
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Digitize, ::testing::ValuesIn(pairs_of(floating_kinds, numeric_kinds)), PairName());

TEST_P(Digitize, AmongAscendingEdges_IsTheLibrarys) {
  expect_library_everywhere("ascending", small(first(), 1), small(second(), 2), true);
}

TEST_P(Digitize, AmongAsManyAscendingEdgesAsElements_ReachesTheLastEdgeAndBeyond) {
  for (const std::size_t count : {1u, 2u, 3u, 64u, 65u, 127u, 128u, 129u, 200u, 255u, 256u, 257u, 1000u}) {
    Numbers among;
    for (std::size_t i = 0; i < count; ++i) among.push_back(2 * i);
    const auto last = static_cast<int>(2 * (count - 1));
    const auto all_places = [&](std::size_t place) { return places({count}, Numbers(count, place)); };
    EXPECT_EQ(digitized(elements(Numbers(count, last + 1)), edges(among)), all_places(count)) << count;
    EXPECT_EQ(digitized(elements(Numbers(count, last)), edges(among)), all_places(count)) << count;
    EXPECT_EQ(digitized(elements(Numbers(count, last - 1)), edges(among)), all_places(count - 1)) << count;
    EXPECT_EQ(digitized(elements(Numbers(count, -1)), edges(among)), all_places(0)) << count;
    // An element on each edge, one beside each, and more elements than edges.
    Numbers on, beside;
    for (std::size_t i = 0; i < count; ++i) on.push_back(2 * i), beside.push_back(2 * i + 1);
    expect_library(elements(on), edges(among), "on");
    expect_library(elements(beside), edges(among), "beside");
    on.insert(on.end(), beside.begin(), beside.end());
    expect_library(elements(on), edges(among), "on and beside");
  }
}

TEST_P(Digitize, Required_AmongUnsortedEdges_AreHalvedAllTheSame) {
  expect_library_everywhere("unsorted", small(first(), 3), small(second(), 4), false);
  // All but one in order, at each place.
  for (std::size_t place = 0; place < 20; ++place)
    for (const int odd : {-100, 100}) {
      Numbers among;
      for (int i = 0; i < 20; ++i) among.push_back(i - 10);
      among[place] = odd;
      expect_library(elements(drawn(40, small(first(), 5))), edges(among), "one out of place");
    }
}

TEST_P(Digitize, AmongEqualAndDescendingEdges_IsTheLibrarys) {
  Numbers numbers;
  for (int i = -1; i <= 20; ++i) numbers.push_back(i);
  const TestArray x = elements(numbers);
  for (const std::size_t count : {2u, 5u, 30u}) {
    expect_library(x, edges(Numbers(count, 3)), "equal");
    Numbers descending;
    for (std::size_t i = 0; i < count; ++i) descending.push_back(count - i);
    expect_library(x, edges(descending), "descending");
  }
}

TEST_P(Digitize, OfSpecialElements_IsTheLibrarys) {
  const auto [max, denorm_min] = limits_of(first());
  const TestArray x = elements({NAN, INFINITY, -INFINITY, 0.0, -0.0, max, -max, denorm_min});
  for (const Numbers& among : {Numbers{}, {0}, {0, 0}, {-1, 0, 1}, extremes(), Numbers(30, 0)})
    expect_library(x, edges(among), "special");
}

TEST_P(Digitize, AmongEdgesWithNaNAndInfinities_IsTheLibrarys) {
  if (is_integer(second())) return;  // which have neither
  const double some[] = {NAN, INFINITY, -INFINITY, 0, 1, -2};
  std::mt19937 engine(8);
  expect_library_everywhere(
      "NaN among edges", small(first(), 6), [&] { return some[engine() % 6]; }, false);
  expect_library_everywhere(
      "infinities among edges", small(first(), 7), [&] { return some[1 + engine() % 5]; }, true);
  const TestArray three = elements({0, 1, 2});
  expect_library(three, edges({NAN}), "NaN alone");
  expect_library(three, edges({NAN, NAN}), "NaN alone");
  expect_library(three, edges({NAN, 1}), "NaN in front");
  expect_library(three, edges({1, NAN}), "NaN behind");
  expect_library(elements({0, 1, 2, 3, 4}), edges({1, NAN, 3}), "NaN between");
}

TEST_P(Digitize, OfNeighboursOfLargeEdges_IsTheLibrarys) {
  // Where elements lie further apart than edges of 64 bits.
  const std::int64_t base = second() == Kind::int32 ? 2147483000 : 9007199254740992;
  Numbers among;
  for (int i = 0; i < 20; ++i) among.push_back(base + i);
  const auto first_ones = [&](std::size_t count) { return successors(first(), static_cast<double>(base), count - 1); };
  expect_library(first_ones(21), edges(among), "large");
  expect_library(first_ones(5), edges(among), "large, few");
}

TEST_P(Digitize, OfRandomElementsInEveryShape_IsTheLibrarys) {
  Numbers among = drawn(17, small(second(), 9));
  for (const bool sorted : {false, true}) {
    if (sorted) std::sort(among.begin(), among.end(), below);
    for (const Extents& extents :
         {Extents{}, Extents{1}, Extents{3, 5}, Extents{1, 40}, Extents{2, 3, 4}, Extents{2, 2, 3, 4},
          Extents{2, 1, 2, 1, 2, 1, 2, 1, 3}, Extents{0}, Extents{0, 3}, Extents{3, 0}, Extents{1, 1}})
      expect_library(TestArray(first(), extents, drawn(size_of(extents), small(first(), 10))), edges(among),
                     "in a shape");
  }
  for (std::size_t length = 0; length <= 300; ++length)
    expect_library(random_array(first(), {length}, static_cast<unsigned>(length)), edges(among), "random");
  expect_library(random_array(first(), {100001}, 1), edges(among), "random");
}

TEST_P(Digitize, Required_WithALastExtentOfOne_LooksUpTheFirstElementAlone) {
  for (const Numbers& numbers : {Numbers{1, 3, 5}, {1}, {5, 3, 1}, Numbers(9, 1)}) {
    const TestArray among = edges(numbers);
    const Number first_place = digitized(elements({4}), among)[0];
    EXPECT_EQ(digitized(TestArray(first(), {5, 1}, {4, 6, 6, 6, 6}), among), places({5, 1}, {first_place, 0, 0, 0, 0}));
    EXPECT_EQ(digitized(TestArray(first(), {2, 2, 1}, {4, 6, 6, 6}), among), places({2, 2, 1}, {first_place, 0, 0, 0}));
  }
}

TEST_P(Digitize, EdgesOfMoreDimensions_AreSearchedFlat) {
  const TestArray x = elements({0, 2, 5, 9});
  for (const Extents& extents : {Extents{4}, Extents{2, 2}, Extents{4, 1}, Extents{2, 1, 2, 1}})
    EXPECT_EQ(digitized(x, TestArray(second(), extents, {1, 2, 4, 8})), places({4}, {0, 2, 3, 4}));
  EXPECT_EQ(digitized(x, TestArray(second(), {}, {2})), places({4}, {0, 1, 1, 1}));
}

// ---- Single values

TEST_F(ArrayResultTest, Required_XdigitizeGivesDoubles_AndAnElementOnAnEdgeGoesRight) {
  const Value x = array_of<XTDouble>(ctx(), {3}, {0.5, 1.0, 2.5});
  for (const Value& edges : {array_of<XTDouble>(ctx(), {2}, {1, 2}), array_of<XTInt>(ctx(), {2}, {1, 2})})
    EXPECT_EQ(given(call("xdigitize", {x, edges}), Kind::float64), places({3}, {0, 1, 2}));
}

TEST_F(ArrayResultTest, XdigitizeAmongInt64EdgesBeyondTheDoubles_TakesThemRounded) {
  const std::int64_t beyond = (std::int64_t{1} << 53) + 1;  // halfway between two doubles, the lower one is even
  const Value x = array_of<XTDouble>(ctx(), {2}, {0x1p53, 0x1p53 + 2});
  EXPECT_EQ(given(call("xdigitize", {x, array_of<XTInt64>(ctx(), {1}, {beyond})}), Kind::float64), places({2}, {1, 1}));
  const Value wide = array_of<XTDouble>(ctx(), {2}, {-0x1p63, 0x1p63});
  EXPECT_EQ(given(call("xdigitize", {wide, array_of<XTInt64>(ctx(), {2}, {INT64_MIN, INT64_MAX})}), Kind::float64),
            places({2}, {1, 2}));
}

}  // namespace
}  // namespace arrayfold::test
