// refhost/cli/prompt_inputs_test.cpp: inputs at the prompt, and the values that it shows

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Repl, ShowsValuesSurvivesErrorsAndEndsAtTheEndOfFile) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer("x = 20"), Not(HasSubstr("\r\n20")));
  terminal.expect_answers({{"x + 1", "\r\n21\r\n"},
                           {"\"te\" + \"xt\"", "\r\n\"text\"\r\n"},
                           {"x / 0", "<input 4>:1:3: error: '/' by the integer zero"},
                           {"x =", "error: an expression expected"},
                           {"toy_fail()", "error: toy_fail: the call failed"}});
  EXPECT_THAT(terminal.answer("toy_nothing()"), Not(HasSubstr("nil")));
  EXPECT_THAT(terminal.answer("print(toy_int(2))"), HasSubstr("\r\nint(2) [0, 1]\r\n"));
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n20\r\n"));
  terminal.type("\x04");
  EXPECT_EQ(terminal.exit_status(), 0);
}

TEST(Repl, TheEndOfFileInABlock_ReportsWhatIsOpen) {
  Prompt terminal;
  terminal.answer("while 1", "\n... ");
  terminal.type("\x04");
  terminal.wait_for("error: 'while' has no 'end'");
  EXPECT_EQ(terminal.exit_status(), 0);
}

TEST(Repl, Exit_EndsItWithAStatus) {
  Prompt terminal;
  terminal.answer("x = 3");
  terminal.type("exit(x)\r");
  EXPECT_EQ(terminal.exit_status(), 3);
}

TEST(Repl, OpenBlocksAndBrackets_GoOnInTheNextLine) {
  Prompt terminal;
  terminal.answer("fn twice(n)", "\n... ");
  terminal.answer("return n * 2", "\n... ");
  terminal.answer("end");
  terminal.answer("twice(", "\n... ");
  EXPECT_THAT(terminal.answer("21)"), HasSubstr("\r\n42\r\n"));
  terminal.answer("if 1", "\n... ");
  EXPECT_THAT(terminal.answer("x = ) end"), HasSubstr("error:"));
  EXPECT_THAT(terminal.answer("1"), HasSubstr("\r\n1\r\n"));
}

TEST(Repl, Quotations_OutliveTheLineInWhichTheyWereWritten) {
  Prompt terminal;
  terminal.answer("n = 2");
  terminal.answer("q = @double(\"text\",", "\n... ");
  terminal.answer("n + 1)");
  EXPECT_THAT(terminal.answer("q"), HasSubstr("\r\n<code>\r\n"));
  terminal.answer("toy_count(q, @[[1.0,", "\n... ");
  terminal.answer("2.0],", "\n... ");
  EXPECT_THAT(terminal.answer("[3.0, 4.0]])"), HasSubstr("\r\n2\r\n"));
}

TEST(Repl, HistoryBringsALineBack) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
  terminal.type("\x10");  // the line before, as the arrow up does
  EXPECT_THAT(terminal.answer("0"), HasSubstr("\r\n60\r\n"));
}

TEST(Repl, CharactersBeyondAscii_ArriveInAnyLocale) {
  for (const char* locale : {"C", "C.UTF-8", "no_SUCH.locale"}) {
    TerminalConditions conditions;
    conditions.locale = locale;
    Prompt terminal(conditions);
    EXPECT_THAT(terminal.answer("\"<\xCF\x80>\""), HasSubstr("\r\n\"<\xCF\x80>\"\r\n")) << locale;
    EXPECT_THAT(terminal.answer("len(w\"\xCF\x80\xE4\xB8\xAD\")"), HasSubstr("\r\n2\r\n")) << locale;
  }
}

