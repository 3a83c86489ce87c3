// refhost/description/manual_test.cpp: Markdown as the text of a manual page

#include "description/manual.hpp"

#include <gtest/gtest.h>

namespace hvm::description {
namespace {

std::string blocks(const std::vector<std::string>& lines) {
  std::vector<Line> numbered;
  for (const std::string& line : lines) numbered.push_back({line, static_cast<int>(numbered.size()) + 1});
  return block_roff(numbered);
}

TEST(InlineRoff, MakesCodeAndStrongTextBold) {
  EXPECT_EQ(inline_roff("call `f(x)` **now**"), "call \\fBf(x)\\fR \\fBnow\\fR");
  EXPECT_EQ(inline_roff("**all `of` it** is"), "\\fBall \\fBof it\\fR is");
  EXPECT_EQ(inline_roff("``a `b` ``"), "\\fBa \\(gab\\(ga\\fR");
}

TEST(InlineRoff, KeepsTheWordsOfLinks) {
  EXPECT_EQ(inline_roff("see [the `page`](a/b.md), [0, 1]"), "see the \\fBpage\\fR, [0, 1]");
  EXPECT_EQ(inline_roff("a[0] is [x](y.md)"), "a[0] is x");
}

TEST(InlineRoff, ProtectsWhatRoffWouldRead) {
  EXPECT_EQ(inline_roff(".5 and a\\b"), "\\&.5 and a\\eb");
  EXPECT_EQ(inline_roff("'tis"), "\\&'tis");
  EXPECT_EQ(literal_roff("'-x' ^ \\n"), "\\(aq\\-x\\(aq \\(ha \\en");
  EXPECT_EQ(literal_roff(".5"), "\\&.5");
}

TEST(InlineRoff, OfCodeWithoutItsEnd_TakesTheRest) { EXPECT_EQ(inline_roff("a `b"), "a \\fBb\\fR"); }

TEST(BlockRoff, JoinsTheLinesOfParagraphsAndItems) {
  EXPECT_EQ(blocks({"one", "two", "", "three"}), ".PP\none two\n.PP\nthree\n");
  EXPECT_EQ(blocks({"- one", "  more", "- two", "", "10. ten"}),
            ".IP \\(bu 2\none more\n.IP \\(bu 2\ntwo\n.IP 10. 3\nten\n");
}

TEST(BlockRoff, KeepsCodeAsItStands) {
  EXPECT_EQ(blocks({"```hvm", "a - `b`", "", ".c", "```", "    | d"}),
            ".PP\n.RS 4\n.EX\na \\- \\(gab\\(ga\n\n\\&.c\n.EE\n.RE\n.PP\n.RS 4\n.EX\n| d\n.EE\n.RE\n");
}

TEST(BlockRoff, MakesAnEntryOfEachRowOfATable) {
  EXPECT_EQ(blocks({"| A | B |", "| --- | --- |", "| `a|b` | c |", "| d | |"}), ".TP\n\\fBa|b\\fR\nc\n.TP\nd\n\\&\n");
  EXPECT_EQ(blocks({"| A | B | C |", "| --- | --- | --- |", "| a | b | c |"}), ".TP\na\nB: b\n.br\nC: c\n");
}

TEST(BlockRoff, MakesSubsectionsOfTitles) { EXPECT_EQ(blocks({"### A `b`", "c"}), ".SS A \\fBb\\fR\n.PP\nc\n"); }

TEST(HeadRoff, NamesThePageInCapitals) {
  EXPECT_NE(head_roff("hvm", 7, "1.0.0", "Words").find(".TH HVM 7 \"\" \"arrayfold 1.0.0\" \"Words\"\n"),
            std::string::npos);
}

TEST(Document, HasABeginningAndSections) {
  const Document read = read_document("page.md", "# Title\n\nwords\n\n## One\na\n```\n## no title\n```\n## Two\n");
  ASSERT_EQ(read.sections.size(), 2u);
  EXPECT_EQ(block_roff(read.beginning), ".PP\nwords\n");
  EXPECT_EQ(read.section("One").lines.size(), 4u);
  EXPECT_THROW(read.section("Three"), PageFault);
}

}  // namespace
}  // namespace hvm::description
