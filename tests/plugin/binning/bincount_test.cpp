// binning/bincount_test.cpp: xbincount beside the array library's own

#include <limits>
#include <stdexcept>

#include <xtensor/xhistogram.hpp>

#include "binnings.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class Bincount : public ArrayResultTest {
 protected:
  using Element = typename Kind::element;

  Elements<Element> counts(const Extents& extents, const std::vector<Element>& x) const {
    return given<Kind>(call("xbincount", {array_of<Kind>(ctx(), extents, x)}));
  }

  void expect_library(const Extents& extents, const std::vector<Element>& x) const {
    const Value operand = array_of<Kind>(ctx(), extents, x);
    EXPECT_EQ(difference(counts(extents, x), elements_in<Element>(xt::bincount(*container_of<Kind>(operand)))), "")
        << ::testing::PrintToString(extents);
  }

  /// The words of the exception that a call ends with.
  std::string refusal(const std::vector<Element>& x) const {
    try {
      counts({x.size()}, x);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  }

  static std::vector<Element> below(std::size_t count, unsigned limit, unsigned seed) {
    std::mt19937 engine(seed);
    std::vector<Element> x(count);
    for (Element& element : x) element = static_cast<Element>(engine() % limit);
    return x;
  }
};

TYPED_TEST_SUITE(Bincount, IntegerKinds, KindNames);

TYPED_TEST(Bincount, OfRandomElements_IsTheLibrarys) {
  for (const unsigned limit : {1u, 2u, 10u, 1000u}) {
    for (std::size_t length = 1; length <= 300; ++length)
      this->expect_library({length}, this->below(length, limit, static_cast<unsigned>(length)));
    for (const std::size_t length : {1000u, 5000u, 100001u})
      this->expect_library({length}, this->below(length, limit, 3));
  }
  this->expect_library({2}, {1000000, 3});
}

TYPED_TEST(Bincount, OfMoreDimensions_IsFlat) {
  for (const Extents& extents : {Extents{3, 5}, Extents{1, 4}, Extents{2, 3, 4}, Extents{2, 3, 4, 5},
                                 Extents{2, 1, 2, 1, 2, 1, 2, 1, 3}, Extents{}, Extents{1}, Extents{1, 1}})
    this->expect_library(extents, this->below(size_of(extents), 9, 5));
}

TYPED_TEST(Bincount, GivesItsOwnKind_WithOneEntryMoreThanTheMaximum) {
  using T = typename TypeParam::element;
  EXPECT_EQ(this->counts({3}, {0, 2, 2}), (Elements<T>{{3}, {1, 0, 2}}));
  EXPECT_EQ(this->counts({2}, {0, 0}), (Elements<T>{{1}, {2}}));
  EXPECT_EQ(this->counts({}, {3}), (Elements<T>{{4}, {0, 0, 0, 1}}));
}

TYPED_TEST(Bincount, Required_WithALastExtentOfOne_CountsTheFirstElementEachTime) {
  using T = typename TypeParam::element;
  EXPECT_EQ(this->counts({5, 1}, {2, 0, 4, 1, 1}), (Elements<T>{{5}, {0, 0, 5, 0, 0}}));
  this->expect_library({5, 1}, {2, 0, 4, 1, 1});
  this->expect_library({2, 3, 1}, {2, 0, 4, 1, 1, 7});
}

TYPED_TEST(Bincount, Required_OfANegativeElement_ThrowsWordsThatDenyZero) {
  using T = typename TypeParam::element;
  const std::string words = "Data argument for bincount can only contain positive integers!";
  EXPECT_EQ(this->refusal({-1, 2}), words);
  EXPECT_EQ(this->refusal({std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}), words);
  for (const std::size_t length : {1u, 40u, 300u, 5000u})
    for (const std::size_t place : {std::size_t{0}, length / 2, length - 1}) {
      std::vector<T> x(length, 3);
      x[place] = -7;
      EXPECT_EQ(this->refusal(x), words) << place;
    }
  EXPECT_EQ(this->refusal({0}), "none");
  EXPECT_EQ(this->refusal({0, 1}), "none");
  // It is seen, too, where only the first element is counted.
  EXPECT_THROW(this->counts({3, 1}, {2, 3, -1}), std::runtime_error);
}

TYPED_TEST(Bincount, Required_OfNothing_IsOutOfMemory) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}})
    EXPECT_THROW(this->counts(extents, {}), std::bad_alloc);
}

TYPED_TEST(Bincount, Required_OfTheLargestElement_WrapsToASizeOutOfMemory) {
  using T = typename TypeParam::element;
  EXPECT_THROW(this->counts({1}, {std::numeric_limits<T>::max()}), std::bad_alloc);
  EXPECT_THROW(this->counts({3}, {0, std::numeric_limits<T>::max(), 5}), std::bad_alloc);
}

TEST_F(ArrayResultTest, XbincountOfSizesThatCannotBeAddressed_IsOutOfMemory) {
  for (const std::int64_t x : {INT64_MAX - 1, std::int64_t{1} << 62, (std::int64_t{1} << 61) - 1, std::int64_t{1} << 60,
                               (std::int64_t{1} << 60) - 1})
    EXPECT_THROW(call("xbincount", {array_of<XTInt64>(ctx(), {2}, {0, x})}), std::bad_alloc) << x;
}

}  // namespace
}  // namespace arrayfold::test
