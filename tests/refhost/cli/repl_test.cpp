// refhost/cli/repl_test.cpp: the prompt at a pseudo-terminal

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Repl, ShowsValuesSurvivesErrorsAndEndsAtTheEndOfFile) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("x = 20"), Not(HasSubstr("\r\n20")));
  EXPECT_THAT(terminal.answer("x + 1"), HasSubstr("\r\n21\r\n"));
  EXPECT_THAT(terminal.answer("\"te\" + \"xt\""), HasSubstr("\r\n\"text\"\r\n"));
  EXPECT_THAT(terminal.answer("x / 0"), HasSubstr("<input 4>:1:3: error: '/' by the integer zero"));
  EXPECT_THAT(terminal.answer("x ="), HasSubstr("error: an expression expected"));
  EXPECT_THAT(terminal.answer("toy_fail()"), HasSubstr("error: toy_fail: the call failed"));
  EXPECT_THAT(terminal.answer("toy_nothing()"), Not(HasSubstr("nil")));
  EXPECT_THAT(terminal.answer("print(toy_int(2))"), HasSubstr("\r\nint(2) [0, 1]\r\n"));
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n20\r\n"));
  terminal.type("\x04");
  EXPECT_EQ(terminal.exit_status(), 0);
}

TEST(Repl, Exit_EndsItWithAStatus) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("x = 3");
  terminal.type("exit(x)\r");
  EXPECT_EQ(terminal.exit_status(), 3);
}

TEST(Repl, OpenBlocksAndBrackets_GoOnInTheNextLine) {
  Terminal terminal;
  terminal.wait_for("> ");
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
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("n = 2");
  terminal.answer("q = @double(\"text\",", "\n... ");
  terminal.answer("n + 1)");
  EXPECT_THAT(terminal.answer("q"), HasSubstr("\r\n<code>\r\n"));
  terminal.answer("toy_count(q, @[[1.0,", "\n... ");
  terminal.answer("2.0],", "\n... ");
  EXPECT_THAT(terminal.answer("[3.0, 4.0]])"), HasSubstr("\r\n2\r\n"));
}

TEST(Repl, HistoryBringsALineBack) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
  terminal.type("\x10");  // the line before, as the arrow up does
  EXPECT_THAT(terminal.answer("0"), HasSubstr("\r\n60\r\n"));
}

TEST(Repl, CharactersBeyondAscii_ArriveInAnyLocale) {
  for (const char* locale : {"C", "C.UTF-8", "no_SUCH.locale"}) {
    TerminalConditions conditions;
    conditions.locale = locale;
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    EXPECT_THAT(terminal.answer("\"<\xCF\x80>\""), HasSubstr("\r\n\"<\xCF\x80>\"\r\n")) << locale;
    EXPECT_THAT(terminal.answer("len(w\"\xCF\x80\xE4\xB8\xAD\")"), HasSubstr("\r\n2\r\n")) << locale;
  }
}

// ---- Ctrl-C

TEST(Repl, CtrlC_DropsALineAndABlock) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.type("x = 1 +\x03");
  terminal.wait_for("\n> ");
  terminal.answer("while 1", "\n... ");
  terminal.type("x = 5\x03");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("<input 1>:1:1: error: there is no variable 'x'"));
  EXPECT_THAT(terminal.answer("1 + 1"), HasSubstr("\r\n2\r\n"));
}

