// contract/library_test.cpp: the shared library as the system's loader sees it

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/module_test.hpp"

namespace {

/// The file of the module as a word of the shell.
std::string module_word() { return std::string(" '") + arrayfold::test::module_path() + "'"; }

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
  for (const auto& line : lines_of("nm -D " + options + module_word())) {
    std::istringstream words(line.size() > 17 ? line.substr(17) : "");
    std::string type, name;
    if (words >> type >> name) found.emplace_back(type[0], name);
  }
  return found;
}

/// The words of a line.
std::vector<std::string> words_of(const std::string& line) {
  std::istringstream words(line);
  std::vector<std::string> found;
  for (std::string word; words >> word;) found.push_back(word);
  return found;
}

std::uint64_t hexadecimal(const std::string& digits) { return std::stoull(digits, nullptr, 16); }

/// The addresses of the functions that the loader calls, in that order, from the relocations of .init_array.
std::vector<std::uint64_t> initialiser_addresses() {
  std::uint64_t first = 0, size = 0;
  for (const auto& line : lines_of("readelf -SW" + module_word())) {
    const auto words = words_of(line.substr(std::min(line.size(), line.find(']') + 1)));
    if (words.size() < 5 || words[1] != "INIT_ARRAY") continue;
    first = hexadecimal(words[2]);
    size = hexadecimal(words[4]);
  }
  std::map<std::uint64_t, std::uint64_t> functions;  // by their places
  for (const auto& line : lines_of("readelf -rW" + module_word())) {
    const auto words = words_of(line);
    if (words.size() != 4 || words[2].find("_RELATIVE") == std::string::npos) continue;
    const std::uint64_t place = hexadecimal(words[0]);
    if (place >= first && place < first + size) functions[place] = hexadecimal(words[3]);
  }
  EXPECT_EQ(functions.size() * 8, size) << "a place of .init_array without a relocation";
  std::vector<std::uint64_t> addresses;
  for (const auto& [place, function] : functions) addresses.push_back(function);
  return addresses;
}

struct Symbol {
  std::string name;
  std::uint64_t size = 0;
};

/// The functions of the library by their addresses.
std::map<std::uint64_t, Symbol> functions_of_library() {
  std::map<std::uint64_t, Symbol> functions;
  for (const auto& line : lines_of("nm -S" + module_word())) {
    const auto words = words_of(line);
    if (words.size() == 4 && words[2] == "t") functions[hexadecimal(words[0])] = {words[3], hexadecimal(words[1])};
    // Those of the compiler's runtime have no size.
    if (words.size() == 3 && words[1] == "t") functions[hexadecimal(words[0])] = {words[2], 0};
  }
  return functions;
}

/// What the code of a function refers to: the names in angle brackets of its disassembly, without their versions.
/// Without optimisation an initialiser calls a function that does its work and has one name in all sources; it stands
/// for what it uses itself.
std::set<std::string> names_used_by(std::uint64_t address, const std::map<std::uint64_t, Symbol>& functions) {
  const auto found = functions.find(address);
  if (found == functions.end()) return {"an unknown function"};
  std::ostringstream command;
  command << std::hex << "objdump -d --no-show-raw-insn --start-address=0x" << address << " --stop-address=0x"
          << address + found->second.size << module_word();
  std::set<std::string> names;
  for (const auto& line : lines_of(command.str())) {
    const std::size_t open = line.find('<'), end = line.find_first_of("@>+", open);
    // The line above the code names the function itself, so do its jumps, and `adrp` takes the page of an address.
    if (end == std::string::npos || line.back() == ':' || line.find("adrp") != std::string::npos) continue;
    const std::string name = line.substr(open + 1, end - open - 1);
    if (name == found->second.name) continue;
    if (name.find("__static_initialization_and_destruction") != std::string::npos)
      names.merge(names_used_by(hexadecimal(words_of(line.substr(0, open)).back()), functions));
    else
      names.insert(name);
  }
  return names;
}

/// Headers of the array library include <iostream>, whose initialiser stands in each source that includes it: it makes
/// the standard streams and has them released at the end.
bool only_makes_standard_streams(const std::set<std::string>& used) {
  const std::set<std::string> of_iostream = {"_ZStL8__ioinit", "_ZNSt8ios_base4InitC1Ev", "_ZNSt8ios_base4InitD1Ev",
                                             "__cxa_atexit", "__dso_handle"};
  const auto is_of_iostream = [&](const std::string& name) { return of_iostream.count(name) != 0; };
  return used.count("_ZNSt8ios_base4InitC1Ev") != 0 && std::all_of(used.begin(), used.end(), is_of_iostream);
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
  for (const auto& line : lines_of("readelf -dW" + module_word())) dynamic += line + "\n";
  EXPECT_NE(dynamic.find("[libHVMkrnl.so]"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("[libHVMInterp.so]"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("(RUNPATH)"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("[$ORIGIN]"), std::string::npos) << dynamic;
  EXPECT_EQ(dynamic.find("(RPATH)"), std::string::npos) << dynamic;
  EXPECT_NE(dynamic.find("[libstdc++.so.6]"), std::string::npos) << dynamic;
}

TEST(Library, StatesItsVersionInANote) {
  std::string notes;
  for (const auto& line : lines_of("readelf -nW" + module_word())) notes += line + "\n";
  const std::string version = PROJECT_VERSION;
  std::ostringstream content;  // with its zero, as readelf shows it
  for (const char c : version) content << std::hex << static_cast<int>(c) << ' ';
  EXPECT_NE(notes.find("Displaying notes found in: .note.arrayfold\n"), std::string::npos) << notes;
  EXPECT_NE(notes.find("description data: " + content.str() + "00"), std::string::npos) << notes;
}

// A program of another build may test the module with the sanitizer, and would pass as well with its own.
TEST(Library, HasTheSanitizerThatIsInTheProcess) {
  bool has_sanitizer = false;
  for (const auto& line : lines_of("readelf --dyn-syms -W" + module_word()))
    has_sanitizer |= line.find(" __asan_report_load") != std::string::npos;
  EXPECT_EQ(has_sanitizer, arrayfold::test::is_under_address_sanitizer());
}

// frame_dummy and __cpu_indicator_init are the compiler's runtime; the latter comes with code that asks which processor
// it runs on. OpenBLAS has an initialiser, which comes along where it is inside.
TEST(Library, TableOfDtypeNames_IsItsOnlyInitialiser) {
  if (arrayfold::test::is_under_address_sanitizer())
    GTEST_SKIP()
        << "the sanitizer gives every source an initialiser of its own; every other build runs this, among them "
           "the one that people load";
  const std::set<std::string> of_compiler = {"frame_dummy", "__cpu_indicator_init", "init_have_lse_atomics"};
  const std::string of_openblas = "gotoblas_init";
  const auto functions = functions_of_library();
  std::vector<std::string> own;
  for (const std::uint64_t address : initialiser_addresses()) {
    ASSERT_EQ(functions.count(address), 1u) << "no symbol at " << std::hex << address << ": is the library stripped?";
    const std::string& name = functions.at(address).name;
    if (of_compiler.count(name) == 0 && name != of_openblas &&
        !only_makes_standard_streams(names_used_by(address, functions)))
      own.push_back(name);
  }
  EXPECT_EQ(own, std::vector<std::string>{"_GLOBAL__sub_I_element_kind.cpp"});
}

}  // namespace
