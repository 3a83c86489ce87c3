// object/reference.cpp: the operators' formulas, and the libraries' own operators and text

#include "reference.hpp"

#include <algorithm>
#include <stdexcept>
#include <type_traits>

#include <nlohmann/json.hpp>

#include "support/containers.hpp"

#include <xtensor/xjson.hpp>
#include <xtensor/xmath.hpp>

namespace arrayfold::test {
namespace {

/// Wide enough for every sum, difference and product of elements.
__extension__ using WideInteger = __int128;
template <class T>
using Wide = std::conditional_t<std::is_integral_v<T>, WideInteger, double>;

/// Calls `use(formula)` with the operator as a function of two operands; floating-point numbers have no remainder.
template <class T, class Use>
TestArray with_formula(Opcode opcode, Use use) {
  switch (opcode) {
    case Opcode::add:
      return use([](const auto& a, const auto& b) { return a + b; });
    case Opcode::subtract:
      return use([](const auto& a, const auto& b) { return a - b; });
    case Opcode::multiply:
      return use([](const auto& a, const auto& b) { return a * b; });
    case Opcode::divide:
      return use([](const auto& a, const auto& b) { return a / b; });
    case Opcode::less_equal:
      return use([](const auto& a, const auto& b) { return a <= b; });
    case Opcode::greater_equal:
      return use([](const auto& a, const auto& b) { return a >= b; });
    case Opcode::less:
      return use([](const auto& a, const auto& b) { return a < b; });
    case Opcode::greater:
      return use([](const auto& a, const auto& b) { return a > b; });
    default:
      if constexpr (std::is_integral_v<T>) return use([](const auto& a, const auto& b) { return a % b; });
      throw std::invalid_argument("no such operator");
  }
}

/// The elements of a result: truth values of a comparison, else of the operands' own type.
template <class T, class Result>
using ResultElement = std::conditional_t<std::is_same_v<Result, bool>, bool, T>;

/// The offset of the element at `index` of the result, counted from the last dimension.
std::size_t offset_at(const Extents& index, const Extents& extents) {
  std::size_t offset = 0, stride = 1;
  for (std::size_t back = 1; back <= extents.size(); ++back) {
    const std::size_t extent = extents[extents.size() - back];
    if (extent != 1) offset += index[index.size() - back] * stride;
    stride *= extent;
  }
  return offset;
}

Extents broadcast(const Extents& left, const Extents& right) {
  const std::size_t rank = std::max(left.size(), right.size());
  Extents common(rank, 1);
  for (const Extents& extents : {left, right})
    for (std::size_t back = 1; back <= extents.size(); ++back)
      if (extents[extents.size() - back] != 1) common[rank - back] = extents[extents.size() - back];
  return common;
}

template <class T, class Formula>
TestArray plainly(const TestArray& left, const TestArray& right, Formula formula) {
  const auto &a = left.as<T>(), &b = right.as<T>();
  const Extents extents = broadcast(left.extents(), right.extents());
  std::vector<ResultElement<T, decltype(formula(Wide<T>{}, Wide<T>{}))>> elements;
  Extents index(extents.size(), 0);
  for (std::size_t at = 0; at < size_of(extents); ++at) {
    std::size_t rest = at;
    for (std::size_t axis = extents.size(); axis-- > 0; rest /= extents[axis]) index[axis] = rest % extents[axis];
    const Wide<T> x = a[offset_at(index, left.extents())], y = b[offset_at(index, right.extents())];
    elements.push_back(static_cast<typename decltype(elements)::value_type>(formula(x, y)));
  }
  return TestArray(extents, std::move(elements));
}

}  // namespace

TestArray plain_result(Opcode opcode, const TestArray& left, const TestArray& right) {
  return with_element(left.kind(), [&](auto zero) {
    using T = decltype(zero);
    return with_formula<T>(opcode, [&](auto formula) { return plainly<T>(left, right, formula); });
  });
}

TestArray library_result(Opcode opcode, const TestArray& left, const TestArray& right) {
  return with_element(left.kind(), [&](auto zero) {
    using T = decltype(zero);
    const auto a = container_with<T>(left), b = container_with<T>(right);
    return with_formula<T>(opcode, [&](auto formula) {
      // Taken one by one: the library's vectorised assignment of <= and >= between broadcast integers (0.24.3) goes
      // wrong.
      const auto computed = formula(a, b);
      using R = ResultElement<T, typename std::decay_t<decltype(computed)>::value_type>;
      return TestArray(Extents(computed.shape().begin(), computed.shape().end()),
                       std::vector<R>(computed.begin(), computed.end()));
    });
  });
}

std::string library_text(const TestArray& array, int indent) {
  nlohmann::json tree;
  if (array.kind() == Kind::boolean)
    xt::to_json(tree, container_with<bool>(array));
  else
    with_element(array.kind(), [&](auto zero) { xt::to_json(tree, container_with<decltype(zero)>(array)); });
  return tree.dump(indent, ' ', false, nlohmann::json::error_handler_t::strict);
}

}  // namespace arrayfold::test
