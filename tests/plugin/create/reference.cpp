// create/reference.cpp: the array library's own shuffle, evenly spaced numbers and identity matrix

#include "reference.hpp"

#include "support/containers.hpp"

#include <xtensor/xbuilder.hpp>
#include <xtensor/xnoalias.hpp>
#include <xtensor/xrandom.hpp>

namespace arrayfold::test {

TestArray library_shuffle(const TestArray& array, std::mt19937& engine) {
  return with_element(array.kind(), [&](auto zero) {
    using T = decltype(zero);
    auto container = container_with<T>(array);
    xt::random::shuffle(container, engine);
    return array_in<T>(container);
  });
}

TestArray library_linspace(Kind kind, const Number& start, const Number& stop, std::size_t count) {
  return with_element(kind, [&](auto zero) {
    using T = decltype(zero);
    const auto expression = xt::linspace<T>(start.as<T>(), stop.as<T>(), count);
    auto result = xarray_of<T>::from_shape(expression.shape());
    xt::noalias(result) = expression;
    return array_in<T>(result);
  });
}

TestArray library_eye(std::size_t rows, std::size_t columns) {
  const xarray_of<double> eye = xt::eye<double>({rows, columns}, 0);
  return array_in<double>(eye);
}

}  // namespace arrayfold::test
