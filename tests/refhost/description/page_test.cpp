// refhost/description/page_test.cpp: pages as sections, tables and paragraphs, and what is wrong with them

#include "description/page.hpp"

#include <gtest/gtest.h>

namespace hvm::description {
namespace {

const std::string sections =
    "## Synopsis\n\n## Examples\n\n## Arguments\n\n## Result\n\n## Failures\n\n## See also\n\nxtwo\n";

std::string fault_of(const std::string& text) {
  try {
    read_page("one.md", text);
    return "none";
  } catch (const PageFault& fault) {
    return fault.what();
  }
}

Section section_of(const std::string& text) {
  Section section{"Failures", 10, {}};
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
    section.lines.push_back({text.substr(start, end - start), 11 + static_cast<int>(section.lines.size())});
  return section;
}

std::string table_fault(const std::string& text) {
  try {
    table_of({"one.md", "", "", {}}, section_of(text), {"When", "Remedy"});
    return "none";
  } catch (const PageFault& fault) {
    return fault.what();
  }
}

TEST(Pages, HaveTitleSummaryAndSectionsWithTheirLines) {
  const Page page = read_page("one.md", "# xone\n\nGives one.\n\n" + sections);
  EXPECT_EQ(page.title, "xone");
  EXPECT_EQ(page.summary, "Gives one.");
  EXPECT_EQ(page.sections.size(), 6u);
  EXPECT_EQ(page.section("Failures").line, 13);
  EXPECT_EQ(page.section("See also").lines.back().text, "xtwo");
  EXPECT_EQ(page.section("See also").lines.back().number, 17);
}

TEST(Pages, TitlesInBlocksOfCode_AreNoSections) {
  EXPECT_EQ(fault_of("# xone\n\nGives one.\n\n```text\n## More\n```\n\n" + sections), "none");
}

TEST(Pages, WithoutTitleOrSummary_AreAtFault) {
  EXPECT_EQ(fault_of(""), "one.md:1: a page begins with '# ' and its title");
  EXPECT_EQ(fault_of("xone\n\nGives one.\n\n" + sections), "one.md:1: a page begins with '# ' and its title");
  EXPECT_EQ(fault_of("# \n\nGives one.\n\n" + sections), "one.md:1: a page begins with '# ' and its title");
  const std::string no_summary = "one.md:3: the third line is one sentence that says what the function does";
  EXPECT_EQ(fault_of("# xone\n\n\n\n" + sections), no_summary);
  EXPECT_EQ(fault_of("# xone\n\nGives one\n\n" + sections), no_summary);
}

TEST(Pages, WithOtherSections_AreAtFaultAtTheFirstOfThem) {
  const std::string head = "# xone\n\nGives one.\n\n";
  EXPECT_EQ(fault_of(head + "## Synopsis\n\n## Result\n"),
            "one.md:7: the section 'Result' stands where 'Examples' belongs; the sections are Synopsis, Examples, "
            "Arguments, Result, Failures, See also");
  EXPECT_EQ(fault_of(head + "## Synopsis\n"), "one.md:1: the section 'Examples' is missing");
  EXPECT_EQ(fault_of(head + sections + "\n## More\n"), "one.md:19: the section 'More' is one too many");
  EXPECT_EQ(fault_of(head), "one.md:1: the section 'Synopsis' is missing");
}

TEST(Pages, AskedForAMissingSection_AreAtFault) {
  const Page page = read_page("one.md", "# xone\n\nGives one.\n\n" + sections);
  EXPECT_THROW(page.section("More"), PageFault);
}

TEST(Tables, GiveTheirRowsWithLinesAndTrimmedCells) {
  const auto rows =
      table_of({"one.md", "", "", {}},
               section_of("Words.\n\n| When | Remedy |\n| --- | --- |\n| it rains | |\n| `a | b` |  go  |\n\n"
                          "| other | table |\n"),
               {"When", "Remedy"});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].cells, (std::vector<std::string>{"it rains", ""}));
  EXPECT_EQ(rows[0].line, 15);
  EXPECT_EQ(rows[1].cells, (std::vector<std::string>{"`a | b`", "go"}));
}

TEST(Tables, OfAnotherForm_AreAtFault) {
  EXPECT_EQ(table_fault("None.\n"), "one.md:10: the section has no table with the columns 'When | Remedy'");
  EXPECT_EQ(table_fault("| When | What |\n| --- | --- |\n"),
            "one.md:11: the columns of the table are not 'When | Remedy'");
  EXPECT_EQ(table_fault("| When | Remedy |\n| a | b |\n"), "one.md:11: no line of dashes follows the columns");
  EXPECT_EQ(table_fault("| When | Remedy |\n"), "one.md:11: no line of dashes follows the columns");
  EXPECT_EQ(table_fault("| When | Remedy |\n| --- | --- |\n| a |\n"),
            "one.md:13: the row has 1 cells, not 2: 'When | Remedy'");
}

TEST(Blocks, GiveTheirLines) {
  const auto code = code_of(section_of("\n```text\nxone(a)\nxone(a, b)\n```\n\n```text\nmore\n```\n"));
  ASSERT_EQ(code.size(), 2u);
  EXPECT_EQ(code[0].text, "xone(a)");
  EXPECT_EQ(code[1].number, 14);
  EXPECT_TRUE(code_of(section_of("none\n")).empty());
}

TEST(Paragraphs, AreJoinedLinesWithoutTablesListsAndCode) {
  const auto paragraphs =
      paragraphs_of(section_of("\nOne\ntwo.\n\n| a | b |\n\n- item\n  more of it\n\n1. "
                               "first\n\n```text\ncode\n```\nThree,\n64. four.\n- item\n"));
  ASSERT_EQ(paragraphs.size(), 2u);
  EXPECT_EQ(paragraphs[0].text, "One two.");
  EXPECT_EQ(paragraphs[0].number, 12);
  EXPECT_EQ(paragraphs[1].text, "Three, 64. four.");
}

}  // namespace
}  // namespace hvm::description
