// refhost/cli/prompt_interruption_test.cpp: Ctrl-C at the prompt

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Repl, CtrlC_DropsALineAndABlock) {
  Prompt terminal;
  terminal.type("x = 1 +\x03");
  terminal.wait_for("\n> ");
  terminal.answer("while 1", "\n... ");
  terminal.type("x = 5\x03");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("<input 1>:1:1: error: there is no variable 'x'"));
  EXPECT_THAT(terminal.answer("1 + 1"), HasSubstr("\r\n2\r\n"));
}

TEST(Repl, CtrlC_EndsWhatRunsAndKeepsTheVariables) {
  Prompt terminal;
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
    const std::string shown = terminal.interrupt(row.input);
    EXPECT_THAT(shown, HasSubstr(row.report)) << row.input;
    EXPECT_THAT(shown, HasSubstr("error: interrupted")) << row.input;
    EXPECT_THAT(shown, Not(HasSubstr("\r\ncaught"))) << row.input;
  }
  EXPECT_THAT(terminal.answer("kept"), HasSubstr("\r\n7\r\n"));
  terminal.type("\x04");
  EXPECT_EQ(terminal.exit_status(), 0);
}

TEST(Repl, CtrlC_NamesTheCallsThatLedThere) {
  Prompt terminal;
  terminal.answer("fn spin() while 1 do end end");
  EXPECT_THAT(terminal.interrupt("spin()"), HasSubstr("in spin, called at <input 2>:1:1"));
}

TEST(Repl, CtrlC_InAUsedScriptNamesTheUse) {
  const Workplace place;
  place.write("loop.hvm", "x = 1\nwhile x\n  x += 1L\nend\n");
  Prompt terminal(in_folder(place));
  const std::string shown = terminal.interrupt("use \"loop.hvm\"");
  EXPECT_THAT(shown, HasSubstr("loop.hvm:"));
  EXPECT_THAT(shown, HasSubstr("error: interrupted"));
  EXPECT_THAT(shown, HasSubstr("used at <input 1>:1"));
}

TEST(Repl, CtrlC_InACallOfTheModuleWaitsAndSaysSo) {
  Prompt terminal;
  terminal.answer("x = 3");
  terminal.type("toy_wait(2000)\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  terminal.wait_for("waiting for toy_wait to return; press Ctrl-C again to end hvm");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n3\r\n"));
}

TEST(Repl, CtrlC_AgainInACallOfTheModuleEndsHvm) {
  Prompt terminal;
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

/// Makes a pipe in the folder of a test, and gives its path.
std::string make_pipe(const Workplace& place, const std::string& name) {
  const std::string path = place.path() + "/" + name;
  EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
  return path;
}

TEST(Repl, CtrlC_EndsTheWaitingForTheOtherEndOfAPipe) {
  const Workplace place;
  make_pipe(place, "pipe.hvm");
  Prompt terminal(in_folder(place));
  terminal.answer("kept = 7");
  for (const std::string input : {":load pipe.hvm", ":save pipe.hvm", "read_text(\"pipe.hvm\")", "use \"pipe.hvm\"",
                                  "write_text(\"pipe.hvm\", \"text\")", "read_csv(\"pipe.hvm\")"}) {
    EXPECT_THAT(terminal.interrupt(input), HasSubstr("error: interrupted")) << input;
  }
  EXPECT_THAT(terminal.answer("kept"), HasSubstr("\r\n7\r\n"));
}

TEST(Repl, CtrlC_EndsTheWritingToAPipeThatIsFull) {
  const Workplace place;
  const std::string pipe = make_pipe(place, "pipe");
  const int reader = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  Prompt terminal(in_folder(place));
  EXPECT_THAT(terminal.interrupt("write_text(\"pipe\", \"a\" * 10000000)"),
              HasSubstr("<input 1>:1:1: error: interrupted"));
  close(reader);
}

TEST(Repl, Pipes_AreReadAndWrittenWhenTheOtherEndComes) {
  const Workplace place;
  const std::string pipe = make_pipe(place, "pipe");
  Prompt terminal(in_folder(place));
  terminal.type(":load pipe\n");
  terminal.wait_until_it_runs();
  std::ofstream(pipe) << "x = 41\n";
  terminal.wait_for("\n> ");
  terminal.type("write_text(\"pipe\", str(x + 1) + \"a\" * 1000000)\n");
  terminal.wait_until_it_runs();
  const std::string written = contents(pipe);
  EXPECT_EQ(written.substr(0, 3), "42a");
  EXPECT_EQ(written.size(), 1000002u);
  terminal.wait_for("\n> ");
}

TEST(Repl, CtrlC_EndsADrawingWithoutHarm) {
  const Workplace place;
  const std::string path = place.write("gnuplot", "#!/bin/sh\nsleep 60\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  TerminalConditions conditions;
  conditions.environment = {{"PATH", place.path() + ":/usr/bin:/bin"}};
  Prompt terminal(conditions);
  terminal.type("plot([1, 2])\n");
  terminal.wait_until_it_runs();
  usleep(200000);
  terminal.press("\x03");
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("<input 1>:1:1: error: interrupted"));
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, CtrlC_EndsTheReadingOfAPipe) {
  const Workplace place;
  const std::string pipe = make_pipe(place, "pipe");
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  Prompt terminal(in_folder(place));
  EXPECT_THAT(terminal.interrupt("read_text(\"pipe\")"), HasSubstr("<input 1>:1:1: error: interrupted"));
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
  Prompt terminal(in_folder(place));
  EXPECT_THAT(terminal.interrupt("while 1 do read_csv(\"large.csv\") end"),
              HasSubstr("<input 1>:1:12: error: interrupted"));
}

TEST(Repl, ASignalBetweenTwoInputs_ChangesNothing) {
  Prompt terminal;
  terminal.answer("x = 3");
  terminal.wait_until_it_reads();
  terminal.send(SIGINT);
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n3\r\n"));
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

}  // namespace
}  // namespace hvm::testing
