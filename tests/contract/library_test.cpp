// contract/library_test.cpp: the shared library as the system's loader sees it

#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// What a command prints, by lines.
std::vector<std::string> lines_of(const std::string& command) {
  const auto close = [](std::FILE* pipe) { pclose(pipe); };
  std::unique_ptr<std::FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
  std::vector<std::string> lines;
  std::array<char, 4096> line;
  while (std::fgets(line.data(), line.size(), pipe.get())) {
    lines.emplace_back(line.data());
    if (!lines.back().empty() && lines.back().back() == '\n') lines.back().pop_back();
  }
  return lines;
}

/// The second and third word of each line of nm: type and name.
std::vector<std::pair<char, std::string>> symbols(const std::string& options) {
  std::vector<std::pair<char, std::string>> found;
  for (const auto& line : lines_of("nm -D " + options + " '" MODULE_PATH "'")) {
    std::istringstream words(line.size() > 17 ? line.substr(17) : "");
    std::string type, name;
    if (words >> type >> name) found.emplace_back(type[0], name);
  }
  return found;
}

const std::set<std::string> kernel_operations = {"HVM_AnyCheck",
                                                 "HVM_GetAny",
                                                 "HVM_NewAny",
                                                 "HVM_SetTypeAny",
                                                 "HVM_NewAnyMan",
                                                 "HVM_RegisterAnyMan",
                                                 "HVM_NumberCheck",
                                                 "HVM_AsInt",
                                                 "HVM_AsInt64",
                                                 "HVM_AsDouble",
                                                 "HVM_AsBool",
                                                 "HVM_AsString",
                                                 "HVM_StringCheckAll",
                                                 "HVM_StringLen",
                                                 "HVM_SetInt",
                                                 "HVM_SetInt64",
                                                 "HVM_SetReal",
                                                 "HVM_SetString",
                                                 "HVM_SetStringEx",
                                                 "HVM_SetWString",
                                                 "HVM_SetWStringEx",
                                                 "HVM_SetConstStringEx",
                                                 "HVM_SetConstWStringEx",
                                                 "HVM_ForceTable",
                                                 "HVM_NewHash",
                                                 "HVM_HashSetInt",
                                                 "HVM_HashSet",
                                                 "HVM_HashGetInt",
                                                 "HVM_HashGet",
                                                 "HVM_HashGetBounds",
                                                 "HVM_GetGlobalNilObj",
                                                 "HVM_NewObject",
                                                 "HVM_NewObjects",
                                                 "HVM_FreeObj",
                                                 "HVM_FreeObjs",
                                                 "HVM_FreeObjectContent",
                                                 "HVM_DupObject",
                                                 "HVM_Malloc",
                                                 "HVM_Free",
                                                 "HVM_Realloc2",
                                                 "HVM_ReallocNoLeak",
                                                 "HVM_GCFreeTable",
                                                 "HVM_FreeMatrix",
                                                 "HVM_DelStrm"};

TEST(Library, ExportsPkgInitAlone) {
  const auto exported = symbols("--defined-only");
  ASSERT_EQ(exported.size(), 1u);
  EXPECT_EQ(exported[0].first, 'T');
  EXPECT_EQ(exported[0].second, "PKG_Init");
}

TEST(Library, ImportsNothingOfTheHostButTheListedOperations) {
  ASSERT_EQ(kernel_operations.size(), 44u);
  int imported = 0;
  for (const auto& [type, name] : symbols("--undefined-only")) {
    if (name.compare(0, 4, "HVM_") != 0) continue;
    ++imported;
    EXPECT_EQ(kernel_operations.count(name.substr(0, name.find('@'))), 1u) << name;
  }
  EXPECT_GT(imported, 0);
}

TEST(Library, NeedsBothHostLibrariesAndFindsThemByRunpath) {
  std::string dynamic;
  for (const auto& line : lines_of("readelf -dW '" MODULE_PATH "'")) dynamic += line + "\n";
  EXPECT_NE(dynamic.find("[libHVMkrnl.so]"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("[libHVMInterp.so]"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("(RUNPATH)"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("[$ORIGIN]"), std::string::npos) << dynamic;
  EXPECT_EQ(dynamic.find("(RPATH)"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("[libstdc++.so.6]"), std::string::npos) << dynamic;
}

}  // namespace