TEST(Repl, CtrlC_EndsWhatRunsAndKeepsTheVariables) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("kept = 7");
  terminal.answer("fn spin(n)", "\n... ");
  terminal.answer("while n > 0", "\n... ");
  terminal.answer("n += 1L", "\n... ");
  terminal.answer("end", "\n... ");
  terminal.answer("end");
  terminal.answer("fn deep(n) deep(n + 1) end");
  const struct {
    const char* input;
    const char* report;
  } rows[] = {
      {"while 1 do end", "<input 4>:1:1: error: interrupted"},
      {"for i in range(2000000000) do kept = 7 end", ": error: interrupted"},
      {"spin(1)", "<input 2>:"},
      {"try spin(1) catch e print(\"caught\") end", ": error: interrupted"},
      {"while 1 do try deep(1) catch e end end", ": error: interrupted"},
      {"while 1 do toy_count(1) end", ": error: interrupted"},
      {"while 1 do range(10000000) end", ": error: interrupted"},
      {"sort(range(9000000))", ": error: interrupted"},
  };
  for (const auto& row : rows) {
    terminal.type(std::string(row.input) + "\n");
    terminal.wait_until_it_runs();
    terminal.press("\x03");
    const std::string shown = terminal.wait_for("\n> ");
    EXPECT_THAT(shown, HasSubstr(row.report)) << row.input;
    EXPECT_THAT(shown, HasSubstr("error: interrupted")) << row.input;
    EXPECT_THAT(shown, Not(HasSubstr("\r\ncaught"))) << row.input;
  }
  EXPECT_THAT(terminal.answer("kept"), HasSubstr("\r\n7\r\n"));
  terminal.type("\x04");
  EXPECT_EQ(terminal.exit_status(), 0);
}

TEST(Repl, CtrlC_NamesTheCallsThatLedThere) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("fn spin() while 1 do end end");
  terminal.type("spin()\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("in spin, called at <input 2>:1:1"));
}

TEST(Repl, CtrlC_InACallOfTheModuleWaitsAndSaysSo) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("x = 3");
  terminal.type("toy_wait(2000)\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  terminal.wait_for("waiting for toy_wait to return; press Ctrl-C again to end hvm");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n3\r\n"));
}

TEST(Repl, CtrlC_AgainInACallOfTheModuleEndsHvm) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.type("toy_wait(60000)\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  usleep(50000);
  terminal.press("\x03");
  terminal.wait_for("press Ctrl-C again to end hvm");
  terminal.press("\x03");  // of a key that is held down
  usleep(800000);
  terminal.press("\x03");
  EXPECT_EQ(terminal.exit_status(), -1);
  EXPECT_EQ(terminal.ending_signal(), SIGINT);
}

TEST(Repl, CtrlC_TwiceEndsHvmWhereACommandWaitsForAPipe) {
  for (const std::string command : {":load pipe", ":save pipe"}) {
    const Workplace place;
    ASSERT_EQ(mkfifo((place.path() + "/pipe").c_str(), 0600), 0);
    TerminalConditions conditions;
    conditions.folder = place.path();
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.type(command + "\n");
    terminal.wait_until_it_runs();
    terminal.press("\x03");
    terminal.wait_for("press Ctrl-C again to end hvm");
    usleep(800000);
    terminal.press("\x03");
    EXPECT_EQ(terminal.exit_status(), -1) << command;
    EXPECT_EQ(terminal.ending_signal(), SIGINT) << command;
  }
}

