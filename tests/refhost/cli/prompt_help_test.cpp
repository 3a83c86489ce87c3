// refhost/cli/prompt_help_test.cpp: help, commands and completion at the prompt

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "script/library/builtins.hpp"
#include "script/syntax/lexer.hpp"
#include "terminal.hpp"

namespace hvm::testing {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(Repl, TheFirstLine_NamesVersionAndHelp) {
  Terminal terminal;
  EXPECT_THAT(terminal.wait_for("> "), ::testing::MatchesRegex("hvm [0-9.]+, type help for help\r\n> "));
}

TEST(Repl, ExitAndQuit_AreWordsOfTheirOwn) {
  for (const char* word : {"exit", "quit", " quit() "}) {
    Prompt terminal;
    terminal.type(std::string(word) + "\n");
    EXPECT_EQ(terminal.exit_status(), 0) << word;
  }
  Prompt terminal;
  terminal.answer("quit = 5");
  EXPECT_THAT(terminal.answer("quit"), HasSubstr("\r\n5\r\n"));
}

TEST(Repl, Help_TellsOfFunctionsKeywordsAndTopics) {
  Prompt terminal;
  const std::string topics = terminal.answer("help");
  EXPECT_THAT(topics, HasSubstr("help(name)"));
  EXPECT_LT(std::count(topics.begin(), topics.end(), '\n'), 24);
  terminal.expect_answers({{"help(round)", "  round(x, digits)\r\nGives the nearest whole number"},
                           {"help while", "  while c\r\n"},
                           {"help(reshape)", "docs/functions/method-reshape.md"},
                           {"help(\":time\")", ":time STATEMENT"},
                           {"help(functions)", "toy_count"},
                           {"help(prnt)", "There is no help on 'prnt' (did you mean 'print'?).\r\n"},
                           {"help(toy_)", "These names are similar:\r\n  toy_bool toy_count"},
                           {"help load", "  :load FILE\r\n"},
                           {"help(:vers)", "There is no help on ':vers' (did you mean ':vars'?).\r\n"},
                           {"help(println)", "There is no help on 'println'; write print(x).\r\n"},
                           {"help(\"why\")", "Explains the last error"},
                           {"help(double)", "xarray(@double, [1, 2])"},
                           {"help @int", "  int(x)\r\n"},
                           {"help(@)", "Quotes what follows"},
                           {"help :load", ":load FILE"},
                           {"help(+)", "docs/functions/operator-add.md"},
                           {"help \">=\"", "docs/functions/operator-less.md"},
                           {"help(\"a b\")", "There is no help on 'a b'.\r\n"},
                           {"help(\xCF\x80 ", "There is no help on '\xCF\x80'.\r\n"},
                           {"help (( )", "There is no help on '('.\r\n"},
                           {"help(", "help(name)"},
                           {"helper(2)", "there is no function 'helper'"},
                           {"help += 2", "there is no variable 'help'"},
                           {"help []", "docs/functions/element-access.md"},
                           {"help(plot)", "\r\n  \"title\": a text above the picture\r\n"}});
  terminal.answer("# the area", "\n> ");
  terminal.answer("fn area(w, h)  # of a field", "\n... ");
  terminal.answer("return w * h", "\n... ");
  terminal.expect_answers({{"end"},
                           {"help(area)", "  area(w, h)\r\n"},
                           {"help(transpose)", "use \"arrays\" loads this function.\r\n  transpose(a)\r\n"},
                           {"help(arrays)", "\r\nuse \"arrays\" loads these functions. help(name)"},
                           {"help(arrays)", " set_column transpose "},
                           {"help(../arrays)", "There is no help on '../arrays'.\r\n"},
                           {"help =3"},
                           {"help", "\r\n3\r\n"}});
}

TEST(Repl, Help_KnowsAllWordsOfTheLanguage) {
  Prompt terminal;
  for (const std::string& word : keyword_names())
    EXPECT_THAT(terminal.answer("help " + word), Not(HasSubstr("There is no help"))) << word;
  for (const std::string_view name : builtin_names()) {
    const std::string_view usage = find_builtin(name)->usage;
    const std::string first_form(usage.substr(0, usage.find('\n')));
    EXPECT_THAT(terminal.answer("help " + std::string(name)), HasSubstr("\r\n  " + first_form + "\r\n"));
  }
}

TEST(Repl, Help_ListsBuiltinsKeywordsAndVariables) {
  Prompt terminal;
  terminal.expect_answers({{"help(variables)", "  args\r\n"},
                           {"distance = 7; area = 2"},
                           {"help(variables)", "  area args distance\r\n"},
                           {"help(builtins)", "  abs acos append "},
                           {"help(builtins)", "help(print) explains one of them.\r\n"},
                           {"help(keywords)", " while\r\n"},
                           {"help(keywords)", "help(for) explains one of them.\r\n"}});
}

TEST(Repl, Help_OfALoadedLibraryShowsThePageOfItsFn) {
  Prompt terminal;
  terminal.expect_answers({{"use \"arrays\""}, {"help(transpose)", "docs/library/transpose.md"}});
}

TEST(Repl, Help_OfAFnShowsTheCommentAboveIt) {
  const Workplace place;
  place.write("area.hvm", "x = 1\n# Gives the area\n# of a \x1b[31mfield.\nfn area(w, h) return w * h end\n");
  Prompt terminal(in_folder(place));
  terminal.expect_answers({{":load area.hvm"},
                           {"help(area)",
                            "\r\n  area(w, h)\r\nGives the area\r\nof a \ufffd[31mfield.\r\n"
                            "Defined in area.hvm, line 4.\r\n"},
                           {"fn  wide(w) return w end"},
                           {"help(wide)", "\r\n  wide(w)\r\n"}});
}

TEST(Repl, TimeAndVars_TellOfStatementsAndVariables) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer(":time x = 3"), ContainsRegex("\r\n[0-9.]+ (us|ms)\r\n"));
  EXPECT_THAT(terminal.answer(":time for i in range(200000) do x = 3 end"), ContainsRegex("\r\n[0-9.]+ (ms|s)\r\n"));
  EXPECT_THAT(terminal.answer(":time for i in range(3)", "\n... "), Not(HasSubstr("ms")));
  EXPECT_THAT(terminal.answer("end"), ContainsRegex("\r\n[0-9.]+ (us|ms)\r\n"));
  terminal.answer("table = [1, 2]");
  terminal.answer("a = toy_int(2, 3)");
  terminal.answer("text = \"a\" * 60");
  const std::string shown = terminal.answer(":vars");
  EXPECT_THAT(shown, HasSubstr("\r\nx      3\r\n"));
  EXPECT_THAT(shown, HasSubstr("\r\ntable  a table of 2 entries\r\n"));
  EXPECT_THAT(shown, HasSubstr("(2, 3)\r\n"));
  EXPECT_THAT(shown, HasSubstr("... (60 characters)\r\n"));
  EXPECT_THAT(terminal.answer(":nothing"), HasSubstr("error: there is no command :nothing"));
  EXPECT_THAT(terminal.answer(":load"), HasSubstr("error: write :load FILE"));
}

