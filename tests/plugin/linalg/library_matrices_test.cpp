// linalg/library_matrices_test.cpp: factors, eigenvalues, scalars, inverses and solutions are the library's, to the bit
//
// The library gets the very operand of the module, by rows, and makes its own copies.

#include "library_operands.hpp"
#include "support/captured_output.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class LibraryMatrices : public AlgebraTest {
 protected:
  using Element = typename Kind::element;
  using Elements = std::vector<Element>;

  /// Every size once with three columns more, once with three rows more and once as it is.
  template <class Visit>
  static void for_matrices(Visit visit) {
    for (const std::size_t n : sizes) {
      visit(Extents{n, n}, drawn_elements<Element>(n * n, 1));
      visit(Extents{n, n + 3}, drawn_elements<Element>(n * (n + 3), 2));
      visit(Extents{n + 3, n}, drawn_elements<Element>(n * (n + 3), 3));
    }
  }
  /// Squares: random, and symmetric ones with positive eigenvalues.
  template <class Visit>
  static void for_squares(Visit visit) {
    for (const std::size_t n : sizes) {
      visit(Extents{n, n}, drawn_elements<Element>(n * n, 4));
      const Reals definite = positive_definite(n, 5);
      visit(Extents{n, n}, Elements(definite.begin(), definite.end()));
    }
  }

  /// The values of a table are the parts of the library's result.
  template <class Expected>
  void expect_parts(const char* name, const std::vector<Value>& args, const Expected& expected) {
    const auto values = table(name, args);
    ASSERT_EQ(values.size(), expected.size()) << name;
    for (std::size_t key = 0; key < values.size(); ++key)
      EXPECT_EQ(contents_of<Kind>(values[key]), expected[key]) << name << key;
  }

  static constexpr std::size_t sizes[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14,
                                          15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28,
                                          29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 100};
};
TYPED_TEST_SUITE(LibraryMatrices, RealKinds, KindNames);

TYPED_TEST(LibraryMatrices, Factors) {
  using K = TypeParam;
  this->for_matrices([&](const Extents& extents, const auto& elements) {
    const auto matrix = container(extents, elements);
    const Value operand = this->template made<K>(extents, elements);
    const auto qr = xt::linalg::qr(matrix);
    this->expect_parts("xqr", {operand}, std::vector{expected_of<K>(std::get<0>(qr)), expected_of<K>(std::get<1>(qr))});
    const auto svd = xt::linalg::svd(matrix);
    this->expect_parts("xsvd", {operand},
                       std::vector{expected_of<K>(std::get<0>(svd)), expected_of<K>(std::get<1>(svd)),
                                   expected_of<K>(std::get<2>(svd))});
  });
}

TYPED_TEST(LibraryMatrices, XcholeskyAndEigenvalues) {
  using K = TypeParam;
  for (const std::size_t n : this->sizes) {
    const Reals definite = positive_definite(n, 6);
    const std::vector<typename K::element> elements(definite.begin(), definite.end());
    const auto matrix = container(Extents{n, n}, elements);
    const Value operand = this->template made<K>({n, n}, elements);
    EXPECT_EQ(this->template array<K>("xcholesky", {operand}), expected_of<K>(xt::linalg::cholesky(matrix)));
  }
  this->for_squares([&](const Extents& extents, const auto& elements) {
    const auto matrix = container(extents, elements);
    const Value operand = this->template made<K>(extents, elements);
    const auto eigh = xt::linalg::eigh(matrix);
    this->expect_parts("xeigh", {operand},
                       std::vector{expected_of<K>(std::get<0>(eigh)), expected_of<K>(std::get<1>(eigh))});
    EXPECT_EQ(this->template array<K>("xeigvalsh", {operand}), expected_of<K>(xt::linalg::eigvalsh(matrix)));
  });
}

TYPED_TEST(LibraryMatrices, ScalarsOfSquares) {
  using K = TypeParam;
  this->for_squares([&](const Extents& extents, const auto& elements) {
    const auto matrix = container(extents, elements);
    const Value operand = this->template made<K>(extents, elements);
    EXPECT_EQ(this->template array<K>("xdet", {operand}), expected_number<K>(xt::linalg::det(matrix)));
    const auto [sign, logarithm] = xt::linalg::slogdet(matrix);
    const auto values = this->table("xslogdet", {operand});
    ASSERT_EQ(values.size(), 2u);
    EXPECT_TRUE(same(load<double>(values[0].record().payload), static_cast<double>(sign)));
    EXPECT_TRUE(same(load<double>(values[1].record().payload), static_cast<double>(logarithm)));
  });
}

