// order/partition_test.cpp: xpartition and xargpartition, rank by rank

#include <algorithm>
#include <cmath>
#include <limits>

#include "ordering.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

/// An element as an int: floating-point numbers without their fraction, wide integers without their upper half.
std::int32_t as_int(const Number& x) {
  if (x.is_integer) return static_cast<std::int32_t>(static_cast<std::uint32_t>(x.integer));
  if (!(x.real > -2147483649.0 && x.real < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(x.real);
}
TestArray as_ints(const TestArray& array) {
  std::vector<std::int32_t> ints;
  for (std::size_t i = 0; i < array.size(); ++i) ints.push_back(as_int(array[i]));
  return TestArray(array.extents(), ints);
}

class Partitions : public OverKinds<OrderingTest> {
 protected:
  /// What the two functions give, where `expected` is what the partition is.
  void expect(const Value& operand, const Value& rank, const TestArray& expected, const std::string& what) const {
    EXPECT_EQ(difference(given(call("xpartition", {operand, rank}), kind()), expected), "")
        << what << " at " << hvm::printed(rank.record());
    EXPECT_EQ(difference(given(call("xargpartition", {operand, rank}), Kind::int32), as_ints(expected)), "")
        << what << " at " << hvm::printed(rank.record());
  }

  void expect_unchanged(const Value& operand, const Value& rank, const std::string& what) const {
    expect(operand, rank, from_host(operand), what);
  }

  FloatKindRegistered registered_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Partitions, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Partitions, OfEveryPatternLengthAndShape_AreTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    const std::size_t length = array.extents().back();
    for (const std::size_t rank : {std::size_t{0}, length / 2, length - 1})
      if (rank < length) expect(operand, Value(static_cast<int>(rank)), library_partition(array, rank), what);
    expect_unchanged(operand, Value(static_cast<int>(length)), what);
  });
}

TEST_P(Partitions, AtEveryRankOfAShortRow_PutThatElementInItsPlace) {
  for (const std::size_t length : {1u, 2u, 3u, 5u, 20u, 40u}) {
    const TestArray x = random_array(kind(), {length}, 5);
    Operand operand(ctx(), x);
    const TestArray in_order = sorted(x);
    for (std::size_t rank = 0; rank < length; ++rank) {
      const Value at(static_cast<std::int64_t>(rank));
      const TestArray found = given(call("xpartition", {operand.value(), at}), kind());
      EXPECT_EQ(found[rank], in_order[rank]);
      EXPECT_TRUE(is_parted_at(found, rank));
      EXPECT_TRUE(is_permutation(found, x));
    }
  }
}

TEST_P(Partitions, OfManyElements_AreTheLibrarys) {
  for (const auto& pattern : patterns(kind())) {
    const TestArray array = pattern.fill({100001});
    Operand operand(ctx(), array);
    for (const std::size_t rank : {1u, 50000u, 99999u})
      expect(operand.value(), Value(static_cast<int>(rank)), library_partition(array, rank), pattern.name);
  }
}

TEST_P(Partitions, AtARankBeyondTheRowOrBelowZero_AreCopies) {
  for (const Extents& extents : {Extents{5}, Extents{2, 5}, Extents{3, 2, 1}, Extents{0}, Extents{2, 300}}) {
    // What a partition past the end would do to the next row shows in rows that are sorted against each other.
    Numbers descending;
    for (std::size_t i = 0; i < size_of(extents); ++i) descending.push_back(size_of(extents) - i);
    Operand operand(ctx(), kind(), extents, descending);
    for (const int rank : {300, 301, 1000000, INT32_MAX, -1, -5, INT32_MIN})
      expect_unchanged(operand.value(), Value(rank), "beyond");
    expect_unchanged(operand.value(), Value(-1.5), "real");
    expect_unchanged(operand.value(), Value(1000.9), "real");
  }
}

TEST_P(Partitions, Required_OfZeroDimensionalArrays_AreCopies) {
  const TestArray array(kind(), {}, {42});
  Operand operand(ctx(), array);
  for (const int rank : {0, 1, 2, -1}) expect(operand.value(), Value(rank), array, "zero-dimensional");
}

