// refhost/script/data/csv_test.cpp: CSV files as tables, and tables as CSV files

#include <gmock/gmock.h>

#include <random>

#include "folder.hpp"
#include "script/data/csv_columns.hpp"

namespace hvm::testing {
namespace {

TEST(ReadCsv, ColumnsAreIntegersRealsOrStrings) {
  expect_of_file("print(read_csv(\"DIR/f\"))", {{"a,b\n1,x\n2,y\n", "[\"a\": [1, 2], \"b\": [\"x\", \"y\"]]"},
                                                {"a\n1\n2.5\n", "[\"a\": [1.0, 2.5]]"},
                                                {"a,b\n1,\n,2\n", "[\"a\": [1.0, nan], \"b\": [nan, 2.0]]"},
                                                {"a,b\n1,\n,x\n", "[\"a\": [1.0, nan], \"b\": [\"\", \"x\"]]"},
                                                {"a\n1\nx\n1.50\n", "[\"a\": [\"1\", \"x\", \"1.50\"]]"},
                                                {"a\n1e999\nx\n", "[\"a\": [\"1e999\", \"x\"]]"},
                                                {"a\n5000000000\n1\n", "[\"a\": [5000000000, 1]]"},
                                                {"a\n20000000000000000000\n1\n", "[\"a\": [2e+19, 1.0]]"},
                                                {"a\nnan\n-inf\n", "[\"a\": [nan, -inf]]"},
                                                {"a,b\n,\n", "[\"a\": [nan], \"b\": [nan]]"},
                                                {"a,b\n", "[\"a\": [], \"b\": []]"},
                                                {"a,b", "[\"a\": [], \"b\": []]"}});
}

TEST(ReadCsv, RowsEndInAnyWayAndEmptyLinesAreSkipped) {
  const char* same = "[\"a\": [1, 3], \"b\": [2, 4]]";
  expect_of_file("print(read_csv(\"DIR/f\"))", {{"a,b\n1,2\n3,4\n", same},
                                                {"a,b\n1,2\n3,4", same},
                                                {"a,b\r\n1,2\r\n3,4\r\n", same},
                                                {"a,b\r\n1,2\r\n3,4", same},
                                                {"a,b\r1,2\r3,4\r", same},
                                                {"\xEF\xBB\xBF"
                                                 "a,b\n1,2\n3,4\n",
                                                 same},
                                                {"\n\na,b\n\n1,2\n \t\n3,4\n\n", same},
                                                {"a , b\n 1,\t2\n3 ,4  \n", same},
                                                {"\"a\",\"b\"\n\"1\",\"2\"\n3,\"4\"\n", same}});
}

TEST(ReadCsv, QuotationMarksKeepWhatStandsBetweenThem) {
  expect_of_file("print(read_csv(\"DIR/f\"))",
                 {{"a,b\n\"x,y\",\"p\"\"q\"\n", "[\"a\": [\"x,y\"], \"b\": [\"p\\\"q\"]]"},
                  {"a,b\n\"x\ny\",\" p \"\n", "[\"a\": [\"x\\ny\"], \"b\": [\" p \"]]"},
                  {"a,b\n\"\",z\n", "[\"a\": [nan], \"b\": [\"z\"]]"},
                  {"a,b\n \"x\" ,z\n", "[\"a\": [\"x\"], \"b\": [\"z\"]]"},
                  {"a\n\"\"\n1\n", "[\"a\": [nan, 1.0]]"}});
}

TEST(ReadCsv, OptionsChooseHeaderSeparatorColumnsAndMissingCells) {
  const Folder folder;
  folder.write("f", "a;b;c\n1;2;x\n3;4;y\n");
  folder.write("n", "1,2\n3,4\n");
  folder.write("tabs", "a\tb\n1\t\n\t2\n");
  folder.write("blanks", "a b\n1 2\n");
  folder.write("unnamed", ",a,a\n0,5,6\n");
  folder.write("words", "NA,b\n1,x\nNA,-\n\"NA\",\" -\"\n");
  const std::pair<const char*, const char*> rows[] = {
      {"\"DIR/f\", [\"separator\": \";\"]", "[\"a\": [1, 3], \"b\": [2, 4], \"c\": [\"x\", \"y\"]]"},
      {"\"DIR/f\", [\"separator\": \";\", \"columns\": [\"c\", \"a\"]]", "[\"c\": [\"x\", \"y\"], \"a\": [1, 3]]"},
      {"\"DIR/f\", [\"separator\": \";\", \"columns\": [1]]", "[\"b\": [2, 4]]"},
      {"\"DIR/f\", []", "[\"a;b;c\": [\"1;2;x\", \"3;4;y\"]]"},
      {"\"DIR/n\", [\"header\": false]", "[[1, 3], [2, 4]]"},
      {"\"DIR/n\", [\"header\": false, \"columns\": [1]]", "[1: [2, 4]]"},
      {"\"DIR/n\", [\"header\": true]", "[\"1\": [3], \"2\": [4]]"},
      {"\"DIR/tabs\", [\"separator\": \"\\t\"]", "[\"a\": [1.0, nan], \"b\": [nan, 2.0]]"},
      {"\"DIR/blanks\", [\"separator\": \" \"]", "[\"a\": [1], \"b\": [2]]"},
      {"\"DIR/unnamed\", [\"columns\": [1]]", "[\"a\": [5]]"},
      {"\"DIR/words\", [\"missing\": [\"NA\", \"-\"]]", "[\"NA\": [1.0, nan, nan], \"b\": [\"x\", \"\", \" -\"]]"},
      {"\"DIR/words\", [\"missing\": \"NA\"]", "[\"NA\": [1.0, nan, nan], \"b\": [\"x\", \"-\", \" -\"]]"},
      {"\"DIR/words\", [\"missing\": []]", "[\"NA\": [\"1\", \"NA\", \"NA\"], \"b\": [\"x\", \"-\", \" -\"]]"},
      {"\"DIR/words\", [\"header\": false, \"missing\": [\"NA\"], \"columns\": [0]]", "[[nan, 1.0, nan, nan]]"},
  };
  for (const auto& [arguments, output] : rows)
    EXPECT_EQ(folder.output_of("print(read_csv(" + std::string(arguments) + "))"), output) << arguments;
}

TEST(ReadCsv, WrongOptions_AreErrors) {
  const Folder folder;
  folder.write("f", "a,b\n1,2\n");
  folder.write("n", "1,2\n3,4\n");
  const std::pair<const char*, const char*> rows[] = {
      {"\"DIR/f\", [\"head\": 1]",
       "there is no option \"head\"; it takes \"header\", \"separator\", \"columns\", "
       "\"missing\""},
      {"\"DIR/f\", [\"missing\": 5]", "\"missing\" is a table of strings, not an int"},
      {"\"DIR/f\", [\"missing\": [5]]", "\"missing\" has strings, not an int"},
      {"\"DIR/f\", [5]", "an option has a name, not an int"},
      {"\"DIR/f\", 5", "it takes a table, not an int"},
      {"5", "it takes a string, not an int"},
      {"\"DIR/f\", [\"header\": \"no\"]", "\"header\" is true or false, not a string"},
      {"\"DIR/f\", [\"separator\": \"ab\"]", "\"separator\" is a string of one ASCII character"},
      {"\"DIR/f\", [\"separator\": \"\xC3\xA9\"]", "\"separator\" is a string of one ASCII character"},
      {"\"DIR/f\", [\"separator\": \"\\\"\"]",
       "\"separator\" cannot be a quotation mark, the end of a line or a zero byte"},
      {"\"DIR/f\", [\"columns\": \"a\"]", "\"columns\" is a table of names or positions, not a string"},
      {"\"DIR/f\", [\"columns\": [1.5]]", "\"columns\" has names and positions, not a real"},
      {"\"DIR/f\", [\"columns\": []]", "\"columns\" is empty"},
      {"\"DIR/f\", [\"columns\": [\"c\"]]", "DIR/f: there is no column \"c\"; there are \"a\", \"b\""},
      {"\"DIR/f\", [\"columns\": [2]]", "DIR/f: there is no column 2; the positions are 0 to 1"},
      {"\"DIR/f\", [\"columns\": [-1]]", "DIR/f: there is no column -1; the positions are 0 to 1"},
      {"\"DIR/f\", [\"columns\": [\"a\", 0]]", "DIR/f: column 0 is chosen twice"},
      {"\"DIR/n\", [\"header\": false, \"columns\": [\"a\"]]",
       "DIR/n: the column \"a\" is chosen by name, but there is no header"},
      {"\"DIR/n\"",
       "DIR/n: the first row (line 1) has numbers, not the names of columns; the option \"header\" says whether it is "
       "a "
       "header"},
  };
  for (const auto& [arguments, message] : rows)
    EXPECT_EQ(folder.output_of("read_csv(" + std::string(arguments) + ")"), "!read_csv: " + std::string(message));
}

TEST(ReadCsv, WrongFiles_AreErrorsWithTheirPlace) {
  expect_of_file(
      "read_csv(\"DIR/f\")",
      {{"", "!read_csv: DIR/f: the file is empty"},
       {"\n \n", "!read_csv: DIR/f: the file has no rows"},
       {"a,a\n1,2", "!read_csv: DIR/f: the header (line 1): the columns 1 and 2 have the same name \"a\""},
       {"\na,,b\n", "!read_csv: DIR/f: the header (line 2): column 2 has no name"},
       {"a,\"b\n1,2\n",
        "!read_csv: DIR/f: the header, column 2 (line 1): the quotation marks of this cell do "
        "not close"},
       {"a,b\n1\n", "!read_csv: DIR/f: row 1 (line 2): 1 cell instead of 2"},
       {"a,b\n1,2\n\n3,4,5\n", "!read_csv: DIR/f: row 2 (line 4): 3 cells instead of 2"},
       {"a,b\n\"1\n\n\",2\n3\n", "!read_csv: DIR/f: row 2 (line 5): 1 cell instead of 2"},
       {"a,b\r1,2\r3\r", "!read_csv: DIR/f: row 2 (line 3): 1 cell instead of 2"},
       {"a,b\n1,\"2\n3,4\n",
        "!read_csv: DIR/f: row 1, column 2 (line 2): the quotation marks of this cell do "
        "not close"},
       {"a,b\n1,\"x\" y\n",
        "!read_csv: DIR/f: row 1, column 2 (line 2): text after the closing "
        "quotation mark of the cell"},
       {"a,b\n1,x\"y\"\n",
        "!read_csv: DIR/f: row 1, column 2 (line 2): a quotation mark stands inside a cell "
        "that does not begin with one"},
       {"a,b\n1,2\n\n1,1e999\n",
        "!read_csv: DIR/f: row 2, column 2 (line 4): \"1e999\" is beyond the range of 64-bit floating-point numbers"},
       {"a,b\n1,\xFF\n", "!read_csv: DIR/f: line 2, character 3: the bytes are not valid UTF-8"},
       {std::string("a,b\n\0,2\n", 8),
        "!read_csv: DIR/f: line 2, character 1: a byte is 0: the file does not hold text"}});
}

TEST(ReadCsvArray, NeedsNumbersInEveryCell) {
  expect_of_file("read_csv_array(\"DIR/f\")",
                 {{"a,b\n1,2\n3,x\n", "!read_csv_array: DIR/f: row 2, column 2 (line 3): \"x\" is not a number"},
                  {"a\n1e999\n",
                   "!read_csv_array: DIR/f: row 1, column 1 (line 2): \"1e999\" is beyond the range of 64-bit "
                   "floating-point numbers"},
                  {"a\n" + std::string(50, 'y'),
                   "!read_csv_array: DIR/f: row 1, column 1 (line 2): "
                   "\"yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy\"... is not a number"},
                  {"", "!read_csv_array: DIR/f: the file is empty"},
                  {"a\n1\n", "!read_csv_array: the module has no arrays of doubles"}});
}

TEST(ReadCsvArray, NumbersComeRowByRowInTheOrderOfTheChosenColumns) {
  const Folder folder;
  const std::string path = folder.write("f", "a,b,c\n1,2.5,x\n4,,y\n");
  CsvFormat format;
  format.chosen = std::vector<ColumnChoice>{std::string("b"), std::int64_t{0}};
  const CsvNumbers numbers = numbers_of_csv(path, format);
  EXPECT_EQ(numbers.rows, 2u);
  EXPECT_EQ(numbers.columns, 2u);
  EXPECT_THAT(numbers.elements, ::testing::ElementsAre(2.5, 1, ::testing::IsNan(), 4));
  format.missing = {"2.5"};
  EXPECT_THAT(numbers_of_csv(path, format).elements,
              ::testing::ElementsAre(::testing::IsNan(), 1, ::testing::IsNan(), 4));
}

// Rows without quotation marks take another way through the reader than rows with one.
TEST(ReadCsv, CellsAreTheSameWithQuotationMarksAndWithout) {
  std::mt19937 random(7);
  const Folder folder;
  const auto below = [&](unsigned n) { return random() % n; };
  for (int attempt = 0; attempt < 200; ++attempt) {
    const std::string separator(1, ",;\t |"[below(5)]);
    const std::size_t columns = 1 + below(4);
    std::string plain = "header", quoted = "\"header\"";
    for (std::size_t i = 1; i < columns; ++i) {
      plain += separator + "h" + std::to_string(i);
      quoted += separator + "\"h" + std::to_string(i) + "\"";
    }
    for (unsigned row = 0; row < 20; ++row) {
      const std::string line_end = below(2) ? "\n" : "\r\n";
      plain += line_end + (below(5) ? "" : "\n");
      quoted += line_end;
      for (std::size_t i = 0; i < columns; ++i) {
        std::string cell = columns == 1 ? "x" : "";
        for (unsigned length = below(4); length > 0; --length) cell += "a1.-\xC3\xA9"[below(4)];
        const std::string blanks(separator == " " ? 0 : below(3), ' ');
        plain += (i > 0 ? separator : "") + blanks + cell + blanks;
        quoted += (i > 0 ? separator : "") + "\"" + cell + "\"";
      }
    }
    folder.write("plain", plain);
    folder.write("quoted", quoted);
    const std::string options = "[\"separator\": \"" + (separator == "\t" ? "\\t" : separator) + "\"]";
    const std::string of_plain = folder.output_of("print(read_csv(\"DIR/plain\", " + options + "))");
    EXPECT_EQ(of_plain.front(), '[') << of_plain;
    ASSERT_EQ(of_plain, folder.output_of("print(read_csv(\"DIR/quoted\", " + options + "))")) << plain;
  }
}

// Lines end within chunks of the reader and between them, and so do rows, in the ways of several systems.
TEST(ReadCsv, CellsAreTheSameWhateverEndsTheirLines) {
  std::mt19937 random(11);
  const Folder folder;
  for (int attempt = 0; attempt < 10; ++attempt) {
    const std::string ends[] = {"\n", "\r\n", "\r"};
    const auto kinds = attempt % 2 ? 3 : 1 + random() % 3;
    std::string plain = "a,b", mixed = plain;
    while (plain.size() < 600'000) {
      std::string row = "x" + std::to_string(random());
      row += random() % 3 ? ",y" : ",\"y\nz\"";
      plain += "\n" + row;
      mixed += ends[random() % kinds] + row;
    }
    folder.write("plain", plain);
    folder.write("mixed", mixed + ends[random() % kinds]);
    EXPECT_EQ(folder.output_of("print(str(read_csv(\"DIR/plain\")) == str(read_csv(\"DIR/mixed\")))"), "1") << attempt;
  }
}

TEST(WriteCsv, WritesColumnsUnderTheirNames) {
  const Folder folder;
  const std::pair<const char*, const char*> rows[] = {
      {"[\"a\": [1, 2], \"b\": [1.0, 2.5]]", "a,b\n1,1.0\n2,2.5\n"},
      {"[[1, 2], [\"x\", \"y\"]]", "1,x\n2,y\n"},
      {"[[\"\\u{feff}\", \"z\"]]", "\"\xEF\xBB\xBF\"\nz\n"},
      {"[\"a\": []]", "a\n"},
      {"[\"a b\": [5000000000L, \" x\", \"y,z\", \"p\\\"q\", \"l\\nm\", w\"w\"]]",
       "a b\n5000000000\n\" x\"\n\"y,z\"\n\"p\"\"q\"\n\"l\nm\"\nw\n"},
      {"[\"a\": [\"\", parse_json(\"null\")]]", "a\n\"\"\n\"\"\n"},
      {"[\"a\": [\"\", 1], \"b\": [parse_json(\"null\"), 2]]", "a,b\n,\n1,2\n"},
      {"[\"a\": [1e300, -0.0, 1.0 / 0, 0.1]]", "a\n1e+300\n-0.0\ninf\n0.1\n"},
      {"[\"a\": [1, 2]], [\"header\": false]", "1\n2\n"},
      {"[\"a\": [1, 2]], [\"header\": [\"c\"]]", "c\n1\n2\n"},
      {"[[1], [2]], [\"header\": [\"c\", \"d;e\"], \"separator\": \";\"]", "c;\"d;e\"\n1;2\n"},
      {"[\"a\": toy_double(2), \"b\": [\"x\", \"y\"], \"c\": toy_int(2)]", "a,b,c\n0.0,x,0\n1.0,y,1\n"},
      {"[toy_int(0), []]", ""},
      {"toy_double(2, 2)", "0.0,1.0\n2.0,3.0\n"},
      {"toy_int(3)", "0\n1\n2\n"},
      {"toy_int(0, 2), [\"header\": [\"x\", \"y\"]]", "x,y\n"},
  };
  for (const auto& [arguments, content] : rows) {
    EXPECT_EQ(folder.output_of("write_csv(\"DIR/f\", " + std::string(arguments) + ")"), "") << arguments;
    EXPECT_EQ(folder.read("f"), content) << arguments;
  }
}

TEST(WriteCsv, WhatIsNoTable_IsAnErrorAndTheFileStays) {
  const Folder folder;
  folder.write("f", "old");
  const std::pair<const char*, const char*> rows[] = {
      {"5", "it takes a table of columns or an array, not an int"},
      {"[]", "there are no columns"},
      {"[\"a\": 5]", "column a is an int, not a table or an array"},
      {"[\"a\": toy_int(2, 2)]", "column a is $xintarray (2, 2), not an array of one axis"},
      {"[\"a\": [1], \"b\": toy_int(2)]", "column b has 2 values, the first column has 1"},
      {"[\"a\": [1], \"b\": [1, 2]]", "column b has 2 values, the first column has 1"},
      {"[\"a\": [\"k\": 1]]", "column a has keys other than 0, 1, 2, ..."},
      {"[\"a\": [1], 2.5: [1]]", "a column has a name, not a real"},
      {"[\"\": [1]]", "the name of a column is empty"},
      {"[\"a\": [[1]]]", "DIR/f: row 1, column 1: a table cannot stand in a cell"},
      {"[\"a\": [1, \"\\xff\"]]", "DIR/f: row 2, column 1: the text is not valid UTF-8"},
      {"[\"a\": [\"\\0\"]]", "DIR/f: row 1, column 1: the text has a zero byte"},
      {"[\"a\\xff\": [1]]", "DIR/f: the header: the text is not valid UTF-8"},
      {"[\"a\": [1]], [\"header\": [\"c\", \"d\"]]", "\"header\" has 2 names for 1 column"},
      {"[\"a\": [1]], [\"header\": [5]]", "a column has a name, not an int"},
      {"[[1], [2]], [\"header\": [\"c\", \"c\"]]", "two columns have the name \"c\""},
      {"[[1], [2]], [\"header\": true]", "the columns have no names; \"header\" can be a table of them"},
      {"[\"a\": [1]], [\"columns\": 1]", "there is no option \"columns\"; it takes \"header\", \"separator\""},
      {"toy_int(2, 2, 2)", "it takes columns or an array of one or two axes, not $xintarray (2, 2, 2)"},
      {"toy_int(2, 0)", "there are no columns"},
  };
  for (const auto& [arguments, message] : rows) {
    EXPECT_EQ(folder.output_of("write_csv(\"DIR/f\", " + std::string(arguments) + ")"),
              "!write_csv: " + std::string(message));
    EXPECT_EQ(folder.read("f"), "old") << arguments;
    EXPECT_EQ(folder.file_count(), 1u) << arguments;
  }
}

TEST(WriteCsv, ReadCsvGivesBackWhatWasWritten) {
  const Folder folder;
  EXPECT_EQ(folder.output_of("t = [\"n\": [1, -5, 5000000000L], \"x y\": [0.1, 1e300, 1.0 / 3], "
                             "\"s\": [\" a\\t\", \"b,\\\"c\\\"\\r\\nd\", \"\xC3\xA9\"], \"e\": [\"\", \"x\", \"\"]]\n"
                             "write_csv(\"DIR/f\", t)\n"
                             "u = read_csv(\"DIR/f\")\n"
                             "print(str(u) == str(t))\n"
                             "write_csv(\"DIR/g\", u, [\"separator\": \"|\"])\n"
                             "print(str(read_csv(\"DIR/g\", [\"separator\": \"|\"])) == str(t))"),
            "1|1");
}

TEST(WriteCsv, ASeparatorThatNumbersHold_PutsThemInQuotationMarks) {
  const Folder folder;
  for (const std::string& separator : std::vector<std::string>{".", "-", "1", "e", "n"}) {
    const std::string options = ", [\"header\": false, \"separator\": \"" + separator + "\"]";
    EXPECT_EQ(folder.output_of("t = [[1.5, -2.5], [-1, 10], [1e300, 0.0 / 0]]\n"
                               "write_csv(\"DIR/f\", t" +
                               options +
                               ")\n"
                               "print(str(read_csv(\"DIR/f\"" +
                               options + ")) == str(t))"),
              "1")
        << separator;
  }
}

}  // namespace
}  // namespace hvm::testing
