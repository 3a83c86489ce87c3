// linalg/library_products_test.cpp: the products are the library's, to the bit, in every pair of kinds

#include "library_operands.hpp"

namespace arrayfold::test {
namespace {

template <class First, class Second>
struct Pair {
  using A = First;
  using B = Second;
};

template <class P>
class LibraryProducts : public AlgebraTest {
 protected:
  using First = typename P::A;
  using Second = typename P::B;

  /// Calls the function and hands both operands to the library: one and the same comes of it.
  template <class Library>
  void compare(const char* name, const Extents& left, const Extents& right, Library library) {
    const auto a = drawn_elements<typename First::element>(size_of(left), seed_++);
    const auto b = drawn_elements<typename Second::element>(size_of(right), seed_++);
    const auto found = array<First>(name, {made<First>(left, a), made<Second>(right, b)});
    const auto expected = library(container(left, a), container(right, b));
    EXPECT_EQ(found, expected) << name << expected.extents.size();
  }
  void compare_dot(const Extents& left, const Extents& right) {
    compare("xdot", left, right,
            [](const auto& a, const auto& b) { return expected_of<First>(xt::linalg::dot(a, b)); });
  }
  void compare_outer(const Extents& left, const Extents& right) {
    compare("xouter", left, right,
            [](const auto& a, const auto& b) { return expected_of<First>(xt::linalg::outer(a, b)); });
  }
  void compare_vdot(const Extents& left, const Extents& right) {
    compare("xvdot", left, right,
            [](const auto& a, const auto& b) { return expected_number<First>(xt::linalg::vdot(a, b)); });
  }
  void compare_kron(const Extents& left, const Extents& right) {
    compare("xkron", left, right,
            [](const auto& a, const auto& b) { return expected_of<First>(xt::linalg::kron(a, b)); });
  }

  std::size_t extent() { return 1 + engine_() % 40; }

 private:
  unsigned seed_ = 1;
  std::mt19937 engine_{7};
};

using AllPairs =
    ::testing::Types<Pair<XTInt, XTInt>, Pair<XTInt, XTInt64>, Pair<XTInt, XTFloat>, Pair<XTInt, XTDouble>,
                     Pair<XTInt64, XTInt>, Pair<XTInt64, XTInt64>, Pair<XTInt64, XTFloat>, Pair<XTInt64, XTDouble>,
                     Pair<XTFloat, XTInt>, Pair<XTFloat, XTInt64>, Pair<XTFloat, XTFloat>, Pair<XTFloat, XTDouble>,
                     Pair<XTDouble, XTInt>, Pair<XTDouble, XTInt64>, Pair<XTDouble, XTFloat>, Pair<XTDouble, XTDouble>>;
struct PairNames {
  template <class P>
  static std::string GetName(int) {
    return std::string(P::A::dtype) + "_" + P::B::dtype;
  }
};
TYPED_TEST_SUITE(LibraryProducts, AllPairs, PairNames);

TYPED_TEST(LibraryProducts, XdotOfVectorsAndMatrices) {
  for (int turn = 0; turn < 30; ++turn) {
    const std::size_t m = this->extent(), k = this->extent(), n = this->extent();
    this->compare_dot({k}, {k});
    this->compare_dot({m, k}, {k});
    this->compare_dot({k}, {k, n});
    this->compare_dot({m, k}, {k, n});
  }
  for (const std::size_t n : {1u, 100u}) {
    this->compare_dot({n}, {n});
    this->compare_dot({n, n}, {n});
    this->compare_dot({n}, {n, n});
    this->compare_dot({n, n}, {n, n});
    this->compare_dot({1, n}, {n, 1});
    this->compare_dot({n, 1}, {1, n});
    this->compare_dot({1, n}, {n});
    this->compare_dot({n}, {n, 1});
    this->compare_dot({n, 1}, {1});
    this->compare_dot({1}, {1, n});
  }
  this->compare_dot({1000}, {1000});
}

TYPED_TEST(LibraryProducts, XdotOfMoreDimensions) {
  this->compare_dot({2, 3, 4}, {4});
  this->compare_dot({4}, {2, 4, 3});
  this->compare_dot({2, 3, 4}, {4, 5});
  this->compare_dot({3, 4}, {2, 4, 5});
  this->compare_dot({2, 3, 4}, {5, 4, 2});
  this->compare_dot({2, 3, 1}, {5, 1, 2});
  this->compare_dot({2, 1, 3, 30}, {3, 30, 1});
  this->compare_dot({2, 2, 2, 2, 2, 2}, {2, 2, 2});
  this->compare_dot({}, {3, 4});
  this->compare_dot({3, 4, 2}, {});
}

TYPED_TEST(LibraryProducts, XvdotXouterAndXkron) {
  for (int turn = 0; turn < 30; ++turn) {
    const std::size_t m = this->extent(), n = this->extent();
    this->compare_vdot({m}, {m + n});
    this->compare_vdot({m, 3}, {m, n});
    this->compare_outer({m}, {n});
    this->compare_outer({m, 2}, {n, 3});
    this->compare_kron({m % 7 + 1, n % 7 + 1}, {n % 5 + 1, m % 5 + 1});
  }
  this->compare_vdot({1000}, {1000});
  this->compare_outer({100}, {100});
  this->compare_kron({10, 10}, {10, 10});
  this->compare_kron({1, 10}, {10, 1});
}

// ---- Integers beside a triple loop

template <class P>
class IntegerProducts : public LibraryProducts<P> {};
using IntegerPairs =
    ::testing::Types<Pair<XTInt, XTInt>, Pair<XTInt, XTInt64>, Pair<XTInt64, XTInt>, Pair<XTInt64, XTInt64>>;
TYPED_TEST_SUITE(IntegerProducts, IntegerPairs, PairNames);

TYPED_TEST(IntegerProducts, AreTheWrappingTripleLoop) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = std::make_unsigned_t<std::common_type_t<typename A::element, typename B::element>>;
  std::mt19937_64 engine(17);
  for (int turn = 0; turn < 60; ++turn) {
    const std::size_t m = this->extent(), k = this->extent(), n = turn % 7 == 0 ? 1 : this->extent();
    std::vector<typename A::element> a(m * k);
    std::vector<typename B::element> b(k * n);
    for (auto& x : a) x = static_cast<typename A::element>(engine());
    for (auto& x : b) x = static_cast<typename B::element>(engine());
    Contents<typename A::element> expected{{m, n}, {}};
    for (std::size_t i = 0; i < m; ++i)
      for (std::size_t j = 0; j < n; ++j) {
        R sum = 0;
        for (std::size_t l = 0; l < k; ++l) sum += static_cast<R>(a[i * k + l]) * static_cast<R>(b[l * n + j]);
        expected.elements.push_back(static_cast<typename A::element>(sum));
      }
    EXPECT_EQ(this->template array<A>("xdot", {this->template made<A>({m, k}, a), this->template made<B>({k, n}, b)}),
              expected);
  }
}

}  // namespace
}  // namespace arrayfold::test
