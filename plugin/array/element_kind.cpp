// array/element_kind.cpp: the table of dtype names

#include "array/element_kind.hpp"

namespace arrayfold {
namespace {

std::unordered_map<std::string, ElementKind> codes_by_dtype() {
  return for_kinds(all_kinds{}, [](auto... kind) {
    return std::unordered_map<std::string, ElementKind>{{decltype(kind)::dtype, decltype(kind)::code}...};
  });
}

}  // namespace

// The only initialiser at load that is the module's own.
const std::unordered_map<std::string, ElementKind> dtype_table = codes_by_dtype();

}  // namespace arrayfold
