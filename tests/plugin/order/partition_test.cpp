// order/partition_test.cpp: xpartition and xargpartition, rank by rank

#include <cmath>

#include <xtensor/xsort.hpp>

#include "ordering.hpp"

namespace arrayfold::test {
namespace {

using Ints = Elements<std::int32_t>;
using Reals = Elements<double>;

/// An element as an int: reals without their fraction, wide integers without their upper half.
std::int32_t as_int(double x) {
  if (!(x > -2147483649.0 && x < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(x);
}
std::int32_t as_int(float x) { return as_int(static_cast<double>(x)); }
std::int32_t as_int(std::int32_t x) { return x; }
std::int32_t as_int(std::int64_t x) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(x)); }

template <class Kind>
class Partitions : public OrderingTest {
 protected:
  using Element = typename Kind::element;

  /// What the two functions give, where `expected` is what the partition is.
  void expect(const Value& operand, const Value& rank, const Elements<Element>& expected,
              const std::string& what) const {
    EXPECT_EQ(difference(given<Kind>(call("xpartition", {operand, rank})), expected), "")
        << what << " at " << hvm::printed(rank.record());
    Ints ints{expected.extents, {}};
    for (const Element x : expected.elements) ints.elements.push_back(as_int(x));
    EXPECT_EQ(difference(given<XTInt>(call("xargpartition", {operand, rank})), ints), "")
        << what << " at " << hvm::printed(rank.record());
  }

  void expect_unchanged(const Value& operand, const Value& rank, const std::string& what) const {
    expect(operand, rank, elements_in<Element>(*container_of<Kind>(operand)), what);
  }

  FloatKindRegistered registered_;
};

TYPED_TEST_SUITE(Partitions, AllKinds, KindNames);

TYPED_TEST(Partitions, OfEveryPatternLengthAndShape_AreTheLibrarys) {
  using T = typename TypeParam::element;
  this->template for_each_array<TypeParam>([&](const Value& operand, const auto& array, const std::string& what) {
    const std::size_t length = array.shape().back();
    std::vector<std::size_t> ranks;
    for (const std::size_t rank : {std::size_t{0}, length / 2, length - 1})
      if (rank < length) ranks.push_back(rank);
    for (const std::size_t rank : ranks)
      this->expect(operand, Value(static_cast<int>(rank)), elements_in<T>(xt::partition(array, rank)), what);
    this->expect_unchanged(operand, Value(static_cast<int>(length)), what);
  });
}

TYPED_TEST(Partitions, AtEveryRankOfAShortRun_PutThatElementInItsPlace) {
  using T = typename TypeParam::element;
  for (const std::size_t length : {1u, 2u, 3u, 5u, 20u, 40u}) {
    const auto x = random_elements<T>(length, 5);
    Operand<TypeParam> operand(this->ctx(), {length}, x);
    auto sorted = x;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t rank = 0; rank < length; ++rank) {
      const Value at(static_cast<std::int64_t>(rank));
      const auto found = this->template given<TypeParam>(this->call("xpartition", {operand.value(), at})).elements;
      EXPECT_EQ(found[rank], sorted[rank]);
      const auto place = found.begin() + static_cast<std::ptrdiff_t>(rank);
      EXPECT_TRUE(std::all_of(found.begin(), place, [&](T y) { return y <= *place; }));
      EXPECT_TRUE(std::all_of(place, found.end(), [&](T y) { return y >= *place; }));
      EXPECT_TRUE(std::is_permutation(found.begin(), found.end(), x.begin()));
    }
  }
}

TYPED_TEST(Partitions, OfManyElements_AreTheLibrarys) {
  using T = typename TypeParam::element;
  for (const auto& pattern : patterns<T>()) {
    Operand<TypeParam> operand(this->ctx(), {100001}, pattern.fill(100001));
    const Value value = operand.value();
    for (const std::size_t rank : {1u, 50000u, 99999u})
      this->expect(value, Value(static_cast<int>(rank)),
                   elements_in<T>(xt::partition(*container_of<TypeParam>(value), rank)), pattern.name);
  }
}

TYPED_TEST(Partitions, AtARankBeyondTheRunOrBelowZero_AreCopies) {
  using T = typename TypeParam::element;
  for (const Extents& extents : {Extents{5}, Extents{2, 5}, Extents{3, 2, 1}, Extents{0}, Extents{2, 300}}) {
    // What a partition past the end would do to the next run shows in rows that are sorted against each other.
    Operand<TypeParam> operand(this->ctx(), extents, each<T>(size_of(extents), [&](std::size_t i) {
                                 return static_cast<T>(size_of(extents) - i);
                               }));
    for (const int rank : {300, 301, 1000000, INT32_MAX, -1, -5, INT32_MIN})
      this->expect_unchanged(operand.value(), Value(rank), "beyond");
    this->expect_unchanged(operand.value(), Value(-1.5), "real");
    this->expect_unchanged(operand.value(), Value(1000.9), "real");
  }
}

TYPED_TEST(Partitions, Required_OfNoDimension_AreCopies) {
  using T = typename TypeParam::element;
  Operand<TypeParam> operand(this->ctx(), {}, {T{42}});
  for (const int rank : {0, 1, 2, -1}) this->expect(operand.value(), Value(rank), {{}, {T{42}}}, "no dimension");
}

TYPED_TEST(Partitions, Required_AtWhatIsNoNumber_TakeRankZeroWithoutReadingIt) {
  using T = typename TypeParam::element;
  Operand<TypeParam> operand(this->ctx(), {2, 100}, random_elements<T>(200, 1));
  const Value value = operand.value();
  const auto at = [&](std::size_t rank) {
    return elements_in<T>(xt::partition(*container_of<TypeParam>(value), rank));
  };
  const auto expected = at(0);
  for (const std::size_t other : {5u, 50u, 99u}) ASSERT_FALSE(expected == at(other)) << other;
  std::vector<Value> no_numbers = {value};
  for (const Value& other : no_objects())
    if (!other.is_number()) no_numbers.push_back(other);
  ASSERT_GT(no_numbers.size(), 200u);
  for (const Value& rank : no_numbers) {
    this->expect(value, rank, expected, "no number");
    for (const char* name : {"xpartition", "xargpartition"})
      EXPECT_EQ(this->call(name, {value, rank}).operations,
                (Words{"AnyCheck 0", "GetAny 0", "NumberCheck 1", "AnyCheck 0", "NewAny", "SetTypeAny result"}));
  }
}

// ---- Single values

class PartitionsOfOne : public OrderingTest {
 protected:
  Value row(const std::vector<double>& x) const { return array_of<XTDouble>(ctx(), {x.size()}, x); }
  Ints ints(const Value& operand, const Value& rank = Value(0)) const {
    return given<XTInt>(call("xargpartition", {operand, rank}));
  }
};

TEST_F(PartitionsOfOne, StandAsASortWouldPutThem) {
  const auto x = given<XTDouble>(call("xpartition", {row({5, 1, 4, 2, 3}), Value(2)})).elements;
  EXPECT_EQ(x[2], 3.0);
  EXPECT_EQ(std::minmax(x[0], x[1]), std::minmax(1.0, 2.0));
  EXPECT_EQ(std::minmax(x[3], x[4]), std::minmax(4.0, 5.0));
}

TEST_F(PartitionsOfOne, Required_XargpartitionGivesTruncatedValuesAndNoPositions) {
  EXPECT_EQ(ints(row({5.7, 1.2, 4.9}), Value(1)), (Ints{{3}, {1, 4, 5}}));
  EXPECT_EQ(ints(row({-5.7, -1.2, -0.9}), Value(1)), (Ints{{3}, {-5, -1, 0}}));
}

TEST_F(PartitionsOfOne, Required_XargpartitionOfRealsThatNoIntHolds_GivesTheSmallestInt) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double x : {infinity, -infinity, 2147483648.0, -2147483649.0, 1e300, -1e300, std::nan("")})
    EXPECT_EQ(ints(row({x})), (Ints{{1}, {INT32_MIN}})) << x;
  EXPECT_EQ(ints(row({2147483647.9})), (Ints{{1}, {INT32_MAX}}));
  EXPECT_EQ(ints(row({-2147483648.9})), (Ints{{1}, {INT32_MIN}}));
  FloatObject floats({3}, {-3e38f, 2.9f, 2147483648.0f});
  EXPECT_EQ(ints(floats.value(), Value(1)), (Ints{{3}, {INT32_MIN, 2, INT32_MIN}}));
}

