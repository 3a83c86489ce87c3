// object/reference.cpp: the libraries' own operators and text

#include "reference.hpp"

#include <type_traits>

#include <nlohmann/json.hpp>

#include "support/containers.hpp"
#include "support/operator_formulas.hpp"

#include <xtensor/xjson.hpp>
#include <xtensor/xmath.hpp>

namespace arrayfold::test {

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
