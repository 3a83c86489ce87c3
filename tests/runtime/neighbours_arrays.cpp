// runtime/neighbours_arrays.cpp: the array library with columns first and without vector instructions
//
// Its functions have the names that those in the module have, and the program offers them to every library.

#include "runtime/neighbours_arrays.hpp"

#include <exception>
#include <xtensor/xarray.hpp>
#include <xtensor/xmath.hpp>
#include <xtensor/xsort.hpp>

namespace neighbours {

static_assert(xt::xarray<double>::static_layout == xt::layout_type::column_major);

double sum_of_own_arrays(int n) {
  const xt::xarray<double> up = xt::arange<double>(n);
  const xt::xarray<double> sorted = xt::sort(xt::eval(up * 2.0));
  return xt::sum(sorted)();
}

std::string own_broadcast_error() {
  const xt::xarray<double> two = xt::ones<double>({2}), three = xt::ones<double>({3});
  try {
    const xt::xarray<double> sum = two + three;
    return "none";
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace neighbours