TEST(Repl, BytesThatAreNotUtf8_AreReplacedAndReported) {
  const std::string report = "hvm: \uFFFD stands for bytes in this line that are not text in UTF-8\r\n";
  for (const char* locale : {"C", "C.UTF-8"}) {
    TerminalConditions conditions;
    conditions.locale = locale;
    Prompt terminal(conditions);
    const std::string shown = terminal.answer("\"caf\xE9\xE9<\xCF\xE4\xB8>\"");
    EXPECT_THAT(shown, HasSubstr(report)) << locale;
    EXPECT_THAT(shown, HasSubstr("\r\n\"caf\uFFFD\uFFFD<\uFFFD\uFFFD\uFFFD>\"\r\n")) << locale;
    EXPECT_THAT(terminal.answer("\"\xCF\x80\xEF\xBF\xBD\""), Not(HasSubstr("hvm: "))) << locale;
    EXPECT_THAT(terminal.answer("1 \xFF 2"), HasSubstr("error: ")) << locale;
    EXPECT_THAT(terminal.answer("len(\"\xC2\x9B\")"), ::testing::AllOf(HasSubstr(report), HasSubstr("\r\n1\r\n")));
  }
}

TEST(Repl, NilIsShown_UnlessACallIsMadeForWhatItDoes) {
  Prompt terminal;
  terminal.expect_answers({{"t = []"},
                           {"fn quiet() t[0] = 1 end"},
                           {"nil", "\r\nnil\r\n"},
                           {"t[\"absent\"]", "\r\nnil\r\n"},
                           {"find(\"a\", \"b\")", "\r\nnil\r\n"},
                           {"toy_nothing()", "\r\n(no value)\r\n"}});
  for (const char* quiet : {"quiet()", "append(t, 2)", "assert(1)", "x = nil"})
    EXPECT_THAT(terminal.answer(quiet), Not(::testing::ContainsRegex("\r\n(nil|.no value.)\r\n"))) << quiet;
}

TEST(Repl, TheLastValueShown_IsAVariable) {
  Prompt terminal;
  terminal.expect_answers(
      {{"_", "error: there is no variable '_'"}, {"20 + 1"}, {"_ * 2", "\r\n42\r\n"}, {"nil"}, {"_", "\r\n42\r\n"}});
}

TEST(Repl, WhatIsLong_IsShortened) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer("\"\xCF\x80\" * 100000"), HasSubstr("\xCF\x80\"... (100000 characters)\r\n"));
  const std::string table = terminal.answer("range(100000)");
  EXPECT_THAT(table, HasSubstr("...] (100000 entries)\r\n"));
  EXPECT_LT(table.size(), 4000u);
  EXPECT_THAT(terminal.answer("\"a\" * 400"), Not(HasSubstr("...")));
}

TEST(Repl, Arrays_StandInColumnsThatFitTheTerminal) {
  TerminalConditions conditions;
  conditions.columns = 30;
  Prompt terminal(conditions);
  EXPECT_THAT(terminal.answer("toy_int(3)"), HasSubstr("\r\nint(3) [0, 1, 2]\r\n"));
  EXPECT_THAT(terminal.answer("toy_int(3, 4)"), HasSubstr("\r\nint(3, 4)\r\n"
                                                          "[[0, 1,  2,  3],\r\n"
                                                          " [4, 5,  6,  7],\r\n"
                                                          " [8, 9, 10, 11]]\r\n"));
  EXPECT_THAT(terminal.answer("toy_int(12)"), HasSubstr("\r\nint(12)\r\n"
                                                        "[ 0,  1,  2,  3,  4,  5,  6,\r\n"
                                                        "  7,  8,  9, 10, 11]\r\n"));
  EXPECT_THAT(terminal.answer("print(toy_int(3, 4))"), HasSubstr("\r\nint(3, 4) [[0, 1, 2, 3], ["));
}

