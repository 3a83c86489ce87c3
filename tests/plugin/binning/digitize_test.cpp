// binning/digitize_test.cpp: xdigitize beside the array library's own

#include <algorithm>
#include <cmath>
#include <limits>

#include <xtensor/xhistogram.hpp>

#include "binnings.hpp"

namespace arrayfold::test {
namespace {

using Places = Elements<double>;

/// Elements of one kind among edges of another.
template <class Kind, class EdgeKind>
struct Kinds {
  using elements = Kind;
  using edges = EdgeKind;
};

template <class Pair>
class Digitize : public ArrayResultTest {
 protected:
  using Kind = typename Pair::elements;
  using EdgeKind = typename Pair::edges;
  using Element = typename Kind::element;
  using Edge = typename EdgeKind::element;

  Places places(const Extents& extents, const std::vector<Element>& x, const std::vector<Edge>& edges) const {
    Operand<Kind> operand(ctx(), extents, x);
    Operand<EdgeKind> among(ctx(), {edges.size()}, edges);
    return given<XTDouble>(call("xdigitize", {operand.value(), among.value()}));
  }

  void expect_library(const Extents& extents, const std::vector<Element>& x, const std::vector<Edge>& edges,
                      const std::string& what) const {
    Operand<Kind> operand(ctx(), extents, x);
    Operand<EdgeKind> among(ctx(), {edges.size()}, edges);
    const Value value = operand.value(), second = among.value();
    const auto expected = xt::digitize(*container_of<Kind>(value), *container_of<EdgeKind>(second));
    ASSERT_EQ(difference(given<XTDouble>(call("xdigitize", {value, second})), elements_in<double>(expected)), "")
        << what << ": " << x.size() << " among " << edges.size();
  }

  /// More edges than elements, fewer, and as many: the module goes two ways.
  template <class DrawElement, class DrawEdge>
  void expect_library_everywhere(const std::string& what, DrawElement element, DrawEdge edge, bool sorted) const {
    for (const std::size_t count : {1u, 2u, 3u, 10u, 100u, 1000u})
      for (const std::size_t edge_count : {0u, 1u, 2u, 3u, 4u, 7u, 8u, 9u, 99u, 100u, 101u, 1023u}) {
        std::vector<Element> x(count);
        std::vector<Edge> edges(edge_count);
        std::generate(x.begin(), x.end(), element);
        std::generate(edges.begin(), edges.end(), edge);
        if (sorted) std::sort(edges.begin(), edges.end());
        expect_library({count}, x, edges, what);
      }
  }

