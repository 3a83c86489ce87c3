// kernels/products.hpp: products of matrices and vectors that BLAS does not compute
//
// Factors of type R multiply elements of type B, each converted to R. Integers wrap in their width.

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"

namespace arrayfold {

template <class B, class R>
struct Products {
  /// out += factors * elements, three matrices by rows. `factors` has `rows` times `inner` numbers, `elements` has
  /// `inner` rows of `columns`; rows of `out` begin `out_step` apart. Each number adds up in the order of the inner
  /// index.
  void (*add)(const R* factors, std::size_t rows, std::size_t inner, const B* elements, std::size_t columns, R* out,
              std::size_t out_step);
  /// Each of `count` factors in turn times the whole row of `length` elements.
  void (*spread)(const R* factors, std::size_t count, const B* row, std::size_t length, R* out);
  /// The sum of `count` products. Null unless B and R are the same type of integers.
  R (*inner)(const R* factors, const B* elements, std::size_t count);
};

template <class... Pair>
struct ProductsOfPairs : Pair... {};

/// For each R that is common to B and some type of elements.
using AllProducts =
    ProductsOfPairs<Products<double, double>, Products<float, double>, Products<std::int32_t, double>,
                    Products<std::int64_t, double>, Products<float, float>, Products<std::int32_t, float>,
                    Products<std::int64_t, float>, Products<std::int32_t, std::int32_t>,
                    Products<std::int32_t, std::int64_t>, Products<std::int64_t, std::int64_t>>;

extern const AllProducts* const products_by_target[];

template <class B, class R>
const Products<B, R>& products() {
  return *products_by_target[target_index()];
}

}  // namespace arrayfold
