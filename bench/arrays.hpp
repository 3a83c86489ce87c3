// bench/arrays.hpp: operands of the cases, the same in every run

#pragma once

#include <cstddef>
#include <vector>

#include "kernel/kernel.hpp"

namespace arrayfold::bench {

/// Doubles of the normal distribution: full mantissas, both signs.
hvm::Value normal_doubles(const std::vector<std::size_t>& extents, unsigned seed = 1);
/// Normal doubles in a square, 2n more on the diagonal: its inverse exists, and its lower triangle is that of a
/// positive definite matrix.
hvm::Value dominant_square(std::size_t n);
/// Absolute values of normal doubles.
hvm::Value positive_doubles(const std::vector<std::size_t>& extents);
/// Doubles within a few thousandths of 1: the product of many neither underflows nor overflows.
hvm::Value doubles_beside_one(const std::vector<std::size_t>& extents);
/// 32-bit integers, uniform from 1 to 100.
hvm::Value ints_to_100(const std::vector<std::size_t>& extents);
/// The same in 64 bits.
hvm::Value long_ints_to_100(const std::vector<std::size_t>& extents);
/// 32-bit integers, uniform between -999999 and 999999.
hvm::Value small_ints(const std::vector<std::size_t>& extents, unsigned seed = 1);
/// The same in 64 bits.
hvm::Value small_long_ints(const std::vector<std::size_t>& extents, unsigned seed = 1);
/// 32-bit integers, uniform between 1 and 999.
hvm::Value divisors(const std::vector<std::size_t>& extents, unsigned seed = 2);

}  // namespace arrayfold::bench
