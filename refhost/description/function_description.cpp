// description/function_description.cpp: the pages of a module's functions as one document for machines

#include "description/function_description.hpp"

#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

namespace hvm::description {
namespace {

class Describer {
 public:
  explicit Describer(const std::string& pages) : pages_(pages) {}

  /// The entries of these pages, without those at fault.
  Json entries(const std::vector<Described>& all) {
    Json entries = Json::array();
    for (const Described& one : all) {
      try {
        entries.push_back(entry(one));
      } catch (const PageFault& fault) {
        faults.emplace_back(fault.what());
      }
    }
    return entries;
  }

  std::vector<std::string> faults;

 private:
  Json entry(const Described& described) const {
    const std::string path = pages_ + described.page.substr(described.page.rfind('/'));
    std::ifstream file(path);
    if (!file) throw PageFault(path, 1, "the page is missing");
    std::ostringstream text;
    text << file.rdbuf();
    return entry_of(read_page(path, text.str()), described);
  }

  const std::string& pages_;
};

/// The numbers of arguments that functions look at, by name. They stand at the head of the file, so that a host that
/// needs no more need not read the rest.
Json most_arguments_of(const Json& functions) {
  Json numbers = Json::object();
  for (const Json& function : functions) numbers[function["name"].get<std::string>()] = function["most_arguments"];
  return numbers;
}

}  // namespace

Description description_of(const ModulePages& module, const std::string& pages) {
  Describer describer(pages);
  const Json functions = describer.entries(module.functions);
  Json description = Json::object();
  description["format"] = 1;
  description["module"] = "arrayfold";
  description["version"] = module.version;
  description["most_arguments"] = most_arguments_of(functions);
  description["kinds"] = kinds_in_json();
  description["functions"] = functions;
  description["methods"] = describer.entries(module.methods);
  description["operators"] = describer.entries(module.operations);
  if (!describer.faults.empty()) return {"", std::move(describer.faults)};
  return {description.dump(2) + '\n', {}};
}

}  // namespace hvm::description
