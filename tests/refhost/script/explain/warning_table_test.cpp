// refhost/script/explain/warning_table_test.cpp: every warning comes where it should, and not beside it

#include "script/explain/warning_table.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <utility>

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

/// A call of a function that brings about the warning of a row, over the arrays below.
struct WatchedCall {
  const char* name;
  const char* function;
  const char* call;
};
constexpr const char* watched_arrays =
    "d = xones(3); i = xarray(@int, [1, 2, 3]); m = xarray(@int, [[1, 0], [0, 1]]); c = xones(5, 1)\n"
    "k = xarray(@int, [[1], [2], [3]]); n = d * (0.0 / 0)\n";
constexpr WatchedCall watched_calls[] = {
    {"draws-without-elements", "xrand", "xrand(0, 1)"},
    {"draws-without-elements", "xrandn", "xrandn(0, 1)"},
    {"fraction-of-an-argument", "xzeros", "xzeros(2.5)"},
    {"fraction-of-an-argument", "xones", "xones(2.5)"},
    {"fraction-of-an-argument", "xempty", "xempty(2.5)"},
    {"fraction-of-an-argument", "xrand", "xrand(2.5)"},
    {"fraction-of-an-argument", "xrandn", "xrandn(2.5)"},
    {"fraction-of-an-argument", "xeye", "xeye(2, 2.5)"},
    {"fraction-of-an-argument", "xhistogram", "xhistogram(d, 2.5)"},
    {"fraction-of-an-argument", "xpartition", "x = xpartition(d, 1.5)"},
    {"kind-of-product", "xdot", "xdot(i, d)"},
    {"kind-of-product", "xvdot", "xvdot(i, d)"},
    {"kind-of-product", "xouter", "xouter(i, d)"},
    {"kind-of-product", "xkron", "xkron(i, d)"},
    {"column", "xsum", "xsum(c)"},
    {"column", "xamin", "xamin(c)"},
    {"column", "xamax", "xamax(c)"},
    {"column", "xsort", "x = xsort(c)"},
    {"column", "xargsort", "xargsort(c)"},
    {"column", "xpartition", "x = xpartition(c, 0)"},
    {"column", "xdiff", "xdiff(c)"},
    {"column", "xtrapz", "xtrapz(c)"},
    {"column", "xhistogram", "xhistogram(c, 2)"},
    {"column", "xbincount", "xbincount(k)"},
    {"column", "xdigitize", "xdigitize(c, d)"},
    {"computes-nothing", "xpow", "xpow(d, 2)"},
    {"computes-nothing", "xclip", "xclip(d, 0, 1)"},
    {"computes-nothing", "xfma", "xfma(d, d, d)"},
    {"computes-nothing", "xinterp", "xinterp(d, d, d)"},
    {"computes-nothing", "xchoice", "xchoice(d, 1)"},
    {"computes-nothing", "xrandint", "xrandint(0, 5)"},
    {"computes-nothing", "xsearchsorted", "xsearchsorted(d, d)"},
    {"computes-nothing", "xmatrix_power", "xmatrix_power(xeye(2), 2)"},
    {"computes-nothing", "xremainder", "xremainder(d, d)"},
    {"computes-nothing", "xeig", "xeig(xeye(2))"},
    {"computes-nothing", "xeigvals", "xeigvals(xeye(2))"},
    {"computes-nothing", "xpermutation", "xpermutation(d)"},
    {"two-kinds", "xmaximum", "xmaximum(i, d)"},
    {"two-kinds", "xminimum", "xminimum(i, d)"},
    {"integers-without-result", "xsign", "xsign(i)"},
    {"integers-without-result", "xcond", "xcond(m)"},
    {"unused-order", "xsort", "xsort(d)"},
    {"unused-order", "xpartition", "xpartition(d, 1)"},
    {"unused-order", "xunique", "xunique(d)"},
    {"order-with-nan", "xsort", "x = xsort(n)"},
    {"order-with-nan", "xargsort", "xargsort(n)"},
    {"order-with-nan", "xpartition", "x = xpartition(n, 1)"},
    {"order-with-nan", "xunique", "x = xunique(n)"},
    {"order-with-nan", "xmedian", "xmedian(n)"},
    {"position-with-nan", "xargmin", "xargmin(n)"},
    {"position-with-nan", "xargmax", "xargmax(n)"},
};

TEST(WarningRows, OfSeveralFunctions_ComeForEachOfThem) {
  std::set<std::pair<std::string_view, std::string_view>> called, watched;
  for (const auto& [name, function, call] : watched_calls) {
    const std::string warning = told(std::string(watched_arrays) + call);
    const std::string front = std::string(name) + ": " + function;
    EXPECT_EQ(warning.compare(0, front.size(), front), 0) << call << ": " << warning;
    EXPECT_EQ(warning.find('|'), std::string::npos) << call << ": " << warning;
    called.insert({name, function});
  }
  for (const WarningRow& row : warning_table()) {
    const auto* condition = std::get_if<CallCondition>(&row.condition);
    if (!condition || condition->functions.size() < 2) continue;
    for (const std::string_view function : condition->functions) watched.insert({row.name, function});
  }
  EXPECT_EQ(called, watched);
}

TEST(WarningRows, OfColumns_ComeForEachFunctionThatMakesOne) {
  for (const char* column : {"xzeros(5, 1)", "xones(5, 1)", "xempty(5, 1)", "xrand(5, 1)", "xrandn(5, 1)", "xeye(5, 1)",
                             "xdiff(xones(5, 2))", "xouter(xones(5), xones(1))", "xpinv(xones(1, 5))",
                             "xarray(@double, [[1], [2], [3], [4], [5]])", "xarray(@double(5, 1))"})
    EXPECT_EQ(told(std::string("xsum(") + column + ")").substr(0, 31), "column: xsum of a column (5, 1)") << column;
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