TEST(Repl, CtrlC_EndsADrawingWithoutHarm) {
  const Workplace place;
  const std::string path = place.write("gnuplot", "#!/bin/sh\nsleep 60\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  TerminalConditions conditions;
  conditions.environment = {{"PATH", place.path() + ":/usr/bin:/bin"}};
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.type("plot([1, 2])\n");
  terminal.wait_until_it_runs();
  usleep(200000);
  terminal.press("\x03");
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("<input 1>:1:1: error: interrupted"));
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, CtrlC_EndsTheReadingOfAPipe) {
  const Workplace place;
  ASSERT_EQ(mkfifo((place.path() + "/pipe").c_str(), 0600), 0);
  const int writer = open((place.path() + "/pipe").c_str(), O_RDWR | O_CLOEXEC);
  TerminalConditions conditions;
  conditions.folder = place.path();
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.type("read_text(\"pipe\")\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("<input 1>:1:1: error: interrupted"));
  close(writer);
}

TEST(Repl, CtrlC_EndsAScriptWithoutAPrompt) {
  TerminalConditions conditions;
  conditions.arguments = {"-e", "print(7)\ntry\nwhile 1 do end\ncatch e\nend"};
  Terminal terminal(conditions);
  terminal.wait_for("7");
  terminal.press("\x03");
  EXPECT_EQ(terminal.exit_status(), -1);
  EXPECT_EQ(terminal.ending_signal(), SIGINT);
}

TEST(Repl, CtrlC_EndsTheReadingOfALargeFile) {
  const Workplace place;
  std::string rows = "a,b\n";
  while (rows.size() < (std::size_t{64} << 20)) rows += "1.5,\"text\"\n2.5,3\n";
  place.write("large.csv", rows);
  TerminalConditions conditions;
  conditions.folder = place.path();
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.type("while 1 do read_csv(\"large.csv\") end\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("<input 1>:1:12: error: interrupted"));
}

TEST(Repl, ASignalBetweenTwoInputs_ChangesNothing) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("x = 3");
  terminal.wait_until_it_reads();
  terminal.send(SIGINT);
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n3\r\n"));
}

// ---- What is shown

TEST(Repl, NilIsShown_UnlessACallIsMadeForWhatItDoes) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("t = []");
  terminal.answer("fn quiet() t[0] = 1 end");
  EXPECT_THAT(terminal.answer("nil"), HasSubstr("\r\nnil\r\n"));
  EXPECT_THAT(terminal.answer("t[\"absent\"]"), HasSubstr("\r\nnil\r\n"));
  EXPECT_THAT(terminal.answer("find(\"a\", \"b\")"), HasSubstr("\r\nnil\r\n"));
  EXPECT_THAT(terminal.answer("toy_nothing()"), HasSubstr("\r\n(no value)\r\n"));
  for (const char* quiet : {"quiet()", "append(t, 2)", "assert(1)", "x = nil"})
    EXPECT_THAT(terminal.answer(quiet), Not(::testing::ContainsRegex("\r\n(nil|.no value.)\r\n"))) << quiet;
}

TEST(Repl, TheLastValueShown_IsAVariable) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("_"), HasSubstr("error: there is no variable '_'"));
  terminal.answer("20 + 1");
  EXPECT_THAT(terminal.answer("_ * 2"), HasSubstr("\r\n42\r\n"));
  terminal.answer("nil");
  EXPECT_THAT(terminal.answer("_"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, WhatIsLong_IsShortened) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("\"\xCF\x80\" * 100000"), HasSubstr("\xCF\x80\"... (100000 characters)\r\n"));
  const std::string table = terminal.answer("range(100000)");
  EXPECT_THAT(table, HasSubstr("...] (100000 entries)\r\n"));
  EXPECT_LT(table.size(), 4000u);
  EXPECT_THAT(terminal.answer("\"a\" * 400"), Not(HasSubstr("...")));
}

TEST(Repl, Arrays_StandInColumnsThatFitTheTerminal) {
  TerminalConditions conditions;
  conditions.columns = 30;
  Terminal terminal(conditions);
  terminal.wait_for("> ");
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
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.type("x = )\n");
    return terminal.wait_for("expected");
  };
  EXPECT_THAT(error_in("xterm", ""), HasSubstr("\x1b[1;31merror:\x1b[0m"));
  EXPECT_THAT(error_in("xterm", "1"), Not(HasSubstr("\x1b[1;31m")));
  EXPECT_THAT(error_in("dumb", ""), Not(HasSubstr("\x1b")));
  EXPECT_THAT(error_in("", ""), Not(HasSubstr("\x1b")));
}

TEST(Repl, InputsAreCountedOnce) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("1 / 0"), HasSubstr("<input 1>"));
  terminal.answer("1 +", "\n... ");
  EXPECT_THAT(terminal.answer(")"), HasSubstr("<input 2>"));
  EXPECT_THAT(terminal.answer("1 / 0"), HasSubstr("<input 3>"));
}

// ---- Words and commands

TEST(Repl, TheFirstLine_NamesVersionAndHelp) {
  Terminal terminal;
  EXPECT_THAT(terminal.wait_for("> "), ::testing::MatchesRegex("hvm [0-9.]+, type help for help\r\n> "));
}