TEST_F(PartitionsOfOne, Required_XargpartitionOfInt64_KeepsTheLowHalf) {
  const std::int64_t high = std::int64_t{1} << 32;
  EXPECT_EQ(ints(array_of<XTInt64>(ctx(), {4}, {-high - 1, 2, high + 5, 3 * high + 2147483648}), Value(2)),
            (Ints{{4}, {-1, 2, 5, INT32_MIN}}));
}

TEST_F(PartitionsOfOne, RanksAreReadIn32BitsButFor64BitArrays) {
  const Value wide(std::int64_t{1} << 32 | 2);
  Value rank_as_int = wide;
  const int read = HVM_AsInt(rank_as_int.address());
  const std::vector<double> x = {5, 1, 4, 2, 3, 0};
  EXPECT_EQ(given<XTDouble>(call("xpartition", {row(x), wide})),
            given<XTDouble>(call("xpartition", {row(x), Value(read)})));
  const Value wides = array_of<XTInt64>(ctx(), {6}, {5, 1, 4, 2, 3, 0});
  EXPECT_EQ(given<XTInt64>(call("xpartition", {wides, wide})), (Elements<std::int64_t>{{6}, {5, 1, 4, 2, 3, 0}}));
  EXPECT_EQ(given<XTInt64>(call("xpartition", {wides, Value(std::int64_t{-1})})),
            (Elements<std::int64_t>{{6}, {5, 1, 4, 2, 3, 0}}));
}

TEST_F(PartitionsOfOne, RealRanks_LoseTheirFraction) {
  const std::vector<double> x = {5, 1, 4, 2, 3, 0};
  EXPECT_EQ(given<XTDouble>(call("xpartition", {row(x), Value(2.9)})),
            given<XTDouble>(call("xpartition", {row(x), Value(2)})));
}

}  // namespace
}  // namespace arrayfold::test
