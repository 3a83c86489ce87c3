// fuzz/plain_functions.cpp: slow formulas of functions from arrays to an array

#include "fuzz/plain_functions.hpp"

#include <algorithm>

#include "support/plain_operators.hpp"

namespace arrayfold::fuzz {
namespace {

using test::Extents;

/// Calls `use(elements)` with a copy of the array's elements.
template <class Use>
TestArray with_elements(const TestArray& array, Use use) {
  return test::with_element(array.kind(), [&](auto zero) { return use(array.as<decltype(zero)>()); });
}

}  // namespace

TestArray plain_sort(const TestArray& array) {
  return with_elements(array, [&](auto elements) {
    const auto row = static_cast<std::ptrdiff_t>(array.extents().empty() ? 1 : array.extents().back());
    for (auto begin = elements.begin(); begin != elements.end(); begin += row) std::sort(begin, begin + row);
    return TestArray(array.extents(), std::move(elements));
  });
}

TestArray plain_unique(const TestArray& array) {
  return with_elements(array, [&](auto elements) {
    std::sort(elements.begin(), elements.end());
    elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
    return TestArray(Extents{elements.size()}, std::move(elements));
  });
}

TestArray plain_differences(const TestArray& array) {
  return with_elements(array, [&](const auto& elements) {
    Extents extents = array.extents();
    const std::size_t row = extents.empty() ? 1 : extents.back();
    if (extents.empty()) extents.push_back(1);
    extents.back() = elements.empty() ? 0 : row - 1;
    std::decay_t<decltype(elements)> differences;
    for (std::size_t i = 1; i < elements.size(); ++i)
      if (i % row != 0) differences.push_back(elements[i] - elements[i - 1]);
    return TestArray(extents, std::move(differences));
  });
}

TestArray plain_squares(const TestArray& array) {
  return with_elements(array, [&](const auto& elements) {
    std::vector<double> squares;
    for (const auto x : elements) squares.push_back(static_cast<double>(static_cast<decltype(x)>(x * x)));
    return TestArray(array.extents(), std::move(squares));
  });
}

TestArray plain_minimum(const TestArray& a, const TestArray& b) {
  const TestArray is_less = test::plain_result(Opcode::less, a, b);
  const TestArray first = test::spread(a, is_less.extents()), second = test::spread(b, is_less.extents());
  test::Numbers chosen;
  for (std::size_t i = 0; i < is_less.size(); ++i) chosen.push_back(is_less[i].as<bool>() ? first[i] : second[i]);
  return TestArray(ElementKind::float64, is_less.extents(), chosen);
}

bool are_equal(const test::Number& a, const test::Number& b) {
  return a.is_integer == b.is_integer && (a == b || (test::is_nan(a) && test::is_nan(b)));
}

bool are_equal(const TestArray& a, const TestArray& b) {
  if (a.kind() != b.kind() || a.extents() != b.extents() || a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (!are_equal(a[i], b[i])) return false;
  return true;
}

}  // namespace arrayfold::fuzz