TEST(Repl, ExitAndQuit_AreWordsOfTheirOwn) {
  for (const char* word : {"exit", "quit", " quit() "}) {
    Terminal terminal;
    terminal.wait_for("> ");
    terminal.type(std::string(word) + "\n");
    EXPECT_EQ(terminal.exit_status(), 0) << word;
  }
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("quit = 5");
  EXPECT_THAT(terminal.answer("quit"), HasSubstr("\r\n5\r\n"));
}

TEST(Repl, Help_TellsOfFunctionsKeywordsAndTopics) {
  Terminal terminal;
  terminal.wait_for("> ");
  const std::string topics = terminal.answer("help");
  EXPECT_THAT(topics, HasSubstr("help(name)"));
  EXPECT_LT(std::count(topics.begin(), topics.end(), '\n'), 24);
  EXPECT_THAT(terminal.answer("help(round)"), HasSubstr("  round(x, digits)\r\nGives the nearest whole number"));
  EXPECT_THAT(terminal.answer("help while"), HasSubstr("  while c\r\n"));
  EXPECT_THAT(terminal.answer("help(reshape)"), HasSubstr("docs/functions/method-reshape.md"));
  EXPECT_THAT(terminal.answer("help(\":time\")"), HasSubstr(":time STATEMENT"));
  EXPECT_THAT(terminal.answer("help(functions)"), HasSubstr("toy_count"));
  EXPECT_THAT(terminal.answer("help(prnt)"), HasSubstr("There is no help on 'prnt' (did you mean 'print'?)"));
  terminal.answer("# the area", "\n> ");
  terminal.answer("fn area(w, h)  # of a field", "\n... ");
  terminal.answer("return w * h", "\n... ");
  terminal.answer("end");
  EXPECT_THAT(terminal.answer("help(area)"), HasSubstr("  area(w, h)\r\n"));
  EXPECT_THAT(terminal.answer("help(transpose)"), HasSubstr("It comes with use \"arrays\".\r\n  transpose(a)\r\n"));
  terminal.answer("help = 3");
  EXPECT_THAT(terminal.answer("help"), HasSubstr("\r\n3\r\n"));
}

TEST(Repl, TimeAndVars_TellOfStatementsAndVariables) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer(":time x = 3"), ::testing::ContainsRegex("\r\n[0-9.]+ (us|ms)\r\n"));
  EXPECT_THAT(terminal.answer(":time for i in range(3)", "\n... "), Not(HasSubstr("ms")));
  EXPECT_THAT(terminal.answer("end"), ::testing::ContainsRegex("\r\n[0-9.]+ (us|ms)\r\n"));
  terminal.answer("table = [1, 2]");
  terminal.answer("a = toy_int(2, 3)");
  terminal.answer("text = \"a\" * 60");
  const std::string shown = terminal.answer(":vars");
  EXPECT_THAT(shown, HasSubstr("\r\nx      3\r\n"));
  EXPECT_THAT(shown, HasSubstr("\r\ntable  a table of 2 entries\r\n"));
  EXPECT_THAT(shown, HasSubstr("(2, 3)\r\n"));
  EXPECT_THAT(shown, HasSubstr("... (60 characters)\r\n"));
  EXPECT_THAT(terminal.answer(":nothing"), HasSubstr("error: there is no command :nothing"));
  EXPECT_THAT(terminal.answer(":load"), HasSubstr("error: it is written :load FILE"));
}

TEST(Repl, LoadAndSave_TakeScripts) {
  const Workplace place;
  const std::string script = place.write("area.hvm", "fn area(w, h) return w * h end\nscale = 2\n");
  TerminalConditions conditions;
  conditions.folder = place.path();
  {
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.answer(":load area.hvm");
    EXPECT_THAT(terminal.answer("area(2, 3) * scale"), HasSubstr("\r\n12\r\n"));
    terminal.answer("half = _ / 2");
    terminal.answer("half / 0");
    EXPECT_THAT(terminal.answer(":save all.hvm"), HasSubstr("saved in all.hvm"));
    EXPECT_THAT(terminal.answer(":save /no/such/folder/x.hvm"), HasSubstr("error: /no/such/folder/x.hvm"));
    EXPECT_THAT(terminal.answer(":load absent.hvm"), HasSubstr("error: "));
  }
  std::ifstream file(place.path() + "/all.hvm");
  const std::string saved{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(saved,
            "fn area(w, h) return w * h end\nscale = 2\n"
            "_ = area(2, 3) * scale\n"
            "half = _ / 2\n");
  EXPECT_EQ(run_toy({place.path() + "/all.hvm"}).status, 0);
}

TEST(Repl, TheOptionI_StaysAfterAScript) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.arguments = {"-i", place.write("script.hvm", "x = 5\ny = x / 0\n")};
  Terminal terminal(conditions);
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("script.hvm:2:7: error: '/' by the integer zero"));
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n5\r\n"));
  EXPECT_EQ(run_toy({"-i", "-e", "1"}).status, 2);
}

