// contract/includes_test.cpp: the arrows of the source tree, read from its #include lines
//
// In the module: families and object -> array -> host; the families never include each other; host/ knows no array
// library, but for plugin.cpp, which stands above all and names the callbacks. The reference host sees the two headers
// of the contract and nothing else of the module.

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

struct Include {
  std::string from;  // path below the source tree
  std::string to;    // what stands between the quotation marks or angle brackets
  bool quoted;
};

std::vector<Include> includes_below(const std::string& folder) {
  std::vector<Include> includes;
  const fs::path root = fs::path(SOURCE_DIR);
  for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
    const auto extension = entry.path().extension();
    if (extension != ".cpp" && extension != ".hpp" && extension != ".c" && extension != ".h") continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      std::istringstream words(line);
      std::string directive, target;
      if (!(words >> directive >> target) || directive != "#include" || target.size() < 3) continue;
      includes.push_back(
          {fs::relative(entry.path(), root).string(), target.substr(1, target.size() - 2), target.front() == '"'});
    }
  }
  return includes;
}

std::string first_folder(const std::string& path) { return path.substr(0, path.find('/')); }

const std::set<std::string> families = {"create", "reduce", "order", "elementwise", "binning", "linalg"};

/// True when a file of `from` (a folder of the module) may include one of `to`.
bool module_arrow(const std::string& from, const std::string& to) {
  if (from == to || to == "host") return true;
  return to == "array" && (families.count(from) || from == "object");
}

TEST(Includes, ModuleArrowsRunOneWay) {
  int seen = 0;
  for (const auto& include : includes_below("plugin")) {
    if (!include.quoted) continue;
    ++seen;
    if (include.from == "plugin/host/plugin.cpp") continue;
    const std::string from = first_folder(include.from.substr(std::string("plugin/").size()));
    EXPECT_TRUE(module_arrow(from, first_folder(include.to))) << include.from << " includes " << include.to;
  }
  EXPECT_GT(seen, 20);
}

TEST(Includes, PluginStandsAboveThroughNamesAlone) {
  for (const auto& include : includes_below("plugin/host"))
    if (include.quoted && first_folder(include.to) != "host") {
      EXPECT_EQ(include.from, "plugin/host/plugin.cpp") << include.to;
      EXPECT_EQ(include.to, "object/type_callbacks.hpp");
    }
}

TEST(Includes, HostFolderKnowsNoArrayLibrary) {
  for (const auto& include : includes_below("plugin/host"))
    EXPECT_FALSE(first_folder(include.to).compare(0, 2, "xt") == 0 || first_folder(include.to) == "xsimd")
        << include.from << " includes " << include.to;
}

TEST(Includes, ReferenceHostSeesTheContractAlone) {
  const std::set<std::string> own = {"kernel", "interp", "script", "cli"};
  for (const auto& include : includes_below("refhost")) {
    if (!include.quoted || include.to.find('/') == std::string::npos) continue;
    if (own.count(first_folder(include.to))) continue;
    EXPECT_TRUE(include.to == "host/host_value.hpp" || include.to == "host/host_operations.hpp")
        << include.from << " includes " << include.to;
  }
}

}  // namespace
