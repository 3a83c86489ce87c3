// refhost/script/library/file_functions_test.cpp: texts and lines of files, and what a script may touch

#include "folder.hpp"

namespace hvm::testing {
namespace {

TEST(ReadText, GivesTheWholeFile) {
  expect_of_file("print(read_text(\"DIR/f\"))",
                 {{"", ""},
                  {"a\r\nb\n", "a\r\nb\n"},
                  {"\xEF\xBB\xBF\xC3\xA9", "\xC3\xA9"},
                  {"a\xFF", "!read_text: DIR/f: line 1, character 2: the bytes are not valid UTF-8"}});
}

TEST(ReadLines, GivesLinesWithoutTheirEnds) {
  expect_of_file("print(read_lines(\"DIR/f\"))", {{"", "[]"},
                                                  {"\n", "[\"\"]"},
                                                  {"a", "[\"a\"]"},
                                                  {"a\n", "[\"a\"]"},
                                                  {"a\r\n\r\nb", "[\"a\", \"\", \"b\"]"},
                                                  {"a\rb\n", "[\"a\\rb\"]"},
                                                  {"\xEF\xBB\xBF"
                                                   "a\n\n",
                                                   "[\"a\", \"\"]"},
                                                  {"a\n\xFF",
                                                   "!read_lines: DIR/f: line 2, character 1: the bytes are not valid "
                                                   "UTF-8"}});
}

TEST(ReadLines, LinesLongerThanAChunkAreWhole) {
  const Folder folder;
  folder.write("f", std::string(700'000, 'x') + "\r\n" + std::string(300'000, 'y') + "\nz");
  EXPECT_EQ(folder.output_of("for s in read_lines(\"DIR/f\") do print(len(s)) end"), "700000|300000|1");
}

TEST(WriteText, ReplacesTheFile) {
  const Folder folder;
  EXPECT_EQ(folder.output_of("write_text(\"DIR/f\", \"a\\n\"); write_text(\"DIR/f\", w\"\xC3\xA9\\xff\")"), "");
  EXPECT_EQ(folder.read("f"), "\xC3\xA9\xC3\xBF");
  EXPECT_EQ(folder.output_of("write_text(\"DIR/f\", \"\\0\\xff\")"), "");
  EXPECT_EQ(folder.read("f"), std::string("\0\xFF", 2));
  EXPECT_EQ(folder.output_of("write_text(\"DIR/f\", \"\"); print(len(read_text(\"DIR/f\")))"), "0");
}

TEST(FileFunctions, ErrorsNameTheFunctionThePathAndTheCause) {
  const Folder folder;
  const std::pair<const char*, const char*> rows[] = {
      {"read_text(\"DIR/m\")", "!read_text: DIR/m: No such file or directory"},
      {"read_lines(\"DIR\")", "!read_lines: DIR: Is a directory"},
      {"read_csv(\"DIR\")", "!read_csv: DIR: Is a directory"},
      {"read_csv_array(\"DIR/m\")", "!read_csv_array: DIR/m: No such file or directory"},
      {"read_text(\"a\\0b\")", "!read_text: the path has a zero byte"},
      {"read_csv(\"\")", "!read_csv: the path is empty"},
      {"write_csv(\"DIR/o\", 1)", "!write_csv: it takes a table of columns or an array, not an int"},
      {"write_text(\"DIR\", \"\")", "!write_text: DIR: Is a directory"},
      {"write_text(\"/dev/full\", \"x\")", "!write_text: /dev/full: No space left on device"},
      {"write_csv(\"/dev/full\", [[1]])", "!write_csv: /dev/full: No space left on device"},
      {"write_text(\"-\", \"x\")", "!write_text: \"-\" is the standard input; 'print' writes to the standard output"},
      {"write_csv(\"-\", [[1]])", "!write_csv: \"-\" is the standard input; 'print' writes to the standard output"},
      {"write_text(\"DIR/f\", 5)", "!write_text: it takes a string, not an int"},
      {"read_text()", "!read_text: it takes 1 argument, not 0"},
  };
  for (const auto& [script, output] : rows) EXPECT_EQ(folder.output_of(script), output);
}

/// What a script prints when it may touch these files.
std::string output_with(FileAccess files, const std::string& script) {
  std::string out;
  Interpreter interpreter(
      toy_functions(),
      {true, [&](const std::string& text, const SourceText&, std::size_t) { out += text; }, {}, files});
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", script)));
  } catch (const ScriptError& error) {
    out += "!" + error.message();
  }
  return out;
}

TEST(FileAccess, SwitchedOff_LeavesFilesAlone) {
  const Folder folder;
  folder.write("f", "old");
  const std::string path = "\"" + (folder / "f") + "\"";
  for (const std::string function : {"read_text", "read_lines", "read_csv", "read_csv_array"})
    EXPECT_EQ(output_with(FileAccess::none, function + "(" + path + ")"), "!" + function + ": files are switched off");
  for (const std::string function : {"write_text", "write_csv"})
    EXPECT_EQ(output_with(FileAccess::none, function + "(" + path + ", \"\")"),
              "!" + function + ": files are switched off");
  EXPECT_EQ(folder.read("f"), "old");
  EXPECT_EQ(output_with(FileAccess::none, "print(to_json(parse_json(\"[1]\")))"), "[1]");
}

TEST(FileAccess, WithoutTheStandardInput_ReadsFilesAlone) {
  const Folder folder;
  folder.write("f", "text");
  const std::string path = "\"" + (folder / "f") + "\"";
  EXPECT_EQ(output_with(FileAccess::without_standard_input, "print(read_text(" + path + "))"), "text");
  EXPECT_EQ(output_with(FileAccess::without_standard_input, "read_csv(\"-\")"),
            "!read_csv: the standard input holds the script, so it holds no data");
}

// Every allocation of the kernel fails once. What was made before is freed, and the script gets an error.
TEST(FileFunctions, WithoutMemoryInTheKernel_FailAndLeaveNothingBehind) {
  const Folder folder;
  const std::string csv = folder.write("c", "a,b,c\n1,2.5,x\n3,,yy\n");
  const std::string text = folder.write("t", "one\ntwo\n");
  for (const std::string& script :
       {"t = read_csv(\"" + csv + "\"); write_csv(\"" + (folder / "o") + "\", t)", "read_lines(\"" + text + "\")",
        "read_text(\"" + text + "\")",
        std::string("t = parse_json(\"[1, {\\\"a\\\": [\\\"b\\\", 2.5]}]\"); to_json(t)")}) {
    int failures = 0;
    for (int nth = 1;; ++nth) {
      const Counts before = counts();
      fail_allocation(nth);
      const std::string output = testing::output_of(script);
      const bool has_failed = allocation_has_failed();
      fail_allocation(0);
      EXPECT_TRUE(counts() == before) << script << ": allocation " << nth;
      if (!has_failed) {
        EXPECT_EQ(output, "");
        break;
      }
      EXPECT_EQ(output, "!out of memory") << nth;
      ++failures;
    }
    EXPECT_GT(failures, 0) << script;
  }
}

}  // namespace
}  // namespace hvm::testing
