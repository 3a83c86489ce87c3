// linalg/products.cpp: xdot, xvdot, xouter, xkron, xmatrix_power
//
// A product of any two kinds is computed in the type common to both, and stored in the kind of the first.
// required: products of different kinds therefore do not commute: integers times doubles lose the fractions, doubles
// times integers keep them.
//
// Two double or two float arrays go to BLAS. All other pairs are added from 0 in the order of the inner index.

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>

#include "array/rows.hpp"
#include "array/scratch.hpp"
#include "kernels/conversion.hpp"
#include "kernels/products.hpp"
#include "linalg/result.hpp"

namespace arrayfold {
namespace {

// ---- The frame

/// The outcome of `visit(kind, first, second)` for two numeric arrays; the kind is the first one's.
template <class Visit>
Outcome visit_pair(const Call& call, Visit visit) {
  const auto arrays = two_numeric_arguments(call);
  if (!arrays) return Outcome::failed;
  return visit_ref(arrays->first, [&](auto kind, const auto& a) {
    return visit_ref(arrays->second, [&](auto, const auto& b) { return visit(kind, a, b); });
  });
}

/// Gives the array `multiply(kind, first, second)` under the name of the first's kind. Throws std::bad_alloc when the
/// product of an operand's extents is not the number of its elements.
template <class Multiply>
Outcome give_product(const Call& call, Multiply multiply) {
  return visit_pair(call, [&](auto kind, const auto& a, const auto& b) {
    check_extents(a);
    check_extents(b);
    give_array(call, kind, multiply(kind, a, b));
    return Outcome::handled;
  });
}

template <class A, class B>
using CommonType = std::common_type_t<A, B>;
template <class Array>
using ElementOf = typename std::decay_t<Array>::value_type;

/// Does BLAS compute products of these types?
template <class A, class B>
constexpr bool for_blas = std::is_same_v<A, B>&& std::is_floating_point_v<A>;

/// A new array of the kind in which results of `Kind` are stored. `compute(out)` sets all its elements, as numbers of
/// type R.
template <class Kind, class R, class Compute>
auto computed(const Shape& extents, Compute compute) {
  using Stored = typename Kind::stored;
  auto made = make_array<Stored>(extents);
  auto& elements = made->array->storage();
  if constexpr (std::is_same_v<typename Stored::element, R>) {
    compute(elements.data());
  } else {
    const Scratch<R> scratch(elements.size());
    compute(scratch.data());
    convert(scratch.data(), elements.data(), elements.size());
  }
  return made;
}

/// The factors of a product are read some at a time.
constexpr std::size_t factors_together = 256;

/// Reads `count` factors, a step apart, as numbers of type R.
template <class A, class R>
void read_factors(const A* elements, std::size_t step, std::size_t count, R* factors) {
  for (std::size_t i = 0; i < count; ++i) factors[i] = static_cast<R>(elements[i * step]);
}

using Count = xt::blas_index_t;  // the counts of BLAS

/// Throws std::bad_alloc for a count that BLAS cannot take.
Count blas_count(std::size_t n) {
  if (n > static_cast<std::size_t>(std::numeric_limits<Count>::max())) throw std::bad_alloc();
  return static_cast<Count>(n);
}

// ---- xdot

/// The inner product of `count` elements with these steps between them.
template <class A, class B>
CommonType<A, B> inner_product(std::size_t count, const A* a, std::size_t a_step, const B* b, std::size_t b_step) {
  CommonType<A, B> sum{0};
  if constexpr (for_blas<A, B>) {
    cxxblas::dot<Count>(blas_count(count), a, blas_count(a_step), b, blas_count(b_step), sum);
    return sum;
  }
  if constexpr (std::is_same_v<A, B> && std::is_integral_v<A>)
    if (a_step == 1 && b_step == 1) return products<A, A>().inner(a, b, count);
  for (std::size_t i = 0; i < count; ++i) sum += a[i * a_step] * b[i * b_step];
  return sum;
}

/// Two arrays of at least one dimension as matrices: the rows of the first, times each of the second's consecutive
/// `matrices`.
struct DotForm {
  std::size_t rows;
  std::size_t inner;
  std::size_t matrices;
  std::size_t columns;
  Shape extents;  // of the result
};

/// Throws std::runtime_error when the inner extents differ.
DotForm dot_form(const Shape& a, const Shape& b) {
  const std::size_t inner_of_b = b.size() > 1 ? b.size() - 2 : 0;
  if (a.back() != b[inner_of_b]) throw std::runtime_error("Dot: shape mismatch.");
  DotForm form{1, a.back(), 1, b.size() > 1 ? b.back() : 1, {}};
  for (std::size_t n = 0; n + 1 < a.size(); ++n) {
    form.rows *= a[n];
    form.extents.push_back(a[n]);
  }
  for (std::size_t n = 0; n < inner_of_b; ++n) {
    form.matrices *= b[n];
    form.extents.push_back(b[n]);
  }
  if (b.size() > 1) form.extents.push_back(b.back());
  // required: the product of two vectors has one dimension, of one element.
  if (form.extents.empty()) form.extents.push_back(1);
  return form;
}

/// Each element adds up in the order of the inner index.
template <class A, class B, class R>
void multiply_by_rows(const DotForm& form, const A* a, const B* b, R* out) {
  const std::size_t out_step = form.matrices * form.columns;
  std::fill_n(out, form.rows * out_step, R{0});
  // Adds the products of `inner` factors in each of `rows` rows.
  const auto add = [&](const R* factors, std::size_t row, std::size_t rows, std::size_t k, std::size_t inner) {
    for (std::size_t n = 0; n < form.matrices; ++n)
      products<B, R>().add(factors, rows, inner, b + (n * form.inner + k) * form.columns, form.columns,
                           out + row * out_step + n * form.columns, out_step);
  };
  if constexpr (std::is_same_v<A, R>) {
    add(a, 0, form.rows, 0, form.inner);
  } else {
    constexpr std::size_t rows_together = 16, inner_together = 64;
    R factors[rows_together * inner_together];
    for (std::size_t row = 0; row < form.rows; row += rows_together)
      for (std::size_t k = 0; k < form.inner; k += inner_together) {
        const std::size_t rows = std::min(rows_together, form.rows - row);
        const std::size_t inner = std::min(inner_together, form.inner - k);
        for (std::size_t i = 0; i < rows; ++i)
          read_factors(a + (row + i) * form.inner + k, 1, inner, factors + i * inner);
        add(factors, row, rows, k, inner);
      }
  }
}

/// Every element by its own inner product.
template <class A, class B, class R>
void multiply_by_inner_products(const DotForm& form, const A* a, const B* b, R* out) {
  for (std::size_t row = 0; row < form.rows; ++row, a += form.inner)
    for (std::size_t n = 0; n < form.matrices; ++n)
      for (std::size_t column = 0; column < form.columns; ++column)
        *out++ = inner_product(form.inner, a, 1, b + n * form.inner * form.columns + column, form.columns);
}

template <class T>
void multiply_by_blas(const DotForm& form, const T* a, std::size_t a_dimensions, const T* b, std::size_t b_dimensions,
                      T* out) {
  const Count rows = blas_count(form.rows), inner = blas_count(form.inner), columns = blas_count(form.columns);
  if (a_dimensions > 2 || b_dimensions > 2 || (a_dimensions == 1 && b_dimensions == 1))
    return multiply_by_inner_products(form, a, b, out);
  if (a_dimensions == 2 && b_dimensions == 2)
    return cxxblas::gemm<Count>(cxxblas::RowMajor, cxxblas::NoTrans, cxxblas::NoTrans, rows, columns, inner, T{1}, a,
                                inner, b, columns, T{0}, out, columns);
  std::fill_n(out, form.rows * form.columns, T{0});
  if (b_dimensions == 1)
    cxxblas::gemv<Count>(cxxblas::RowMajor, cxxblas::NoTrans, rows, inner, T{1}, a, inner, b, 1, T{0}, out, 1);
  else
    cxxblas::gemv<Count>(cxxblas::RowMajor, cxxblas::Trans, inner, columns, T{1}, b, columns, a, 1, T{0}, out, 1);
}

constexpr auto dot = [](auto kind, const auto& a, const auto& b) {
  using A = ElementOf<decltype(a)>;
  using B = ElementOf<decltype(b)>;
  using R = CommonType<A, B>;
  const A* const left = a.storage().data();
  const B* const right = b.storage().data();
  // A zero-dimensional array multiplies each element of the other.
  if (a.dimension() == 0)
    return computed<decltype(kind), R>(b.shape(), [&](R* out) {
      const auto factor = static_cast<R>(*left);
      products<B, R>().spread(&factor, 1, right, b.storage().size(), out);
    });
  if (b.dimension() == 0)
    return computed<decltype(kind), R>(a.shape(), [&](R* out) {
      const auto factor = static_cast<R>(*right);
      products<A, R>().spread(&factor, 1, left, a.storage().size(), out);
    });
  const DotForm form = dot_form(a.shape(), b.shape());
  return computed<decltype(kind), R>(form.extents, [&](R* out) {
    const std::size_t size = form.rows * form.matrices * form.columns;
    if (form.inner == 0 || size == 0) return std::fill_n(out, size, R{0}), void();
    if constexpr (for_blas<A, B>)
      multiply_by_blas(form, left, a.dimension(), right, b.dimension(), out);
    else if (form.columns == 1)
      multiply_by_inner_products(form, left, right, out);
    else
      multiply_by_rows(form, left, right, out);
  });
};

// ---- xvdot and xouter walk the first axis

/// The elements along the first axis. A zero-dimensional array has one.
template <class T>
struct FirstAxis {
  const T* elements;
  std::size_t extent = 1;
  std::size_t stride = 1;

