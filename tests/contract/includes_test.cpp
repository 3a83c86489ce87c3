// contract/includes_test.cpp: the arrows of the source tree, read from its #include lines
//
// In the module: families and object -> array, kernels -> host; create -> reader -> array; kernels includes nothing else
// of the module. The families never include each other; host/ knows no array library, but for plugin.cpp, which stands
// above all and names the callbacks. The library's linear algebra is included in one header, which fixes its order. The
// reference host sees the two headers of the contract and nothing else of the module.

#include <filesystem>
#include <fstream>
#include <map>
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

/// What each folder of the module may include besides itself.
const std::map<std::string, std::set<std::string>> module_arrows = {
    {"host", {}},
    {"kernels", {}},
    {"array", {"host", "kernels"}},
    {"reader", {"host", "array"}},
    {"object", {"host", "array", "kernels"}},
    {"create", {"host", "array", "kernels", "reader"}},
    {"reduce", {"host", "array", "kernels"}},
    {"order", {"host", "array", "kernels"}},
    {"elementwise", {"host", "array", "kernels"}},
    {"binning", {"host", "array", "kernels"}},
    {"linalg", {"host", "array", "kernels"}},
};

/// True when a file of `from` (a folder of the module) may include one of `to`.
bool module_arrow(const std::string& from, const std::string& to) {
  const auto arrows = module_arrows.find(from);
  return from == to || (arrows != module_arrows.end() && arrows->second.count(to) != 0);
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

TEST(Includes, EveryFolderOfTheModuleHasItsArrows) {
  std::set<std::string> folders, known;
  for (const auto& entry : fs::directory_iterator(fs::path(SOURCE_DIR) / "plugin"))
    if (entry.is_directory()) folders.insert(entry.path().filename().string());
  for (const auto& [folder, arrows] : module_arrows) known.insert(folder);
  EXPECT_EQ(folders, known);
}

TEST(Includes, LinearAlgebraOfTheLibraryComesThroughOneHeader) {
  int seen = 0;
  for (const auto& include : includes_below("plugin")) {
    if (include.to.compare(0, 12, "xtensor-blas") != 0) continue;
    ++seen;
    EXPECT_EQ(include.from, "plugin/linalg/library.hpp");
  }
  EXPECT_GT(seen, 0);
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
