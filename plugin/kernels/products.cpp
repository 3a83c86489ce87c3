// kernels/products.cpp: products of matrices and vectors that BLAS does not compute, for each processor target

#include "kernels/products.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/products.cpp"
#include <hwy/foreach_target.h>

#include <algorithm>
#include <type_traits>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- Matrices

/// Four rows of sums share each register of elements.
template <class D, class B, class R>
HWY_INLINE void add_to_four(D tag, const R* factors, std::size_t inner, const B* elements, std::size_t columns, R* out,
                            std::size_t out_step) {
  auto a = hn::LoadU(tag, out), b = hn::LoadU(tag, out + out_step);
  auto c = hn::LoadU(tag, out + 2 * out_step), d = hn::LoadU(tag, out + 3 * out_step);
  for (std::size_t k = 0; k < inner; ++k, elements += columns) {
    const auto x = load_as(tag, elements);
    const auto product_in = [=](std::size_t row)
                                HWY_ATTR { return product(tag, hn::Set(tag, factors[row * inner + k]), x); };
    a = hn::Add(a, product_in(0));
    b = hn::Add(b, product_in(1));
    c = hn::Add(c, product_in(2));
    d = hn::Add(d, product_in(3));
  }
  hn::StoreU(a, tag, out);
  hn::StoreU(b, tag, out + out_step);
  hn::StoreU(c, tag, out + 2 * out_step);
  hn::StoreU(d, tag, out + 3 * out_step);
}

template <class D, class B, class R>
HWY_INLINE void add_to_one(D tag, const R* factors, std::size_t inner, const B* elements, std::size_t columns, R* out) {
  auto sum = hn::LoadU(tag, out);
  for (std::size_t k = 0; k < inner; ++k)
    sum = hn::Add(sum, product(tag, hn::Set(tag, factors[k]), load_as(tag, elements + k * columns)));
  hn::StoreU(sum, tag, out);
}

/// A register of each row of elements serves all rows of factors, so that it comes from the cache.
template <class B, class R>
void add_products(const R* factors, std::size_t rows, std::size_t inner, const B* elements, std::size_t columns, R* out,
                  std::size_t out_step) {
  const hn::ScalableTag<R> widest;
  constexpr std::size_t lanes = hn::MaxLanes(widest);
  const auto add_columns = [=](auto tag, std::size_t j) HWY_ATTR {
    std::size_t row = 0;
    for (; row + 4 <= rows; row += 4)
      add_to_four(tag, factors + row * inner, inner, elements + j, columns, out + row * out_step + j, out_step);
    for (; row < rows; ++row)
      add_to_one(tag, factors + row * inner, inner, elements + j, columns, out + row * out_step + j);
  };
  std::size_t j = 0;
  for (; columns - j >= lanes; j += lanes) add_columns(widest, j);
  for_each_narrower(widest, j, columns, add_columns);
}

/// Some factors at a time, so that what they write together stays in the cache until it is complete.
template <class B, class R>
void spread_row(const R* factors, std::size_t count, const B* row, std::size_t length, R* out) {
  constexpr std::size_t most = 8;
  for (std::size_t first = 0; first < count; first += most, factors += most, out += most * length) {
    const std::size_t together = std::min(most, count - first);
    for_each_register(hn::ScalableTag<R>(), length, [=](auto tag, std::size_t h) HWY_ATTR {
      const auto x = load_as(tag, row + h);
      for (std::size_t j = 0; j < together; ++j)
        hn::StoreU(product(tag, hn::Set(tag, factors[j]), x), tag, out + j * length + h);
    });
  }
}

// ---- Vectors of integers

/// The order of the additions does not matter to integers.
template <class T>
T sum_of_products(const T* a, const T* b, std::size_t count) {
  const hn::ScalableTag<T> tag;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  const auto products_at = [=](std::size_t i)
                               HWY_ATTR { return product(tag, hn::LoadU(tag, a + i), hn::LoadU(tag, b + i)); };
  auto even = hn::Zero(tag), odd = even;
  std::size_t i = 0;
  for (; count - i >= 2 * lanes; i += 2 * lanes) {
    even = hn::Add(even, products_at(i));
    odd = hn::Add(odd, products_at(i + lanes));
  }
  T sum = hn::GetLane(hn::SumOfLanes(tag, hn::Add(even, odd)));
  for (; i < count; ++i) sum += a[i] * b[i];
  return sum;
}

// ---- The table

template <class B, class R>
constexpr Products<B, R> products_of() {
  Products<B, R> all{&add_products<B, R>, &spread_row<B, R>, nullptr};
  if constexpr (std::is_same_v<B, R> && std::is_integral_v<R>) all.inner = &sum_of_products<R>;
  return all;
}

template <class... B, class... R>
constexpr AllProducts products_of_pairs(const ProductsOfPairs<Products<B, R>...>*) {
  return {products_of<B, R>()...};
}

constexpr AllProducts all_products = products_of_pairs(static_cast<const AllProducts*>(nullptr));

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const AllProducts* const products_by_target[] = ARRAYFOLD_LOOPS(all_products);

}  // namespace arrayfold
#endif
