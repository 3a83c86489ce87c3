// support/plain_operators.cpp: the broadcasting rule and the operators' formulas, an element at a time

#include "support/plain_operators.hpp"

#include <algorithm>

#include "support/operator_formulas.hpp"

namespace arrayfold::test {
namespace {

/// Wide enough for every sum, difference and product of elements.
__extension__ using WideInteger = __int128;
template <class T>
using Wide = std::conditional_t<std::is_integral_v<T>, WideInteger, double>;

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

template <class T, class Formula>
TestArray plainly(const TestArray& left, const TestArray& right, Formula formula) {
  const Extents extents = broadcast(left.extents(), right.extents()).value();
  const TestArray a = spread(left, extents), b = spread(right, extents);
  std::vector<ResultElement<T, decltype(formula(Wide<T>{}, Wide<T>{}))>> elements;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const Wide<T> x = a.as<T>()[i], y = b.as<T>()[i];
    elements.push_back(static_cast<typename decltype(elements)::value_type>(formula(x, y)));
  }
  return TestArray(extents, std::move(elements));
}

}  // namespace

std::optional<Extents> broadcast(const Extents& left, const Extents& right) {
  const std::size_t rank = std::max(left.size(), right.size());
  Extents common(rank, 1);
  for (const Extents& extents : {left, right})
    for (std::size_t back = 1; back <= extents.size(); ++back) {
      const std::size_t extent = extents[extents.size() - back];
      std::size_t& shared = common[rank - back];
      if (extent == 1) continue;
      if (shared != 1 && shared != extent) return std::nullopt;
      shared = extent;
    }
  return common;
}

TestArray spread(const TestArray& array, const Extents& extents) {
  return with_element(array.kind(), [&](auto zero) {
    const auto& given = array.as<decltype(zero)>();
    std::vector<decltype(zero)> elements;
    Extents index(extents.size(), 0);
    for (std::size_t at = 0; at < size_of(extents); ++at) {
      std::size_t rest = at;
      for (std::size_t axis = extents.size(); axis-- > 0; rest /= extents[axis]) index[axis] = rest % extents[axis];
      elements.push_back(given[offset_at(index, array.extents())]);
    }
    return TestArray(extents, std::move(elements));
  });
}

TestArray plain_result(Opcode opcode, const TestArray& left, const TestArray& right) {
  return with_element(left.kind(), [&](auto zero) {
    using T = decltype(zero);
    return with_formula<T>(opcode, [&](auto formula) { return plainly<T>(left, right, formula); });
  });
}

}  // namespace arrayfold::test