  /// Small numbers, halves among them where the type has those: equal ones are frequent.
  template <class T>
  auto small(unsigned seed) const {
    return [engine = std::mt19937(seed)]() mutable {
      const auto half = static_cast<double>(engine() % 100) - 50;
      return static_cast<T>(std::is_integral_v<T> ? half : half / 2);
    };
  }
};

using AllPairs = ::testing::Types<Kinds<XTDouble, XTInt>, Kinds<XTDouble, XTInt64>, Kinds<XTDouble, XTFloat>,
                                  Kinds<XTDouble, XTDouble>, Kinds<XTFloat, XTInt>, Kinds<XTFloat, XTInt64>,
                                  Kinds<XTFloat, XTFloat>, Kinds<XTFloat, XTDouble>>;
struct PairNames {
  template <class Pair>
  static std::string GetName(int) {
    return std::string(Pair::elements::dtype) + "_among_" + Pair::edges::dtype;
  }
};

TYPED_TEST_SUITE(Digitize, AllPairs, PairNames);

TYPED_TEST(Digitize, AmongAscendingEdges) {
  this->expect_library_everywhere("ascending", this->template small<typename TestFixture::Element>(1),
                                  this->template small<typename TestFixture::Edge>(2), true);
}

TYPED_TEST(Digitize, Required_AmongUnsortedEdges_AreHalvedAllTheSame) {
  this->expect_library_everywhere("unsorted", this->template small<typename TestFixture::Element>(3),
                                  this->template small<typename TestFixture::Edge>(4), false);
  // All but one in order, at each place.
  using E = typename TestFixture::Edge;
  for (std::size_t place = 0; place < 20; ++place)
    for (const int odd : {-100, 100}) {
      std::vector<E> edges(20);
      for (std::size_t i = 0; i < 20; ++i) edges[i] = static_cast<E>(i) - E{10};
      edges[place] = static_cast<E>(odd);
      std::vector<typename TestFixture::Element> x(40);
      std::generate(x.begin(), x.end(), this->template small<typename TestFixture::Element>(5));
      this->expect_library({40}, x, edges, "one out of place");
    }
}

TYPED_TEST(Digitize, AmongEqualAndDescendingEdges) {
  using E = typename TestFixture::Edge;
  using T = typename TestFixture::Element;
  for (const std::size_t count : {2u, 5u, 30u}) {
    std::vector<T> x = {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
    this->expect_library({x.size()}, x, std::vector<E>(count, 3), "equal");
    std::vector<E> descending(count);
    for (std::size_t i = 0; i < count; ++i) descending[i] = static_cast<E>(count - i);
    this->expect_library({x.size()}, x, descending, "descending");
  }
}

TYPED_TEST(Digitize, OfSpecialElements) {
  using T = typename TestFixture::Element;
  using E = typename TestFixture::Edge;
  using Limits = std::numeric_limits<T>;
  const std::vector<T> x = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), T{0}, -T{0},
                            Limits::max(),       Limits::lowest(),   Limits::denorm_min()};
  for (const std::vector<E>& edges : {std::vector<E>{},
                                      {0},
                                      {0, 0},
                                      {-1, 0, 1},
                                      {std::numeric_limits<E>::lowest(), 0, std::numeric_limits<E>::max()},
                                      std::vector<E>(30, 0)})
    this->expect_library({8}, x, edges, "special");
}

TYPED_TEST(Digitize, AmongEdgesWithNaNAndInfinities) {
  using E = typename TestFixture::Edge;
  using T = typename TestFixture::Element;
  if constexpr (std::is_floating_point_v<E>) {
    using Limits = std::numeric_limits<E>;
    const std::vector<E> some = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 0, 1, -2};
    std::mt19937 engine(8);
    this->expect_library_everywhere(
        "NaN among edges", this->template small<T>(6), [&] { return some[engine() % some.size()]; }, false);
    this->expect_library_everywhere(
        "infinities among edges", this->template small<T>(7), [&] { return some[1 + engine() % 5]; }, true);
    const E nan = Limits::quiet_NaN();
    this->expect_library({3}, {0, 1, 2}, {nan}, "NaN alone");
    this->expect_library({3}, {0, 1, 2}, {nan, nan}, "NaN alone");
    this->expect_library({3}, {0, 1, 2}, {nan, 1}, "NaN in front");
    this->expect_library({3}, {0, 1, 2}, {1, nan}, "NaN behind");
    this->expect_library({5}, {0, 1, 2, 3, 4}, {1, nan, 3}, "NaN between");
  }
}

TYPED_TEST(Digitize, OfNeighboursOfLargeEdges) {
  using T = typename TestFixture::Element;
  using E = typename TestFixture::Edge;
  // Where elements lie further apart than edges of 64 bits.
  const auto base = static_cast<E>(std::is_same_v<E, std::int32_t> ? 2147483000.0 : 9007199254740992.0);
  std::vector<E> edges;
  for (int i = 0; i < 20; ++i) edges.push_back(base + static_cast<E>(i));
  std::vector<T> x = {static_cast<T>(base)};
  for (int i = 0; i < 20; ++i) x.push_back(std::nextafter(x.back(), std::numeric_limits<T>::infinity()));
  std::vector<T> few(x.begin(), x.begin() + 5);
  this->expect_library({x.size()}, x, edges, "large");
  this->expect_library({few.size()}, few, edges, "large, few");
}

