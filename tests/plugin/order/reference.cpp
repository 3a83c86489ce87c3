// order/reference.cpp: the array library's own sorts and sets

#include "reference.hpp"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "support/containers.hpp"

#include <xtensor/xmath.hpp>
#include <xtensor/xsort.hpp>

namespace arrayfold::test {
namespace {

template <class T>
TestArray library_result_of(const std::string& name, const xarray_of<T>& array) {
  if (name == "xsort") return array_in<T>(xt::sort(array));
  if (name == "xargsort") return array_in<std::int32_t>(xt::argsort(array));
  if (name == "xunique") return array_in<T>(xt::unique(array));
  if (name == "xdiff") return array_in<T>(xt::diff(array));
  if (name == "xargmin") return array_in<std::int32_t>(xt::argmin(array));
  if (name == "xargmax") return array_in<std::int32_t>(xt::argmax(array));
  throw std::invalid_argument(name);
}

template <class T>
TestArray expected_positions_of(const std::vector<T>& elements, std::size_t length, const TestArray& of_library) {
  auto expected = of_library.as<std::int32_t>();
  for (std::size_t first = 0; length >= long_run && first < elements.size(); first += length) {
    const T* const row = elements.data() + first;
    if (std::is_same_v<T, float> || std::any_of(row, row + length, [](T x) { return x != x; })) continue;
    const auto begin = expected.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = begin + static_cast<std::ptrdiff_t>(length);
    std::iota(begin, end, 0);
    std::stable_sort(begin, end, [row](std::int32_t a, std::int32_t b) { return row[a] < row[b]; });
  }
  return TestArray(of_library.extents(), std::move(expected));
}

template <class T>
bool positions_put_in_order(const std::vector<std::int32_t>& positions, const std::vector<T>& elements,
                            std::size_t length) {
  for (std::size_t first = 0; first < positions.size(); first += length) {
    const T* const row = elements.data() + first;
    std::vector<bool> seen(length);
    for (std::size_t i = 0; i < length; ++i) {
      const auto at = static_cast<std::size_t>(positions[first + i]);
      if (at >= length || seen[at]) return false;
      seen[at] = true;
      if (i > 0 && row[at] < row[positions[first + i - 1]]) return false;
    }
  }
  return true;
}

/// Calls `use(elements)` with the array's own elements.
template <class Use>
auto with_elements(const TestArray& array, Use use) {
  return with_element(array.kind(), [&](auto zero) { return use(array.as<decltype(zero)>()); });
}

}  // namespace

TestArray library_result(const std::string& name, const TestArray& array) {
  return with_element(array.kind(),
                      [&](auto zero) { return library_result_of(name, container_with<decltype(zero)>(array)); });
}

TestArray library_partition(const TestArray& array, std::size_t rank) {
  return with_element(array.kind(), [&](auto zero) {
    using T = decltype(zero);
    return array_in<T>(xt::partition(container_with<T>(array), rank));
  });
}

TestArray expected_positions(const TestArray& array) {
  const TestArray of_library = library_result("xargsort", array);
  const std::size_t length = array.extents().back();
  return with_elements(array,
                       [&](const auto& elements) { return expected_positions_of(elements, length, of_library); });
}

bool put_in_order(const TestArray& positions, const TestArray& array) {
  return with_elements(array, [&](const auto& elements) {
    return positions_put_in_order(positions.as<std::int32_t>(), elements, array.extents().back());
  });
}

TestArray sorted(const TestArray& array) {
  return with_elements(array, [&](auto elements) {
    std::sort(elements.begin(), elements.end());
    return TestArray(array.extents(), std::move(elements));
  });
}

bool is_permutation(const TestArray& a, const TestArray& b) {
  return with_elements(a, [&](const auto& elements) {
    const auto& others = b.as<typename std::decay_t<decltype(elements)>::value_type>();
    return std::is_permutation(elements.begin(), elements.end(), others.begin(), others.end());
  });
}

bool is_parted_at(const TestArray& array, std::size_t place) {
  return with_elements(array, [&](const auto& elements) {
    const auto at = elements.begin() + static_cast<std::ptrdiff_t>(place);
    return std::all_of(elements.begin(), at, [&](auto x) { return x <= *at; }) &&
           std::all_of(at, elements.end(), [&](auto x) { return x >= *at; });
  });
}

}  // namespace arrayfold::test
