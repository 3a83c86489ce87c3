// cli/junit_report.cpp: the results of tests as a JUnit file, which programs for continuous integration read

#include "cli/junit_report.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "cli/safe_text.hpp"

namespace hvm {
namespace {

/// Text between tags or quotation marks.
std::string escaped(std::string_view text) {
  std::string xml;
  for (const char c : safe_text(text)) {
    switch (c) {
      case '<':
        xml += "&lt;";
        break;
      case '>':
        xml += "&gt;";
        break;
      case '&':
        xml += "&amp;";
        break;
      case '"':
        xml += "&quot;";
        break;
      default:
        xml += c;
    }
  }
  return xml;
}

std::string test_case(const ReportedTest& test) {
  const std::size_t slash = test.path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : test.path.substr(0, slash);
  const std::string name = slash == std::string::npos ? test.path : test.path.substr(slash + 1);
  std::string xml = fmt::format(R"(    <testcase classname="{}" name="{}" file="{}" time="{:.3f}">)"
                                "\n",
                                escaped(folder), escaped(name), escaped(test.path), test.seconds);
  if (test.kind != ReportedTest::Kind::passed) {
    const char* const tag = test.kind == ReportedTest::Kind::failed ? "failure" : "error";
    xml += fmt::format("      <{0} message=\"{1}\">{2}</{0}>\n", tag, escaped(test.message), escaped(test.output));
  }
  if (!test.errors.empty()) xml += fmt::format("      <system-err>{}</system-err>\n", escaped(test.errors));
  return xml + "    </testcase>\n";
}

}  // namespace

std::string junit_report(const std::vector<ReportedTest>& tests, double seconds) {
  const auto number_of = [&](ReportedTest::Kind kind) {
    return std::count_if(tests.begin(), tests.end(), [&](const ReportedTest& test) { return test.kind == kind; });
  };
  const std::string counts =
      fmt::format(R"(tests="{}" failures="{}" errors="{}" time="{:.3f}")", tests.size(),
                  number_of(ReportedTest::Kind::failed), number_of(ReportedTest::Kind::broken), seconds);
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  xml += fmt::format("<testsuites {0}>\n  <testsuite name=\"hvm\" {0}>\n", counts);
  for (const ReportedTest& test : tests) xml += test_case(test);
  return xml + "  </testsuite>\n</testsuites>\n";
}

}  // namespace hvm