TYPED_TEST(Digitize, OfRandomElementsInEveryShape) {
  using T = typename TestFixture::Element;
  using E = typename TestFixture::Edge;
  std::vector<E> edges(17);
  std::generate(edges.begin(), edges.end(), this->template small<E>(9));
  for (const bool sorted : {false, true}) {
    if (sorted) std::sort(edges.begin(), edges.end());
    for (const Extents& extents :
         {Extents{}, Extents{1}, Extents{3, 5}, Extents{1, 40}, Extents{2, 3, 4}, Extents{2, 2, 3, 4},
          Extents{2, 1, 2, 1, 2, 1, 2, 1, 3}, Extents{0}, Extents{0, 3}, Extents{3, 0}, Extents{1, 1}}) {
      std::vector<T> x(size_of(extents));
      std::generate(x.begin(), x.end(), this->template small<T>(10));
      this->expect_library(extents, x, edges, "in a shape");
    }
  }
  for (std::size_t length = 0; length <= 300; ++length)
    this->expect_library({length}, random_elements<T>(length, static_cast<unsigned>(length)), edges, "random");
  this->expect_library({100001}, random_elements<T>(100001, 1), edges, "random");
}

TYPED_TEST(Digitize, Required_WithALastExtentOfOne_LooksUpTheFirstElementAlone) {
  using E = typename TestFixture::Edge;
  for (const std::vector<E>& edges : {std::vector<E>{1, 3, 5}, {1}, {5, 3, 1}, std::vector<E>(9, 1)}) {
    const double first = this->places({1}, {4}, edges).elements[0];
    EXPECT_EQ(this->places({5, 1}, {4, 6, 6, 6, 6}, edges), (Places{{5, 1}, {first, 0, 0, 0, 0}}));
    EXPECT_EQ(this->places({2, 2, 1}, {4, 6, 6, 6}, edges), (Places{{2, 2, 1}, {first, 0, 0, 0}}));
  }
}

TYPED_TEST(Digitize, EdgesOfMoreDimensions_AreSearchedFlat) {
  using AmongKind = typename TestFixture::EdgeKind;
  Operand<typename TestFixture::Kind> x(this->ctx(), {4}, {0, 2, 5, 9});
  for (const Extents& extents : {Extents{4}, Extents{2, 2}, Extents{4, 1}, Extents{2, 1, 2, 1}}) {
    Operand<AmongKind> edges(this->ctx(), extents, {1, 2, 4, 8});
    EXPECT_EQ(this->template given<XTDouble>(this->call("xdigitize", {x.value(), edges.value()})),
              (Places{{4}, {0, 2, 3, 4}}));
  }
  Operand<AmongKind> one(this->ctx(), {}, {2});
  EXPECT_EQ(this->template given<XTDouble>(this->call("xdigitize", {x.value(), one.value()})),
            (Places{{4}, {0, 1, 1, 1}}));
}

// ---- Single values

TEST_F(ArrayResultTest, Required_XdigitizeGivesReals_AndAnElementOnAnEdgeGoesRight) {
  const Value x = array_of<XTDouble>(ctx(), {3}, {0.5, 1.0, 2.5});
  for (const Value& edges : {array_of<XTDouble>(ctx(), {2}, {1, 2}), array_of<XTInt>(ctx(), {2}, {1, 2})})
    EXPECT_EQ(given<XTDouble>(call("xdigitize", {x, edges})), (Places{{3}, {0, 1, 2}}));
}

TEST_F(ArrayResultTest, XdigitizeAmongInt64EdgesBeyondTheReals_TakesThemRounded) {
  const std::int64_t beyond = (std::int64_t{1} << 53) + 1;  // halfway between two reals, the lower one is even
  const Value x = array_of<XTDouble>(ctx(), {2}, {0x1p53, 0x1p53 + 2});
  EXPECT_EQ(given<XTDouble>(call("xdigitize", {x, array_of<XTInt64>(ctx(), {1}, {beyond})})), (Places{{2}, {1, 1}}));
  const Value least = array_of<XTDouble>(ctx(), {2}, {-0x1p63, 0x1p63});
  EXPECT_EQ(given<XTDouble>(call("xdigitize", {least, array_of<XTInt64>(ctx(), {2}, {INT64_MIN, INT64_MAX})})),
            (Places{{2}, {1, 2}}));
}

}  // namespace
}  // namespace arrayfold::test
