// refhost/script/explain/warning_table_test.cpp: every warning comes where it should, and not beside it

#include "script/explain/warning_table.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "explain/warned_run.hpp"
#include "explain/warning_rows.hpp"

namespace hvm::testing {
namespace {

TEST(WarningRows, BringAboutTheirSentence) {
  for (const WarnedScript& row : warned_scripts())
    EXPECT_EQ(told(row.script), std::string(row.name) + ": " + row.message) << row.script;
}

TEST(WarningRows, AreSilentAboutInnocentNeighbours) {
  for (const WarnedScript& row : warned_scripts())
    for (const char* script : row.innocent) EXPECT_EQ(told(script), "") << script;
}

TEST(WarningRows, HaveATestEach_AndNamesOfTheirOwn) {
  std::set<std::string_view> tested, named;
  for (const WarnedScript& row : warned_scripts()) tested.insert(row.name);
  for (const WarningRow& row : warning_table()) {
    EXPECT_TRUE(named.insert(row.name).second) << row.name;
    EXPECT_EQ(tested.count(row.name), 1u) << row.name;
  }
  EXPECT_EQ(tested, named);
  EXPECT_LE(named.size(), 64u) << "a row is a bit of 64";
}

/// The headings of a page, as links name them.
std::set<std::string> sections_of(const std::string& path) {
  std::set<std::string> sections;
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << path;
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, 3, "## ") != 0) continue;
    std::string section = line.substr(3);
    for (char& c : section) c = c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    sections.insert(section);
  }
  return sections;
}

TEST(WarningRows, LeadToASectionThatIsThere) {
  for (const WarnedScript& row : warned_scripts()) {
    const ToldRun result = run(row.script);
    ASSERT_EQ(result.warnings.size(), 1u) << row.script;
    const std::string& report = result.warnings[0].report;
    const std::size_t at = report.find("  page: ");
    ASSERT_NE(at, std::string::npos) << report;
    const std::string page = report.substr(at + 8, report.find('\n', at) - at - 8);
    const std::size_t mark = page.find('#');
    EXPECT_EQ(sections_of(SOURCE_DIR "/" + page.substr(0, mark)).count(page.substr(mark + 1)), 1u) << page;
  }
}

TEST(WarningRows, ChangeNoOutput) {
  for (const WarnedScript& row : warned_scripts()) {
    const std::string script = std::string(row.script) + "\nprint(1)";
    EXPECT_EQ(run(script, WarningMode::on).output, run(script, WarningMode::off).output) << script;
  }
}

}  // namespace
}  // namespace hvm::testing
