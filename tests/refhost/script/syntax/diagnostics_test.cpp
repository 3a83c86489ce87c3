// refhost/script/syntax/diagnostics_test.cpp: how errors are shown

#include "script/syntax/diagnostics.hpp"

#include <gtest/gtest.h>

#include "tree_text.hpp"

namespace hvm::testing {
namespace {

TEST(Diagnostics, Report_ShowsTheLineWithACaretUnderTheCharacter) {
  EXPECT_EQ(error_of("a = 1\n\tx\xC3\xA9 = 2").report(),
            "test.hvm:2:3: error: unexpected character '\xC3\xA9'; names have letters from a to z, digits and '_'\n    "
            "\tx\xC3\xA9 = 2\n    \t ^\n");
}

TEST(Diagnostics, Report_CutsLongLinesAroundTheCaret) {
  std::string plus_ones;
  for (int i = 0; i < 5000; ++i) plus_ones += "+1";
  const std::string report = error_of("1" + plus_ones + " 2 " + plus_ones).report();
  EXPECT_LT(report.size(), 500u);
  const std::size_t caret = report.rfind('^');
  const std::size_t second_line = report.find('\n') + 1;
  const std::size_t third_line = report.find('\n', second_line) + 1;
  EXPECT_EQ(report[second_line + (caret - third_line)], '2');
}

TEST(Diagnostics, AsExceptions_HaveTheirMessageForWords) {
  EXPECT_STREQ(error_of("x = ").what(), error_of("x = ").message().c_str());
  EXPECT_STREQ(Failure("no such name").what(), "no such name");
}

TEST(Diagnostics, Caret_StandsUnderWideAndBehindCombiningCharacters) {
  // Two columns for each of the wide characters, none for the accent.
  EXPECT_EQ(error_of("x = \"\xE4\xB8\xAD\xE6\x96\x87\" ! 1").report(),
            "test.hvm:1:10: error: unexpected character '!'; a condition is negated by 'not'\n"
            "    x = \"\xE4\xB8\xAD\xE6\x96\x87\" ! 1\n               ^\n");
  EXPECT_EQ(error_of("x = \"e\xCC\x81\" ! 1").report(),
            "test.hvm:1:10: error: unexpected character '!'; a condition is negated by 'not'\n"
            "    x = \"e\xCC\x81\" ! 1\n            ^\n");
}

/// The columns before the caret, without the four blanks in front of both lines.
std::size_t caret_column(const std::string& report) {
  const std::size_t line = report.rfind('\n', report.size() - 2) + 1;
  return report.find('^', line) - line - 4;
}

TEST(Diagnostics, CaretColumn_IsTheWidthOfWhatStandsBefore) {
  struct Row {
    const char* text;
    std::size_t width;
  };
  for (const Row& row : {Row{"abc", 3}, Row{"\xE6\xBC\xA2\xE5\xAD\x97", 4},  // two wide characters
                         Row{"e\xCC\x81", 1},                                // a combining accent
                         Row{"\xF0\x9F\x98\x80", 2},                         // an emoji
                         Row{"a\xE2\x80\x8B\x62", 2},                        // a zero-width space
                         Row{"\xEF\xBD\xB1", 1},                             // a narrow form of a wide character
                         Row{"\xEF\xBC\xA1", 2},                             // a wide form of a narrow one
                         Row{"\xEA\xB0\x80", 2},                             // Hangul
                         Row{"\xE2\x80\xAE", 1},                             // a change of direction, shown as a mark
                         Row{"\xC2\x9B", 1},                                 // a control character, shown as a mark
                         Row{"\x7F", 1}}) {
    const std::string script = std::string("x = \"") + row.text + "\" ~";
    EXPECT_EQ(caret_column(error_of(script).report()), 7 + row.width) << row.text;
  }
}

TEST(Diagnostics, Report_ShowsControlCharactersAsMarks) {
  const std::string report = error_of("x = \"\x1B[31m\xC2\x9B\xE2\x80\xAE\x7F\" ~").report();
  EXPECT_NE(report.find("    x = \"?[31m???\" ~\n"), std::string::npos) << report;
}

TEST(Diagnostics, Report_CutsLinesOfWideCharactersByTheirWidth) {
  std::string wide;
  for (int i = 0; i < 300; ++i) wide += "\xE6\xBC\xA2";
  const std::string report = error_of("x = \"" + wide + "\" ~ \"" + wide + "\"").report();
  EXPECT_EQ(caret_column(report), 3u + 50) << report;
  EXPECT_LT(report.size(), 400u) << report;
}

TEST(Diagnostics, Suggestion_NamesTheNearestCandidate) {
  EXPECT_EQ(suggestion("xsumm", {"xsort", "xsum", "print"}), " (did you mean 'xsum'?)");
  EXPECT_EQ(suggestion("entirely", {"xsort", "xsum"}), "");
  EXPECT_EQ(suggestion("pirnt", {"range", "print"}), " (did you mean 'print'?)");
  EXPECT_EQ(suggestion("xmaen", {"xmean", "xsum"}), " (did you mean 'xmean'?)");
  EXPECT_EQ(suggestion("open", {"len", "range"}), "");
  EXPECT_EQ(suggestion("transpsoe", {"transpose"}), " (did you mean 'transpose'?)");
  EXPECT_EQ(suggestion("tarnspsoe", {"transpose"}), " (did you mean 'transpose'?)");
  EXPECT_EQ(suggestion("tarnspsoee", {"transpose"}), "");
}

}  // namespace
}  // namespace hvm::testing
