// description/describe_functions.cpp: the program of the build that writes functions.json
//
// Usage: describe_functions PAGES OUTPUT
//
// It reads the page of every function in functions.def, of the methods and of the operators, in this order. What is
// wrong goes to the standard error, a line for each page; then nothing is written and the exit status is 1.

#include <fstream>
#include <iostream>

#include "description/function_description.hpp"

namespace hvm::description {
namespace {

const std::vector<Described>& functions() {
  static const std::vector<Described> rows = {
#define FUNCTION(name, family, minimum, status) \
  {#name, #family, #status, CallForm::function, minimum, "docs/functions/" #name ".md"},
#include "host/functions.def"
#undef FUNCTION
  };
  return rows;
}

Described method(const std::string& name) {
  return {name, "object", "working", CallForm::method, -1, "docs/functions/method-" + name + ".md"};
}

Described operation(const std::string& name) {
  return {name, "object", "working", CallForm::operation, -1, "docs/functions/operator-" + name + ".md"};
}

int write_description(const std::string& pages, const std::string& output) {
  const ModulePages module = {MODULE_VERSION,
                              functions(),
                              {method("dump"), method("reshape"), method("shape")},
                              {operation("add"), operation("subtract"), operation("multiply"), operation("divide"),
                               operation("remainder"), operation("less"), operation("equal")}};
  const Description description = description_of(module, pages);
  for (const std::string& fault : description.faults) std::cerr << fault << '\n';
  if (!description.faults.empty()) return 1;
  std::ofstream file(output);
  file << description.text;
  file.close();
  if (file) return 0;
  std::cerr << output << ": cannot be written\n";
  return 1;
}

}  // namespace
}  // namespace hvm::description

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: describe_functions PAGES OUTPUT\n";
    return 2;
  }
  return hvm::description::write_description(argv[1], argv[2]);
}