TEST(Repl, TheOptionI_InterruptsTheScript) {
  TerminalConditions conditions;
  conditions.arguments = {"-i", "-e", "x = 5; print(x); while 1 do end"};
  Terminal terminal(conditions);
  terminal.wait_for("\n5");
  terminal.press("\x03");
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("error: interrupted"));
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n5\r\n"));
}

// ---- Completion

TEST(Repl, Tab_CompletesNamesMethodsAndKeywords) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("distance = 7");
  EXPECT_THAT(terminal.answer("dist\t + 1"), HasSubstr("\r\n8\r\n"));
  EXPECT_THAT(terminal.answer("toy_cou\t1, 2)"), HasSubstr("\r\n2\r\n"));
  terminal.answer("a = toy_int(2)");
  EXPECT_THAT(terminal.answer("a.sh\t)"), HasSubstr("\r\n[2]\r\n"));
  terminal.answer("whi\t 0", "\n... ");
  terminal.answer("\tend");
  EXPECT_THAT(terminal.answer("print(toy_n\t))"), HasSubstr("\r\nnil\r\n"));
  EXPECT_THAT(terminal.answer("print(toy_zz\t)"), HasSubstr("there is no variable 'toy_zz'"));
  EXPECT_THAT(terminal.answer("help(toy_fa\t"), HasSubstr("  toy_fail("));
}

TEST(Repl, Tab_ShowsSeveralMatches) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.type("toy_end\t");
  EXPECT_THAT(terminal.wait_for("toy_end_with"), HasSubstr("\ntoy_end       toy_end_with"));
  terminal.wait_for("\n> toy_end");
  terminal.type("\x03");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("# toy_en\t1"), Not(HasSubstr("toy_end")));
}

TEST(Repl, Tab_InQuotesCompletesFiles) {
  const Workplace place;
  place.write("data/measurements.csv", "a\n1\n");
  place.write("odd\x01name.csv", "");
  TerminalConditions conditions;
  conditions.folder = place.path();
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("read_csv(\"da\tmea\t)"), HasSubstr("[\"a\": [1]]"));
  EXPECT_THAT(terminal.answer("len(\"odd\t\")"), HasSubstr("\r\n3\r\n"));
  EXPECT_THAT(terminal.answer("use \"arr\t"), Not(HasSubstr("error")));
  place.write("two words.hvm", "words = 2\n");
  terminal.answer(":load \"two\t");
  EXPECT_THAT(terminal.answer("words"), HasSubstr("\r\n2\r\n"));
}

// ---- History

TEST(Repl, History_OutlivesTheSession) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.state = place.path();
  {
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.answer("fn twice(n)", "\n... ");
    terminal.answer("return n * 2", "\n... ");
    terminal.answer("end");
    terminal.answer("text = \"\\\\n \xCF\x80\"");
    terminal.type("\x04");
    EXPECT_EQ(terminal.exit_status(), 0);
  }
  struct stat status = {};
  ASSERT_EQ(stat((place.path() + "/hvm/history").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.type("\x10\n");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("text"), HasSubstr("\r\n\"\\\\n \xCF\x80\"\r\n"));
  terminal.type("\x10\x10\x10\n");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("twice(4)"), HasSubstr("\r\n8\r\n"));
}

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Repl, History_TakesTheInputsOfTwoSessions) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.state = place.path();
  Terminal first(conditions);
  Terminal second(conditions);
  first.wait_for("> ");
  second.wait_for("> ");
  first.answer("1");
  second.answer("2");
  first.answer("3");
  EXPECT_EQ(contents(place.path() + "/hvm/history"), "1\n2\n3\n");
}

