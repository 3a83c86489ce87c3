// support/functions.cpp: the functions of the module by their rows in host/functions.def

#include "support/functions.hpp"

#include <algorithm>
#include <cstring>

namespace arrayfold::test {
namespace {

constexpr bool is_stub(const char* status) { return status[0] == 's'; }

template <class Accept>
std::vector<std::string> names_where(Accept accept) {
  std::vector<std::string> names;
  for (const auto& function : all_functions())
    if (accept(function)) names.push_back(function.name);
  return names;
}

}  // namespace

const std::vector<FunctionRecord>& all_functions() {
  static const std::vector<FunctionRecord> functions = {
#define FUNCTION(name, family, minimum, status) {#name, #family, minimum, is_stub(#status)},
#include "host/functions.def"
#undef FUNCTION
  };
  return functions;
}

std::vector<std::string> functions_of(const std::string& family) {
  return names_where([&](const FunctionRecord& function) { return family == function.family; });
}

std::vector<std::string> stubs_of(const std::string& family) {
  return names_where([&](const FunctionRecord& function) { return family == function.family && function.is_stub; });
}

std::vector<std::string> working_functions_of(const std::string& family) {
  return names_where([&](const FunctionRecord& function) { return family == function.family && !function.is_stub; });
}

std::vector<std::string> without(const std::vector<std::string>& names, const NameLists& lists) {
  std::vector<std::string> left;
  for (const auto& name : names)
    if (std::none_of(lists.begin(), lists.end(), [&](const auto& list) { return contains(list, name); }))
      left.push_back(name);
  return left;
}

std::vector<std::string> joined(const NameLists& lists) {
  std::vector<std::string> names;
  for (const auto& list : lists) names.insert(names.end(), list.begin(), list.end());
  return names;
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace arrayfold::test