TYPED_TEST(LibraryMatrices, ScalarsOfMatrices) {
  using K = TypeParam;
  using T = typename K::element;
  this->for_matrices([&](const Extents& extents, const auto& elements) {
    const auto matrix = container(extents, elements);
    const Value operand = this->template made<K>(extents, elements);
    EXPECT_EQ(this->template array<K>("xmatrix_rank", {operand}),
              expected_number<K>(xt::linalg::matrix_rank(matrix, -1.0)));
    EXPECT_EQ(this->template array<K>("xtrace", {operand}), expected_of<K>(xt::linalg::trace(matrix)));
    // The library squares by `pow`, which rounds some squares the other way.
    const auto norm = static_cast<double>(xt::linalg::norm(matrix));
    const double apart = std::is_same_v<T, double> ? 1e-15 * norm : rounding_of<K> / 2 * norm;
    EXPECT_NEAR(this->template scalar<K>("xnorm", {operand}), norm, apart);
    const auto row = container(Extents{elements.size()}, elements);
    EXPECT_EQ(this->template array<K>("xnorm", {this->template made<K>({elements.size()}, elements)}),
              expected_number<K>(xt::linalg::norm(row, 2)));
  });
}

TYPED_TEST(LibraryMatrices, RanksOfProducts) {
  using K = TypeParam;
  using T = typename K::element;
  for (const std::size_t n : {5u, 20u, 33u})
    for (std::size_t inner = 1; inner < n; ++inner) {
      const Reals product = multiplied(random_reals(n * inner, 8), random_reals(inner * n, 9), n, inner, n);
      const std::vector<T> elements(product.begin(), product.end());
      EXPECT_EQ(this->template array<K>("xmatrix_rank", {this->template made<K>({n, n}, elements)}),
                expected_number<K>(xt::linalg::matrix_rank(container(Extents{n, n}, elements), -1.0)));
    }
}

TYPED_TEST(LibraryMatrices, XtraceOfMoreDimensions) {
  using K = TypeParam;
  for (const Extents& extents : {Extents{3, 3, 4}, {5, 2, 3}, {2, 30, 2, 2}}) {
    const auto elements = drawn_elements<typename K::element>(size_of(extents), 10);
    EXPECT_EQ(this->template array<K>("xtrace", {this->template made<K>(extents, elements)}),
              expected_of<K>(xt::linalg::trace(container(extents, elements))));
  }
}

TYPED_TEST(LibraryMatrices, Inverses) {
  using K = TypeParam;
  this->for_squares([&](const Extents& extents, const auto& elements) {
    EXPECT_EQ(this->template array<K>("xinv", {this->template made<K>(extents, elements)}),
              expected_of<K>(xt::linalg::inv(container(extents, elements))));
  });
  this->for_matrices([&](const Extents& extents, const auto& elements) {
    EXPECT_EQ(this->template array<K>("xpinv", {this->template made<K>(extents, elements)}),
              expected_of<K>(xt::linalg::pinv(container(extents, elements), 1e-15)));
  });
}

TYPED_TEST(LibraryMatrices, Solutions) {
  using K = TypeParam;
  using T = typename K::element;
  this->for_squares([&](const Extents& extents, const auto& elements) {
    const auto matrix = container(extents, elements);
    const Value operand = this->template made<K>(extents, elements);
    for (const Extents& shape : {Extents{extents[0]}, {extents[0], 1}, {extents[0], 5}, {extents[0] + 2, 3}}) {
      const auto sides = drawn_elements<T>(size_of(shape), 11);
      EXPECT_EQ(this->template array<K>("xsolve", {operand, this->template made<K>(shape, sides)}),
                expected_of<K>(xt::linalg::solve(matrix, container(shape, sides))));
    }
  });
}

TYPED_TEST(LibraryMatrices, LeastSquares) {
  using K = TypeParam;
  using T = typename K::element;
  this->for_matrices([&](const Extents& extents, const auto& elements) {
    for (const std::size_t columns : {0u, 1u, 5u}) {
      const Extents shape = columns == 0 ? Extents{extents[0]} : Extents{extents[0], columns};
      const auto sides = drawn_elements<T>(size_of(shape), 12);
      const auto expected = xt::linalg::lstsq(container(extents, elements), container(shape, sides), -1.0);
      auto solution = expected_of<K>(std::get<0>(expected));
      // required: a solution has the dimensions of its sides; the library drops those of 1.
      solution.extents = shape;
      solution.extents[0] = extents[1];
      this->expect_parts("xlstsq", {this->template made<K>(extents, elements), this->template made<K>(shape, sides)},
                         std::vector{solution, expected_of<K>(std::get<1>(expected)),
                                     expected_number<K>(std::get<2>(expected)), expected_of<K>(std::get<3>(expected))});
    }
  });
}

// ---- The other way round: the library's complaints are seen where they come

TEST(LibraryComplaints, AreWrittenToStandardOutput) {
  CapturedOutput output;
  const xt::xarray<double> square = {{2.0, 0.0}, {0.0, 4.0}}, sides = {1.0};
  EXPECT_THROW(xt::linalg::solve(square, sides), std::runtime_error);
  EXPECT_NE(output.text(), "") << "the test of silence would not hear this library";
}

}  // namespace
}  // namespace arrayfold::test
