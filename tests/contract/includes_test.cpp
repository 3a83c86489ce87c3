// contract/includes_test.cpp: the arrows of the source tree, read from its #include lines
//
// In the module: families and object -> array, kernels, host; create -> reader -> array -> host, kernels; kernels
// includes nothing of the module. The families never include each other; host/ knows no array library, but for
// plugin.cpp, which stands above all and names the callbacks. The library's linear algebra is included in one header,
// which fixes its order.
//
// In the reference host: cli -> the folders of script -> kernel; run -> library -> module -> data -> text -> syntax.
// Of the module it sees the two headers of the contract and nothing else; the program that describes the functions
// reads their list.

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
    {"self_contained", {"kernels"}},
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

TEST(Includes, KernelsKnowHighwayAndTheSystemAlone) {
  int seen = 0;
  for (const auto& include : includes_below("plugin/kernels")) {
    if (include.quoted) continue;
    ++seen;
    const bool is_of_a_library = include.to.find('/') != std::string::npos || include.to.find('.') != std::string::npos;
    const std::string library = first_folder(include.to);
    EXPECT_TRUE(!is_of_a_library || library == "hwy" || library == "sys") << include.from << " includes " << include.to;
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

/// What each folder of the reference host may include besides itself.
const std::map<std::string, std::set<std::string>> host_arrows = {
    {"kernel", {}},
    {"interp", {}},
    {"description", {}},
    {"script/syntax", {}},
    {"script/stop", {"script/syntax"}},
    {"script/text", {"kernel", "script/syntax", "script/stop"}},
    {"script/module", {"kernel", "script/syntax", "script/text", "script/data"}},
    {"script/data", {"kernel", "script/syntax", "script/stop", "script/text"}},
    {"script/picture", {"script/syntax", "script/stop", "script/data"}},
    {"script/explain", {"kernel", "script/syntax", "script/text", "script/module", "script/data"}},
    {"script/library",
     {"kernel", "script/syntax", "script/stop", "script/text", "script/module", "script/data", "script/explain",
      "script/picture"}},
    {"script/run",
     {"kernel", "script/syntax", "script/stop", "script/text", "script/module", "script/library", "script/explain"}},
    {"conformance", {"kernel", "script/syntax", "script/text", "script/module", "script/run"}},
    {"cli",
     {"kernel", "description", "conformance", "script/syntax", "script/stop", "script/text", "script/data",
      "script/module", "script/library", "script/explain", "script/run"}},
};

/// The folder of a file of the reference host, such as `script/run` of `script/run/calls.hpp`.
std::string host_folder(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool is_contract(const std::string& header) {
  return header == "host/host_value.hpp" || header == "host/host_operations.hpp";
}

TEST(Includes, ReferenceHostSeesTheContractAlone) {
  int seen = 0;
  for (const auto& include : includes_below("refhost")) {
    if (!include.quoted) continue;
    const bool is_own = host_arrows.count(host_folder(include.to)) != 0;
    const bool is_list = include.to == "host/functions.def" && host_folder(include.from) == "refhost/description";
    EXPECT_TRUE(is_own || is_list || is_contract(include.to)) << include.from << " includes " << include.to;
    seen += is_contract(include.to);
  }
  EXPECT_GT(seen, 0);
}

TEST(Includes, ArrowsOfTheReferenceHostRunOneWay) {
  int seen = 0;
  for (const auto& include : includes_below("refhost")) {
    if (!include.quoted || is_contract(include.to) || include.to == "host/functions.def") continue;
    ++seen;
    const std::string from = host_folder(include.from.substr(std::string("refhost/").size()));
    const std::string to = host_folder(include.to);
    const auto arrows = host_arrows.find(from);
    EXPECT_TRUE(from == to || (arrows != host_arrows.end() && arrows->second.count(to) != 0))
        << include.from << " includes " << include.to;
  }
  EXPECT_GT(seen, 100);
}

TEST(Includes, EveryFolderOfTheReferenceHostHasItsArrows) {
  const fs::path root = fs::path(SOURCE_DIR) / "refhost";
  std::set<std::string> folders, known;
  for (const auto& entry : fs::recursive_directory_iterator(root))
    if (entry.path().extension() == ".cpp" || entry.path().extension() == ".hpp")
      folders.insert(fs::relative(entry.path().parent_path(), root).string());
  for (const auto& [folder, arrows] : host_arrows) known.insert(folder);
  EXPECT_EQ(folders, known);
}

/// Whether `to` can be reached from `from` by arrows.
bool is_reached(const std::map<std::string, std::set<std::string>>& arrows, const std::string& from,
                const std::string& to) {
  std::set<std::string> seen;
  std::vector<std::string> waiting{from};
  while (!waiting.empty()) {
    const std::string folder = waiting.back();
    waiting.pop_back();
    for (const std::string& next : arrows.at(folder)) {
      if (next == to) return true;
      if (seen.insert(next).second) waiting.push_back(next);
    }
  }
  return false;
}

TEST(Includes, ArrowsFormNoCircle) {
  for (const auto* arrows : {&module_arrows, &host_arrows})
    for (const auto& [folder, targets] : *arrows) {
      for (const std::string& target : targets) ASSERT_EQ(arrows->count(target), 1u) << target;
      EXPECT_FALSE(is_reached(*arrows, folder, folder)) << folder;
    }
}

}  // namespace
