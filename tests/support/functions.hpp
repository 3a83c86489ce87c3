// support/functions.hpp: the functions of the module by their rows in host/functions.def

#pragma once

#include <string>
#include <vector>

namespace arrayfold::test {

struct FunctionRecord {
  const char* name;
  const char* family;
  int minimum;  // of arguments
  bool is_stub;
};

/// One for each row, in the order of the rows.
const std::vector<FunctionRecord>& all_functions();
std::vector<std::string> functions_of(const std::string& family);
std::vector<std::string> stubs_of(const std::string& family);
/// The functions of a family that compute something.
std::vector<std::string> working_functions_of(const std::string& family);

using NameLists = std::vector<std::vector<std::string>>;
/// The names that are in none of the lists.
std::vector<std::string> without(const std::vector<std::string>& names, const NameLists& lists);
std::vector<std::string> joined(const NameLists& lists);
bool contains(const std::vector<std::string>& names, const std::string& name);

}  // namespace arrayfold::test