TEST(Repl, History_KeepsTheLatestInputs) {
  const Workplace place;
  std::string inputs;
  for (int i = 0; i < 5000; ++i) inputs += std::to_string(i) + "\n";
  place.write("hvm/history", inputs);
  TerminalConditions conditions;
  conditions.state = place.path();
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.answer("7");
  const std::string kept = contents(place.path() + "/hvm/history");
  EXPECT_EQ(kept.substr(0, 5), "4000\n");
  EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 1001);
}

TEST(Repl, History_IsWhereTheUserWantsIt) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.state = place.path() + "/state";
  conditions.environment = {{"HVM_HISTORY", place.path() + "/mine"}};
  {
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.answer("1");
    EXPECT_EQ(contents(place.path() + "/mine"), "1\n");
  }
  conditions.environment = {{"HVM_HISTORY", ""}};
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.answer("1");
  EXPECT_FALSE(std::filesystem::exists(place.path() + "/state"));
}

TEST(Repl, AHistoryThatCannotBeWritten_IsToldOnce) {
  const Workplace place;
  place.write("closed", "");
  TerminalConditions conditions;
  conditions.environment = {{"HVM_HISTORY", place.path() + "/closed/history"}};
  Terminal terminal(conditions);
  std::string shown = terminal.wait_for("> ");
  shown += terminal.answer("1") + terminal.answer("2");
  const std::size_t first = shown.find("the history is not kept");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(shown.find("the history is not kept", first + 1), std::string::npos);
}

TEST(Repl, AHistoryOfAnyBytes_DoesNoHarm) {
  const Workplace place;
  std::string bytes = "1 + 1\n\n\\";
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  bytes += "\n" + std::string(3 << 20, 'x');
  place.write("hvm/history", bytes);
  TerminalConditions conditions;
  conditions.state = place.path();
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
}

// ---- The session

TEST(Repl, InputsOfASessionThatEndsInAFault_AreOffered) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.state = place.path();
  {
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.answer("x = 41");
    terminal.answer("x + 1");
    terminal.type("toy_end(\"segv\")\n");
    terminal.exit_status();
  }
  std::string path;
  {
    Terminal terminal(conditions);
    const std::string shown = terminal.wait_for("\n> ");
    const std::string words = "A session did not come to its end; its inputs are in ";
    ASSERT_THAT(shown, HasSubstr(words));
    const std::size_t begin = shown.find(words) + words.size();
    path = shown.substr(begin, shown.find('\r', begin) - begin);
    EXPECT_EQ(contents(path), "x = 41\nx + 1\n");
    terminal.answer(":load " + path);
    EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n41\r\n"));
    terminal.type("exit\n");
    EXPECT_EQ(terminal.exit_status(), 0);
  }
  Terminal terminal(conditions);
  EXPECT_THAT(terminal.wait_for("> "), Not(HasSubstr("session")));
}

TEST(Repl, ASessionThatRuns_IsNotOfferedToAnother) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.state = place.path();
  Terminal first(conditions);
  first.wait_for("> ");
  first.answer("x = 1");
  Terminal second(conditions);
  EXPECT_THAT(second.wait_for("> "), Not(HasSubstr("session")));
}

// ---- Terminals that are not as usual

TEST(Repl, ATerminalThatGoesAway_EndsHvm) {
  for (const bool ignores : {false, true}) {
    const Workplace place;
    TerminalConditions conditions;
    conditions.state = place.path();
    conditions.ignores_hangup = ignores;
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.answer("x = 1");
    terminal.go_away();
    terminal.exit_status();
    Terminal next(conditions);
    EXPECT_THAT(next.wait_for("\n> "), HasSubstr("A session did not come to its end")) << ignores;
  }
}