TEST(Repl, Tab_CompletesNamesMethodsAndKeywords) {
  Prompt terminal;
  terminal.expect_answers({{"distance = 7"},
                           {"dist\t + 1", "\r\n8\r\n"},
                           {"toy_cou\t1, 2)", "\r\n2\r\n"},
                           {"a = toy_int(2)"},
                           {"a.sh\t)", "\r\n[2]\r\n"}});
  terminal.answer("whi\t 0", "\n... ");
  terminal.expect_answers({{"\tend"},
                           {"print(toy_n\t))", "\r\nnil\r\n"},
                           {"print(toy_zz\t)", "there is no variable 'toy_zz'"},
                           {"help(toy_fa\t", "  toy_fail("}});
}

TEST(Repl, Tab_CompletesFnsAndCommands) {
  Prompt terminal;
  terminal.expect_answers({{"fn surface(w) return w * w end"},
                           {"surf\t3)", "\r\n9\r\n"},
                           {":tim\tx = 3", ":time x = 3\r\n"},
                           {"use \"arrays\""},
                           {"arrays_che\t", "there is no variable 'arrays_che'"}});
}

TEST(Repl, Tab_ShowsSeveralMatches) {
  Prompt terminal;
  terminal.type("toy_end\t");
  EXPECT_THAT(terminal.wait_for("toy_end_with"), HasSubstr("\ntoy_end       toy_end_with"));
  terminal.wait_for("\n> toy_end");
  terminal.type("\x03");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("# toy_en\t1"), Not(HasSubstr("toy_end")));
}

