// binning/bincount_test.cpp: xbincount beside the array library's own

#include <random>
#include <stdexcept>

#include "binnings.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

class Bincount : public OverKinds<ArrayResultTest> {
 protected:
  TestArray counts(const TestArray& array) const { return given(call("xbincount", {to_host(ctx(), array)}), kind()); }
  TestArray counts(const Extents& extents, const Numbers& x) const { return counts(of_kind(extents, x)); }
  static TestArray of_kind(const Extents& extents, const Numbers& x) { return TestArray(kind(), extents, x); }

  void expect_library(const TestArray& array) const {
    EXPECT_EQ(difference(counts(array), library_bincount(array)), "") << ::testing::PrintToString(array.extents());
  }

  /// The message of the exception that a call ends with.
  std::string message_of(const Numbers& x) const {
    try {
      counts({x.size()}, x);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  }

  static TestArray below(const Extents& extents, unsigned limit, unsigned seed) {
    std::mt19937 engine(seed);
    Numbers x;
    for (std::size_t i = 0; i < size_of(extents); ++i) x.push_back(engine() % limit);
    return of_kind(extents, x);
  }
  static std::int64_t largest() { return kind() == Kind::int32 ? INT32_MAX : INT64_MAX; }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Bincount, ::testing::ValuesIn(integer_kinds), KindName());

TEST_P(Bincount, OfRandomElements_IsTheLibrarys) {
  for (const unsigned limit : {1u, 2u, 10u, 1000u, 1024u, 1025u}) {
    for (std::size_t length = 1; length <= 300; ++length)
      expect_library(below({length}, limit, static_cast<unsigned>(length)));
    for (const std::size_t length : {1000u, 5000u, 100001u}) expect_library(below({length}, limit, 3));
  }
  expect_library(of_kind({2}, {1000000, 3}));
}

TEST_P(Bincount, OfMoreDimensions_IsFlat) {
  for (const Extents& extents : {Extents{3, 5}, Extents{1, 4}, Extents{2, 3, 4}, Extents{2, 3, 4, 5},
                                 Extents{2, 1, 2, 1, 2, 1, 2, 1, 3}, Extents{}, Extents{1}, Extents{1, 1}})
    expect_library(below(extents, 9, 5));
}

TEST_P(Bincount, GivesItsOwnKind_WithOneEntryMoreThanTheMaximum) {
  EXPECT_EQ(counts({3}, {0, 2, 2}), of_kind({3}, {1, 0, 2}));
  EXPECT_EQ(counts({2}, {0, 0}), of_kind({1}, {2}));
  EXPECT_EQ(counts({}, {3}), of_kind({4}, {0, 0, 0, 1}));
}

TEST_P(Bincount, Required_WithALastExtentOfOne_CountsTheFirstElementEachTime) {
  EXPECT_EQ(counts({5, 1}, {2, 0, 4, 1, 1}), of_kind({5}, {0, 0, 5, 0, 0}));
  expect_library(of_kind({5, 1}, {2, 0, 4, 1, 1}));
  expect_library(of_kind({2, 3, 1}, {2, 0, 4, 1, 1, 7}));
}

TEST_P(Bincount, Required_OfANegativeElement_ThrowsAMessageThatDeniesZero) {
  const std::string message = "Data argument for bincount can only contain positive integers!";
  EXPECT_EQ(message_of({-1, 2}), message);
  EXPECT_EQ(message_of({-largest() - 1, largest()}), message);
  for (const std::size_t length : {1u, 40u, 300u, 5000u})
    for (const std::size_t place : {std::size_t{0}, length / 2, length - 1}) {
      Numbers x(length, 3);
      x[place] = -7;
      EXPECT_EQ(message_of(x), message) << place;
    }
  EXPECT_EQ(message_of({0}), "none");
  EXPECT_EQ(message_of({0, 1}), "none");
  // It is seen, too, where only the first element is counted.
  EXPECT_THROW(counts({3, 1}, {2, 3, -1}), std::runtime_error);
}

TEST_P(Bincount, Required_OfNothing_IsOutOfMemory) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}})
    EXPECT_THROW(counts(extents, {}), std::bad_alloc);
}

TEST_P(Bincount, Required_OfTheLargestElement_WrapsToASizeOutOfMemory) {
  EXPECT_THROW(counts({1}, {largest()}), std::bad_alloc);
  EXPECT_THROW(counts({3}, {0, largest(), 5}), std::bad_alloc);
}

TEST_F(ArrayResultTest, XbincountOfSizesThatCannotBeAddressed_IsOutOfMemory) {
  for (const std::int64_t x : {INT64_MAX - 1, std::int64_t{1} << 62, (std::int64_t{1} << 61) - 1, std::int64_t{1} << 60,
                               (std::int64_t{1} << 60) - 1})
    EXPECT_THROW(call("xbincount", {array_of<XTInt64>(ctx(), {2}, {0, x})}), std::bad_alloc) << x;
}

}  // namespace
}  // namespace arrayfold::test