  const T& operator[](std::size_t i) const { return elements[i * stride]; }
};

template <class T>
FirstAxis<T> first_axis(const xarray_of<T>& array) {
  const T* const elements = array.storage().data();
  if (array.dimension() == 0) return {elements};
  // A stride of 0 stands for an extent of 1.
  const auto stride = static_cast<std::size_t>(array.strides().front());
  return {elements, array.shape().front(), stride == 0 ? 1 : stride};
}

/// True when `count` elements, a stride apart, lie within the array.
template <class T>
bool holds(const xarray_of<T>& array, std::size_t count, std::size_t stride) {
  const std::size_t size = array.storage().size();
  return count == 0 || (size > 0 && count - 1 <= (size - 1) / stride);
}

/// Adds the products to `out`, which is 0: a product of -0 thereby becomes 0.
template <class A, class B, class R>
void multiply_outer(const FirstAxis<A>& a, const FirstAxis<B>& b, R* out) {
  if constexpr (for_blas<A, B>) {
    cxxblas::ger<Count>(cxxblas::RowMajor, blas_count(a.extent), blas_count(b.extent), R{1}, a.elements,
                        blas_count(a.stride), b.elements, blas_count(b.stride), out, blas_count(b.extent));
  } else if (b.stride == 1) {
    R factors[factors_together];
    for (std::size_t i = 0; i < a.extent; i += factors_together) {
      const std::size_t rows = std::min(factors_together, a.extent - i);
      read_factors(&a[i], a.stride, rows, factors);
      products<B, R>().add(factors, rows, 1, b.elements, b.extent, out + i * b.extent, b.extent);
    }
  } else {
    for (std::size_t i = 0; i < a.extent; ++i, out += b.extent)
      for (std::size_t j = 0; j < b.extent; ++j) out[j] += a[i] * b[j];
  }
}

constexpr auto outer = [](auto kind, const auto& first, const auto& second) {
  using R = CommonType<ElementOf<decltype(first)>, ElementOf<decltype(second)>>;
  const auto a = first_axis(first);
  const auto b = first_axis(second);
  return computed<decltype(kind), R>({a.extent, b.extent}, [&](R* out) {
    std::fill_n(out, a.extent * b.extent, R{0});
    // An operand without elements adds nothing.
    if (!first.storage().empty() && !second.storage().empty()) multiply_outer(a, b, out);
  });
};

// ---- xkron

/// What xkron takes of an array: its first two extents and the strides of its last two axes. A vector is a matrix of
/// one row, a number a matrix of one element.
struct KronForm {
  std::size_t rows = 1;
  std::size_t columns = 1;
  std::size_t row_stride = 0;
  std::size_t column_stride = 1;
};

template <class T>
KronForm kron_form(const xarray_of<T>& array) {
  const Shape& extents = array.shape();
  if (extents.empty()) return {};
  if (extents.size() == 1) return {1, extents[0], 0, 1};
  return {extents[0], extents[1], static_cast<std::size_t>(array.strides()[extents.size() - 2]), last_stride(array)};
}

/// Throws std::bad_alloc when 64 bits do not hold the product.
std::size_t extents_product(std::size_t a, std::size_t b) {
  if (__builtin_mul_overflow(a, b, &a)) throw std::bad_alloc();
  return a;
}

/// Each of `count` factors in turn times the elements of a row, a step apart.
template <class B, class R>
void spread(const R* factors, std::size_t count, const B* row, std::size_t step, std::size_t length, R* out) {
  if (step == 1) return products<B, R>().spread(factors, count, row, length, out);
  for (std::size_t j = 0; j < count; ++j)
    for (std::size_t h = 0; h < length; ++h) *out++ = factors[j] * static_cast<R>(row[h * step]);
}

/// Each element of the first, multiplied by all of the second, in its place.
constexpr auto kron = [](auto kind, const auto& first, const auto& second) {
  using R = CommonType<ElementOf<decltype(first)>, ElementOf<decltype(second)>>;
  const KronForm a = kron_form(first);
  const KronForm b = kron_form(second);
  const auto* const left = first.storage().data();
  const auto* const right = second.storage().data();
  const std::size_t rows = extents_product(a.rows, b.rows), columns = extents_product(a.columns, b.columns);
  return computed<decltype(kind), R>({rows, columns}, [&](R* out) {
    const bool nothing = first.storage().empty() || second.storage().empty();
    if (nothing) return std::fill_n(out, rows * columns, R{0}), void();
    R factors[factors_together];
    for (std::size_t i = 0; i < a.rows; ++i)
      for (std::size_t j = 0; j < a.columns; j += factors_together) {
        const std::size_t count = std::min(factors_together, a.columns - j);
        read_factors(left + i * a.row_stride + j * a.column_stride, a.column_stride, count, factors);
        for (std::size_t k = 0; k < b.rows; ++k)
          spread(factors, count, right + k * b.row_stride, b.column_stride, b.columns,
                 out + (i * b.rows + k) * columns + j * b.columns);
      }
  });
};

}  // namespace

Outcome xdot(const Call& call) { return give_product(call, dot); }

// required: the first operand alone decides how many elements are multiplied.
Outcome xvdot(const Call& call) {
  return visit_pair(call, [&](auto kind, const auto& a, const auto& b) {
    using Stored = typename decltype(kind)::stored;
    const auto left = first_axis(a);
    const auto right = first_axis(b);
    // The call fails when an operand has fewer.
    if (!holds(a, left.extent, left.stride) || !holds(b, left.extent, right.stride)) return Outcome::failed;
    // The stride of a single element may be anything.
    const bool walks = left.extent > 1;
    const auto product =
        inner_product(left.extent, left.elements, walks ? left.stride : 1, right.elements, walks ? right.stride : 1);
    give_array(call, kind, stored_scalar(kind, element_from<Stored>(product)));
    return Outcome::handled;
  });
}

Outcome xouter(const Call& call) { return give_product(call, outer); }
Outcome xkron(const Call& call) { return give_product(call, kron); }

// required: finished as it stands; no exponent is read and no power computed.
Outcome xmatrix_power(const Call& call) { return check_one_object(call); }

}  // namespace arrayfold