TEST(Repl, AnyTerminal_TakesInputs) {
  for (const char* type : {"", "dumb", "no-such-terminal", "xterm"})
    for (const unsigned short columns : {0, 1, 2, 10, 80, 60000}) {
      TerminalConditions conditions;
      conditions.type = type;
      conditions.columns = columns;
      Terminal terminal(conditions);
      terminal.wait_for(">");
      // The keys of an editor are for windows in which there is one.
      const bool is_edited = columns == 0 || columns >= 10;
      const std::string keys = is_edited ? "to\t\x03" : "";
      const std::string words = "x = toy_int(2, 3)\nx\n" + keys + "help\nprint(7000 + 77)\n";
      is_edited ? terminal.type(words) : terminal.press(words);
      terminal.wait_for("7077");
      is_edited ? terminal.type("exit\n") : terminal.press("exit\n");
      EXPECT_EQ(terminal.exit_status(), 0) << type << " " << columns;
    }
}

TEST(Repl, KeysInATinyWindow_DoNoHarm) {
  TerminalConditions conditions;
  conditions.type = "xterm";
  conditions.columns = 3;
  conditions.lines = 5;
  Terminal terminal(conditions);
  terminal.wait_for(">");
  for (int i = 0; i < 20; ++i) terminal.press("\xF0\x9F\x98\x80\x19(x\x0C help \x02\x08\x1B[D\x1B[C\x14\t\x05\x7F\n");
  terminal.press("\nprint(7000 + 77)\n");
  terminal.wait_for("7077");
}

TEST(Repl, PastedMegabytes_Arrive) {
  Terminal terminal;
  terminal.wait_for("> ");
  std::string block = "t = [\n";
  for (int i = 0; i < 100000; ++i) block += "  " + std::to_string(i) + ",\n";
  terminal.type(block + "]\nlen(t)\n");
  terminal.wait_for("\r\n100000\r\n");
  EXPECT_THAT(terminal.answer("t[99999]"), HasSubstr("\r\n99999\r\n"));
}

TEST(Repl, TabsInPastedText_AreNoRequests) {
  TerminalConditions conditions;
  conditions.type = "xterm";
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.type("distance = 1\n");
  terminal.wait_for("> ");
  terminal.type("\x1b[200~dis\t= 40\ndis\t+\t2\n\x1b[201~");
  terminal.wait_for("42\r\n");
  terminal.type("dist\t + 776\n");
  terminal.wait_for("777\r\n");
}

TEST(Repl, ALongPastedLine_Arrives) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.type("s = \"" + std::string(200000, 'x') + "\"\nlen(s)\n");
  terminal.wait_for("\r\n200000\r\n");
}

TEST(Repl, ControlCharacters_DoNoHarm) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("\"\\x1b[2J\\x07\\0\""), HasSubstr("\r\n\"\\x1b[2J\\x07\\x00\"\r\n"));
  terminal.type("\x80\xFF\x1B[Z\x1B[99~\x16\x01\x05\x0B\x15\x03");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, Why_TellsTheStoryOfTheLastError) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("why"), HasSubstr("nothing has failed"));
  EXPECT_THAT(terminal.answer("toy_fail(toy_int(3))"), Not(HasSubstr("arguments")));
  EXPECT_THAT(terminal.answer("  why "), HasSubstr("argument 1: $xintarray (3): 0, 1, 2"));
  EXPECT_THAT(terminal.answer("unknown + 1"), HasSubstr("error:"));
  EXPECT_THAT(terminal.answer("why"), HasSubstr("there is no more to say of: "));
}

TEST(Repl, Why_IsAVariableWhereThereIsOne) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("toy_fail()");
  terminal.answer("why = 42");
  EXPECT_THAT(terminal.answer("why"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, Why_InALongerInput_IsPartOfIt) {
  Terminal terminal;
  terminal.wait_for("> ");
  terminal.answer("x = [1,", "\n... ");
  terminal.answer("why", "\n... ");
  EXPECT_THAT(terminal.answer("]"), HasSubstr("error: "));
}

}  // namespace
}  // namespace hvm::testing
