// order/sort_test.cpp: xsort and xargsort beside the array library's own, bit for bit
//
// Runs of 256 elements and more are sorted in another way, which must give the same. Only where positions of equal
// elements go is that way's own choice.

#include <cmath>

#include <xtensor/xsort.hpp>

#include "ordering.hpp"

namespace arrayfold::test {
namespace {

constexpr std::size_t long_run = 256;

template <class Kind>
class Sorts : public OrderingTest {
 protected:
  using Element = typename Kind::element;

  std::string sort_difference(const Value& operand) const {
    return difference(given<Kind>(call("xsort", {operand})),
                      elements_in<Element>(xt::sort(*container_of<Kind>(operand))));
  }

  /// The positions as the library's own order has them, or as they come where equal elements keep their order.
  Elements<std::int32_t> expected_positions(const xarray_of<Element>& array) const {
    const std::size_t length = array.shape().back();
    auto expected = elements_in<std::int32_t>(xt::argsort(array));
    for (std::size_t first = 0; length >= long_run && first < array.size(); first += length) {
      const Element* const run = array.data() + first;
      if (std::is_same_v<Element, float> || std::any_of(run, run + length, [](Element x) { return x != x; })) continue;
      const auto begin = expected.elements.begin() + static_cast<std::ptrdiff_t>(first);
      std::iota(begin, begin + static_cast<std::ptrdiff_t>(length), 0);
      std::stable_sort(begin, begin + static_cast<std::ptrdiff_t>(length),
                       [run](std::int32_t a, std::int32_t b) { return run[a] < run[b]; });
    }
    return expected;
  }

  /// Whether positions bring each run into order, and each occurs once.
  static bool put_in_order(const std::vector<std::int32_t>& positions, const xarray_of<Element>& array) {
    const std::size_t length = array.shape().back();
    for (std::size_t first = 0; first < positions.size(); first += length) {
      std::vector<bool> seen(length);
      for (std::size_t i = 0; i < length; ++i) {
        const auto at = static_cast<std::size_t>(positions[first + i]);
        if (at >= length || seen[at]) return false;
        seen[at] = true;
        if (i > 0 &&
            array.data()[first + at] < array.data()[first + static_cast<std::size_t>(positions[first + i - 1])])
          return false;
      }
    }
    return true;
  }

  std::string position_difference(const Value& operand) const {
    const auto& array = *container_of<Kind>(operand);
    const auto found = given<XTInt>(call("xargsort", {operand}));
    const bool has_nan = std::any_of(array.storage().begin(), array.storage().end(), [](Element x) { return x != x; });
    if (!has_nan && !put_in_order(found.elements, array)) return "not in order, or no permutation";
    return difference(found, expected_positions(array));
  }

  FloatKindRegistered registered_;
};

TYPED_TEST_SUITE(Sorts, AllKinds, KindNames);

TYPED_TEST(Sorts, OfEveryPatternLengthAndShape_AreTheLibrarys) {
  this->template for_each_array<TypeParam>([&](const Value& operand, const auto&, const std::string& what) {
    EXPECT_EQ(this->sort_difference(operand), "") << what;
  });
}

TYPED_TEST(Sorts, PositionsOfEveryPatternLengthAndShape_PutInOrder) {
  this->template for_each_array<TypeParam>([&](const Value& operand, const auto&, const std::string& what) {
    EXPECT_EQ(this->position_difference(operand), "") << what;
  });
}

TYPED_TEST(Sorts, OfManyElements_AreTheLibrarys) {
  using T = typename TypeParam::element;
  for (const auto& pattern : patterns<T>())
    for (const Extents& extents : {Extents{100001}, Extents{3, 20011}}) {
      Operand<TypeParam> operand(this->ctx(), extents, pattern.fill(size_of(extents)));
      EXPECT_EQ(this->sort_difference(operand.value()), "") << pattern.name;
      EXPECT_EQ(this->position_difference(operand.value()), "") << pattern.name;
    }
}

TYPED_TEST(Sorts, OfNoDimension_IsACopyAndPositionZero) {
  using T = typename TypeParam::element;
  Operand<TypeParam> operand(this->ctx(), {}, {T{42}});
  EXPECT_EQ(this->template given<TypeParam>(this->call("xsort", {operand.value()})), (Elements<T>{{}, {T{42}}}));
  EXPECT_EQ(this->template given<XTInt>(this->call("xargsort", {operand.value()})), (Elements<std::int32_t>{{}, {0}}));
}

TYPED_TEST(Sorts, OfNoElements_IsEmptyInTheSameShape) {
  using T = typename TypeParam::element;
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}, Extents{1, 0, 1, 0, 1, 1}}) {
    Operand<TypeParam> operand(this->ctx(), extents, {});
    EXPECT_EQ(this->template given<TypeParam>(this->call("xsort", {operand.value()})), (Elements<T>{extents, {}}));
    EXPECT_EQ(this->template given<XTInt>(this->call("xargsort", {operand.value()})),
              (Elements<std::int32_t>{extents, {}}));
  }
}

