// linalg/reference.cpp: the array library's own linear algebra

#include "reference.hpp"

#include <stdexcept>

#include "linalg/library.hpp"
#include "support/containers.hpp"

namespace arrayfold::test {
namespace {

/// The elements of a result of an operand's kind: doubles where the operand has floats.
template <class T>
using Stored = std::conditional_t<std::is_same_v<T, float>, double, T>;

/// An array of the library's, by rows.
template <class T, class Result>
TestArray part(const Result& result) {
  using U = typename Result::value_type;
  const xt::xarray<U, xt::layout_type::row_major> by_rows = result;
  std::vector<Stored<T>> elements;
  for (const U x : by_rows) elements.push_back(static_cast<Stored<T>>(x));
  return TestArray(Extents(by_rows.shape().begin(), by_rows.shape().end()), std::move(elements));
}

template <class T, class U>
TestArray number(U x) {
  return TestArray(Extents{}, std::vector<Stored<T>>{static_cast<Stored<T>>(x)});
}

template <class T, class U>
TestArray product(const std::string& name, const xarray_of<T>& a, const xarray_of<U>& b) {
  if (name == "xdot") return part<T>(xt::linalg::dot(a, b));
  if (name == "xvdot") return number<T>(xt::linalg::vdot(a, b));
  if (name == "xouter") return part<T>(xt::linalg::outer(a, b));
  if (name == "xkron") return part<T>(xt::linalg::kron(a, b));
  throw std::invalid_argument(name);
}

template <class T>
std::vector<TestArray> parts(const std::string& name, const xarray_of<T>& a) {
  using namespace xt::linalg;
  const auto all = [](const auto&... results) { return std::vector<TestArray>{part<T>(results)...}; };
  if (name == "xcholesky") return all(cholesky(a));
  if (name == "xqr") return std::apply(all, qr(a));
  if (name == "xsvd") return std::apply(all, svd(a));
  if (name == "xeigh") return std::apply(all, eigh(a));
  if (name == "xeigvalsh") return all(eigvalsh(a));
  if (name == "xtrace") return all(trace(a));
  if (name == "xinv") return all(inv(a));
  if (name == "xpinv") return all(pinv(a, 1e-15));
  if (name == "xdet") return {number<T>(det(a))};
  if (name == "xmatrix_rank") return {number<T>(matrix_rank(a, -1.0))};
  if (name == "xnorm") return {number<T>(a.dimension() == 1 ? xt::linalg::norm(a, 2) : xt::linalg::norm(a))};
  if (name == "xslogdet") {
    const auto [sign, logarithm] = slogdet(a);
    return {number<T>(sign), number<T>(logarithm)};
  }
  throw std::invalid_argument(name);
}

template <class T>
std::vector<TestArray> parts(const std::string& name, const xarray_of<T>& a, const xarray_of<T>& b) {
  if (name == "xsolve") return {part<T>(xt::linalg::solve(a, b))};
  if (name == "xlstsq") {
    const auto found = xt::linalg::lstsq(a, b, -1.0);
    return {part<T>(std::get<0>(found)), part<T>(std::get<1>(found)), number<T>(std::get<2>(found)),
            part<T>(std::get<3>(found))};
  }
  throw std::invalid_argument(name);
}

/// Calls `use(T{})` for the kinds of floating-point numbers.
template <class Use>
auto with_floating(Kind kind, Use use) {
  return kind == Kind::float32 ? use(float{}) : use(double{});
}

}  // namespace

TestArray library_product(const std::string& name, const TestArray& left, const TestArray& right) {
  return with_element(left.kind(), [&](auto zero) {
    const auto a = container_with<decltype(zero)>(left);
    return with_element(right.kind(),
                        [&](auto other) { return product(name, a, container_with<decltype(other)>(right)); });
  });
}

std::vector<TestArray> library_parts(const std::string& name, const TestArray& matrix) {
  return with_floating(matrix.kind(),
                       [&](auto zero) { return parts<decltype(zero)>(name, container_with<decltype(zero)>(matrix)); });
}

std::vector<TestArray> library_parts(const std::string& name, const TestArray& matrix, const TestArray& other) {
  return with_floating(matrix.kind(), [&](auto zero) {
    using T = decltype(zero);
    return parts<T>(name, container_with<T>(matrix), container_with<T>(other));
  });
}

}  // namespace arrayfold::test
