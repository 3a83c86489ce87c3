// refhost/script/syntax/diagnostics_test.cpp: how errors are shown

#include "script/syntax/diagnostics.hpp"

#include <gtest/gtest.h>

#include "tree_text.hpp"

namespace hvm::testing {
namespace {

TEST(Diagnostics, Report_ShowsTheLineWithACaretUnderTheCharacter) {
  EXPECT_EQ(error_of("a = 1\n\tx\xC3\xA9 = 2").report(),
            "test.hvm:2:3: error: unexpected character '\xC3\xA9'\n    \tx\xC3\xA9 = 2\n    \t ^\n");
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

TEST(Diagnostics, Caret_StandsUnderWideAndBehindCombiningCharacters) {
  // Two columns for each of the wide characters, none for the accent.
  EXPECT_EQ(error_of("x = \"\xE4\xB8\xAD\xE6\x96\x87\" ! 1").report(),
            "test.hvm:1:10: error: unexpected character '!'; a condition is negated by 'not'\n"
            "    x = \"\xE4\xB8\xAD\xE6\x96\x87\" ! 1\n               ^\n");
  EXPECT_EQ(error_of("x = \"e\xCC\x81\" ! 1").report(),
            "test.hvm:1:10: error: unexpected character '!'; a condition is negated by 'not'\n"
            "    x = \"e\xCC\x81\" ! 1\n            ^\n");
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