TEST(Repl, Tab_BehindAValueWithoutMethodsSaysWhatThereIs) {
  Prompt terminal;
  terminal.expect_answers({{"t = [\"name\": 1, \"n\\x1b\": 2, 7]"},
                           {"long = range(100); e = []"},
                           {"t[\"na\t + 41", "\r\n42\r\n"},
                           {"n = 3"}});
  const struct {
    const char* typed;
    const char* shown;
  } rows[] = {
      {"t.\t", "t is a table, which has no methods; it has t[0], t[\"name\"], t[\"n\\x1b\"]\r\n"},
      {"long.\t", "it has long[0], long[1], long[2], long[3], long[4], long[5], long[6], long[7], ...\r\n"},
      {"1 + e.sh\t", "e is a table, which has no methods; it is empty\r\n"},
      {"args.s\t", "args is a table"},
      {"n.\t", "n is an int, which has no methods\r\n"},
  };
  for (const auto& row : rows) {
    terminal.type(row.typed);
    EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr(row.shown)) << row.typed;
    terminal.type("\x03");
    terminal.wait_for("\n> ");
  }
}

TEST(Repl, Tab_InQuotesCompletesFiles) {
  const Workplace place;
  place.write("data/measurements.csv", "a\n1\n");
  for (const char* name :
       {"odd\x01name.csv", "odd\xC2\x9Bname.csv", "odd\xFFname.csv", "odd\nname.csv", "odd\"name.csv"})
    place.write(name, "");
  Prompt terminal(in_folder(place));
  EXPECT_THAT(terminal.answer("read_csv(\"da\tmea\t)"), HasSubstr("[\"a\": [1]]"));
  EXPECT_THAT(terminal.answer("len(\"odd\t\")"), ::testing::AllOf(HasSubstr("\r\n3\r\n"), Not(HasSubstr("name"))));
  EXPECT_THAT(terminal.answer("use \"arr\t"), Not(HasSubstr("error")));
  place.write("two words.hvm", "words = 2\n");
  terminal.answer(":load \"two\t");
  EXPECT_THAT(terminal.answer("words"), HasSubstr("\r\n2\r\n"));
}

TEST(Repl, Why_TellsTheStoryOfTheLastError) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer("why"), HasSubstr("there was no error yet"));
  EXPECT_THAT(terminal.answer("toy_fail(toy_int(3))"), Not(HasSubstr("arguments")));
  terminal.expect_answers({{"  why ", "argument 1: $xintarray (3): 0, 1, 2"},
                           {"unknown + 1", "error:"},
                           {"why", "there are no more details of this error: "}});
}

TEST(Repl, Why_IsAVariableWhereThereIsOne) {
  Prompt terminal;
  terminal.answer("toy_fail()");
  terminal.answer("why = 42");
  EXPECT_THAT(terminal.answer("why"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, Why_InALongerInput_IsPartOfIt) {
  Prompt terminal;
  terminal.answer("x = [1,", "\n... ");
  terminal.answer("why", "\n... ");
  EXPECT_THAT(terminal.answer("]"), HasSubstr("error: "));
}

}  // namespace
}  // namespace hvm::testing