TEST(Repl, Colours_AreForTerminalsThatTakeThem) {
  const auto error_in = [](const char* type, const char* no_colour) {
    TerminalConditions conditions;
    conditions.type = type;
    conditions.environment = {{"NO_COLOR", no_colour}};
    Prompt terminal(conditions);
    terminal.type("x = )\n");
    return terminal.wait_for("expected");
  };
  EXPECT_THAT(error_in("xterm", ""), HasSubstr("\x1b[1;31merror:\x1b[0m"));
  EXPECT_THAT(error_in("xterm", "1"), Not(HasSubstr("\x1b[1;31m")));
  EXPECT_THAT(error_in("dumb", ""), Not(HasSubstr("\x1b")));
  EXPECT_THAT(error_in("", ""), Not(HasSubstr("\x1b")));
}

TEST(Scripts, AtATerminal_HaveErrorsAndWarningsInColour) {
  const auto shown_by = [](const std::string& script, const char* no_colour) {
    TerminalConditions conditions;
    conditions.type = "xterm";
    conditions.environment = {{"NO_COLOR", no_colour}};
    conditions.arguments = {"-e", script};
    Terminal terminal(conditions);
    return terminal.wait_for("^");
  };
  EXPECT_THAT(shown_by("x = )", ""), HasSubstr("<command line>:1:5: \x1b[1;31merror:\x1b[0m "));
  EXPECT_THAT(shown_by("a = toy_double(3); 5 - a", ""), HasSubstr("\x1b[1;33mwarning:\x1b[0m 5 - a computes a - 5"));
  EXPECT_THAT(shown_by("x = )", "1"), Not(HasSubstr("\x1b[1;31m")));
  EXPECT_THAT(shown_by("a = toy_double(3); 5 - a", "1"), Not(HasSubstr("\x1b[1;33m")));
  EXPECT_THAT(shown_by("x = \"\x1b[2J\" + )", ""), Not(HasSubstr("\x1b[2J"))) << "the script's own do not come through";
}

TEST(Repl, Warnings_AreColoured) {
  TerminalConditions conditions;
  conditions.type = "xterm";
  Prompt terminal(conditions);
  terminal.type("a = toy_double(3); b = 5 - a\n");
  EXPECT_THAT(terminal.wait_for("computes"), HasSubstr("\x1b[1;33mwarning:\x1b[0m"));
}

TEST(Repl, StatementsWhoseValueIsShown_AreNotUnused) {
  TerminalConditions conditions;
  conditions.module = module_path("arrayfold");
  Prompt terminal(conditions);
  terminal.answer("a = xarange(3)");
  EXPECT_THAT(terminal.answer("xsort(a)"), Not(HasSubstr("warning")));
}

using PromptInLittleMemory = LimitedMemory;

TEST_F(PromptInLittleMemory, WhatFindsNone_EndsOnlyItsOwnInput) {
  const Workplace place;
  std::filesystem::resize_file(place.write("large.hvm", ""), std::uintmax_t{3} << 30);
  TerminalConditions conditions = in_folder(place);
  conditions.module = module_path("arrayfold");
  conditions.memory = std::size_t{256} << 20;
  Prompt terminal(conditions);
  terminal.expect_answers(
      {{"x = 5; t = []"},
       {":load large.hvm", "error: large.hvm: out of memory while the script is read\r\n"},
       {"for n in [100000, 20000] do try while 1 do t = [t, \"a\" * n] end catch e print(e) end end", "out of memory"},
       {"help(xnorm)", "error: out of memory\r\n"},
       {"x", "\r\n5\r\n"},
       {"t = 0"},
       {"help(xnorm)", "xnorm(a)"}});
}

TEST(Repl, InputsAreCountedOnce) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer("1 / 0"), HasSubstr("<input 1>"));
  terminal.answer("1 +", "\n... ");
  EXPECT_THAT(terminal.answer(")"), HasSubstr("<input 2>"));
  EXPECT_THAT(terminal.answer("1 / 0"), HasSubstr("<input 3>"));
}

}  // namespace
}  // namespace hvm::testing