TEST_P(Partitions, Required_AtWhatIsNoNumber_TakeRankZeroWithoutReadingIt) {
  const TestArray array = random_array(kind(), {2, 100}, 1);
  Operand operand(ctx(), array);
  const Value value = operand.value();
  const TestArray expected = library_partition(array, 0);
  for (const std::size_t other : {5u, 50u, 99u}) ASSERT_FALSE(expected == library_partition(array, other)) << other;
  std::vector<Value> no_numbers = {value};
  for (const Value& other : no_objects())
    if (!other.is_number()) no_numbers.push_back(other);
  ASSERT_GT(no_numbers.size(), 200u);
  for (const Value& rank : no_numbers) {
    expect(value, rank, expected, "no number");
    for (const char* name : {"xpartition", "xargpartition"})
      EXPECT_EQ(call(name, {value, rank}).operations,
                (Words{"AnyCheck 0", "GetAny 0", "NumberCheck 1", "AnyCheck 0", "NewAny", "SetTypeAny result"}));
  }
}

// ---- Single values

class PartitionsOfOne : public OrderingTest {
 protected:
  Value row(const std::vector<double>& x) const { return array_of<XTDouble>(ctx(), {x.size()}, x); }
  TestArray ints(const Value& operand, const Value& rank = Value(0)) const {
    return given(call("xargpartition", {operand, rank}), Kind::int32);
  }
};

TEST_F(PartitionsOfOne, StandAsASortWouldPutThem) {
  const auto x = given(call("xpartition", {row({5, 1, 4, 2, 3}), Value(2)}), Kind::float64).as<double>();
  EXPECT_EQ(x[2], 3.0);
  EXPECT_EQ(std::minmax(x[0], x[1]), std::minmax(1.0, 2.0));
  EXPECT_EQ(std::minmax(x[3], x[4]), std::minmax(4.0, 5.0));
}

TEST_F(PartitionsOfOne, Required_XargpartitionGivesTruncatedValuesAndNoPositions) {
  EXPECT_EQ(ints(row({5.7, 1.2, 4.9}), Value(1)), TestArray(Kind::int32, {3}, {1, 4, 5}));
  EXPECT_EQ(ints(row({-5.7, -1.2, -0.9}), Value(1)), TestArray(Kind::int32, {3}, {-5, -1, 0}));
}

TEST_F(PartitionsOfOne, Required_XargpartitionOfNumbersThatNoIntHolds_GivesTheSmallestInt) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double x : {infinity, -infinity, 2147483648.0, -2147483649.0, 1e300, -1e300, std::nan("")})
    EXPECT_EQ(ints(row({x})), TestArray(Kind::int32, {1}, {INT32_MIN})) << x;
  EXPECT_EQ(ints(row({2147483647.9})), TestArray(Kind::int32, {1}, {INT32_MAX}));
  EXPECT_EQ(ints(row({-2147483648.9})), TestArray(Kind::int32, {1}, {INT32_MIN}));
  FloatObject floats({3}, {-3e38f, 2.9f, 2147483648.0f});
  EXPECT_EQ(ints(floats.value(), Value(1)), TestArray(Kind::int32, {3}, {INT32_MIN, 2, INT32_MIN}));
}

TEST_F(PartitionsOfOne, Required_XargpartitionOfInt64_KeepsTheLowHalf) {
  const std::int64_t high = std::int64_t{1} << 32;
  EXPECT_EQ(ints(array_of<XTInt64>(ctx(), {4}, {-high - 1, 2, high + 5, 3 * high + 2147483648}), Value(2)),
            TestArray(Kind::int32, {4}, {-1, 2, 5, INT32_MIN}));
}

TEST_F(PartitionsOfOne, RanksAreReadIn32BitsButFor64BitArrays) {
  const Value wide(std::int64_t{1} << 32 | 2);
  Value rank_as_int = wide;
  const int read = HVM_AsInt(rank_as_int.address());
  const std::vector<double> x = {5, 1, 4, 2, 3, 0};
  EXPECT_EQ(given(call("xpartition", {row(x), wide}), Kind::float64),
            given(call("xpartition", {row(x), Value(read)}), Kind::float64));
  const Value wides = array_of<XTInt64>(ctx(), {6}, {5, 1, 4, 2, 3, 0});
  EXPECT_EQ(given(call("xpartition", {wides, wide}), Kind::int64), TestArray(Kind::int64, {6}, {5, 1, 4, 2, 3, 0}));
  EXPECT_EQ(given(call("xpartition", {wides, Value(std::int64_t{-1})}), Kind::int64),
            TestArray(Kind::int64, {6}, {5, 1, 4, 2, 3, 0}));
}

TEST_F(PartitionsOfOne, FloatingPointRanks_LoseTheirFraction) {
  const std::vector<double> x = {5, 1, 4, 2, 3, 0};
  EXPECT_EQ(given(call("xpartition", {row(x), Value(2.9)}), Kind::float64),
            given(call("xpartition", {row(x), Value(2)}), Kind::float64));
}

}  // namespace
}  // namespace arrayfold::test
