// contract/names_test.cpp: every function has its tests and its benchmark, and names of tests are unique
//
// That every function runs with failing memory is looked at by the program of those tests itself.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/linalg/names.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {
namespace {

namespace fs = std::filesystem;

std::string text_of(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The sources below a folder of the project, as one text.
std::string sources_below(const std::string& folder) {
  std::string text;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(SOURCE_DIR) / folder))
    if (entry.path().extension() == ".cpp" || entry.path().extension() == ".hpp") text += text_of(entry.path());
  return text;
}

bool names(const std::string& text, const std::string& function) {
  return text.find('"' + function + '"') != std::string::npos;
}

/// Every TEST, TEST_F and TEST_P as "Suite.Name", and the file that has it.
std::vector<std::pair<std::string, std::string>> all_tests() {
  static const std::regex test(R"((^|\n)(TYPED_)?TEST(_F|_P)?\((\w+),\s*(\w+)\))");
  std::vector<std::pair<std::string, std::string>> found;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(SOURCE_DIR) / "tests")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string text = text_of(entry.path());
    for (std::sregex_iterator match(text.begin(), text.end(), test), end; match != end; ++match)
      found.emplace_back((*match)[4].str() + "." + (*match)[5].str(), entry.path().string());
  }
  return found;
}

TEST(Functions, AreEachNamedInATestOfTheirFamily) {
  std::map<std::string, std::string> texts;
  for (const auto& function : all_functions()) {
    std::string& text = texts[function.family];
    if (text.empty()) text = sources_below(std::string("tests/plugin/") + function.family);
    EXPECT_TRUE(names(text, function.name)) << function.name;
  }
}

TEST(Functions, ThatComputeAreEachNamedInABenchmark) {
  const std::string text = sources_below("bench");
  for (const auto& function : all_functions()) {
    if (function.is_stub) continue;
    const std::string name = function.name;  // a benchmark may leave its first letter out
    EXPECT_TRUE(names(text, name) || names(text, name.substr(1))) << name;
  }
}

TEST(Functions, OfLinearAlgebra_AreEachInOneListByWhatTheyTake) {
  const Names family = functions_of("linalg");
  for (const Names& list : {products, solvers, stubs, traces, of_squares, of_any_matrix, norms})
    for (const std::string& name : list) EXPECT_TRUE(contains(family, name)) << name;
  const Names lists = joined({products, solvers, stubs, traces, of_squares, of_any_matrix, norms});
  EXPECT_EQ(lists.size(), family.size());
  for (const std::string& name : family) EXPECT_TRUE(contains(lists, name)) << name;
  EXPECT_EQ(of_one_matrix.size(), of_squares.size() + of_any_matrix.size() + norms.size());
  EXPECT_EQ(stubs, stubs_of("linalg"));
}

TEST(TestNames, AreUniqueOverAllPrograms) {
  const auto tests = all_tests();
  EXPECT_GT(tests.size(), 500u) << "the tests are not found";
  std::map<std::string, std::string> first;
  for (const auto& [name, file] : tests) {
    const auto [place, is_new] = first.emplace(name, file);
    EXPECT_TRUE(is_new) << name << " stands in " << place->second << " and in " << file;
  }
}

TEST(TestNames, ThatPagesCite_Exist) {
  std::set<std::string> tests, suites;
  for (const auto& [name, file] : all_tests()) {
    tests.insert(name);
    suites.insert(name.substr(0, name.find('.')));
  }
  static const std::regex cited(R"(`([A-Z]\w+)\.([A-Z]\w+)`)");
  int found = 0;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(SOURCE_DIR) / "docs")) {
    if (entry.path().extension() != ".md") continue;
    const std::string text = text_of(entry.path());
    for (std::sregex_iterator match(text.begin(), text.end(), cited), end; match != end; ++match, ++found)
      EXPECT_EQ(tests.count((*match)[1].str() + "." + (*match)[2].str()), 1u)
          << entry.path() << " cites " << (*match)[0].str();
  }
  EXPECT_GT(found, 50) << "the citations are not found";
}

}  // namespace
}  // namespace arrayfold::test