TYPED_TEST(Sorts, WorkRowByRow) {
  using T = typename TypeParam::element;
  Operand<TypeParam> operand(this->ctx(), {2, 3}, {3, 1, 2, 9, 8, 7});
  EXPECT_EQ(this->template given<TypeParam>(this->call("xsort", {operand.value()})),
            (Elements<T>{{2, 3}, {1, 2, 3, 7, 8, 9}}));
  EXPECT_EQ(this->template given<XTInt>(this->call("xargsort", {operand.value()})),
            (Elements<std::int32_t>{{2, 3}, {1, 2, 0, 2, 1, 0}}));
}

TYPED_TEST(Sorts, Required_ASecondArgument_IsNoAxis) {
  using T = typename TypeParam::element;
  Operand<TypeParam> operand(this->ctx(), {2, 2}, {4, 3, 2, 1});
  for (const int axis : {0, 1, -1})
    EXPECT_EQ(this->template given<TypeParam>(this->call("xsort", {operand.value(), Value(axis)})),
              (Elements<T>{{2, 2}, {3, 4, 1, 2}}));
}

// The vectorised sort for reals that others take loses elements here: some become the infinity, others vanish.
TEST_F(OrderingTest, XsortOfFewDistinctRealsWithInfinities_KeepsEachElement) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> sets[] = {{infinity, 0, 1},  {infinity, -infinity, 2}, {infinity, 5},
                                      {-infinity, 5, 6}, {infinity, -infinity},    {infinity, 1, 2, 3, 4, 5, 6, 7}};
  for (const auto& few : sets)
    for (std::size_t length = 256; length <= 1000; ++length) {
      auto x = drawn_from<double>(length, few);
      const Value operand = array_of<XTDouble>(ctx(), {length}, x);
      std::sort(x.begin(), x.end());
      EXPECT_EQ(difference(given<XTDouble>(call("xsort", {operand})), Elements<double>{{length}, x}), "");
    }
}

TEST_F(OrderingTest, XargsortOfZerosOfBothSigns_TakesThemAsEqual) {
  for (const std::size_t length : {256u, 1000u}) {
    std::vector<double> x(length);
    std::vector<std::int32_t> expected(length);
    std::iota(expected.begin(), expected.end(), 0);
    for (std::size_t i = 0; i < length; ++i) x[i] = i % 3 == 0 ? 0.0 : -0.0;
    EXPECT_EQ(given<XTInt>(call("xargsort", {array_of<XTDouble>(ctx(), {length}, x)})),
              (Elements<std::int32_t>{{length}, expected}));
  }
}

TEST_F(OrderingTest, Required_XargsortOfInt64_Gives32BitPositions) {
  const Value operand = array_of<XTInt64>(ctx(), {3}, {INT64_MAX, INT64_MIN, 0});
  EXPECT_EQ(given<XTInt>(call("xargsort", {operand})), (Elements<std::int32_t>{{3}, {1, 2, 0}}));
}

}  // namespace
}  // namespace arrayfold::test
