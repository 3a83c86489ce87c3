// description/describe_functions.cpp: the program of the build that writes functions.json
//
// Usage: describe_functions PAGES OUTPUT
//
// It reads the page of every function in functions.def, of the methods and of the operators, in this order. What is
// wrong goes to the standard error, a line for each page; then nothing is written and the exit status is 1. The same
// pages give the same bytes.

#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include "description/entry.hpp"

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

class Describer {
 public:
  explicit Describer(std::string pages) : pages_(std::move(pages)) {}

  /// The entries of these pages, without those at fault.
  Json entries(const std::vector<Described>& all) {
    Json entries = Json::array();
    for (const Described& one : all) {
      try {
        entries.push_back(entry(one));
      } catch (const PageFault& fault) {
        std::cerr << fault.what() << '\n';
        has_faults_ = true;
      }
    }
    return entries;
  }

  bool has_faults() const { return has_faults_; }

 private:
  Json entry(const Described& described) const {
    const std::string path = pages_ + described.page.substr(described.page.rfind('/'));
    std::ifstream file(path);
    if (!file) throw PageFault(path, 1, "the page is missing");
    std::ostringstream text;
    text << file.rdbuf();
    return entry_of(read_page(path, text.str()), described);
  }

  std::string pages_;
  bool has_faults_ = false;
};

/// The numbers of arguments that functions look at, by name. They stand at the head of the file, so that a host that
/// needs no more need not read the rest.
Json most_arguments_of(const Json& functions) {
  Json numbers = Json::object();
  for (const Json& function : functions) numbers[function["name"].get<std::string>()] = function["most_arguments"];
  return numbers;
}

int write_description(const std::string& pages, const std::string& output) {
  Describer describer(pages);
  const Json described = describer.entries(functions());
  Json description = Json::object();
  description["format"] = 1;
  description["module"] = "arrayfold";
  description["version"] = MODULE_VERSION;
  description["most_arguments"] = most_arguments_of(described);
  description["kinds"] = kinds_in_json();
  description["functions"] = described;
  description["methods"] = describer.entries({method("dump"), method("reshape"), method("shape")});
  description["operators"] =
      describer.entries({operation("add"), operation("subtract"), operation("multiply"), operation("divide"),
                         operation("remainder"), operation("less"), operation("equal")});
  if (describer.has_faults()) return 1;
  std::ofstream file(output);
  file << description.dump(2) << '\n';
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
