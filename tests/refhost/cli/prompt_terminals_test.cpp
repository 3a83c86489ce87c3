// refhost/cli/prompt_terminals_test.cpp: the prompt at terminals that are not as usual

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Repl, ATerminalThatGoesAway_EndsHvm) {
  for (const bool ignores : {false, true}) {
    const Workplace place;
    TerminalConditions conditions = with_history_in(place);
    conditions.ignores_hangup = ignores;
    Prompt terminal(conditions);
    terminal.answer("x = 1");
    terminal.go_away();
    terminal.exit_status();
    Terminal next(conditions);
    EXPECT_THAT(next.wait_for("\n> "), HasSubstr("An earlier session did not end properly")) << ignores;
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

TEST(Repl, AWindowThatChanges_KeepsTheLine) {
  for (const char* type : {"dumb", "xterm"}) {
    TerminalConditions conditions;
    conditions.type = type;
    Terminal terminal(conditions);
    terminal.wait_for("> ");
    terminal.type("print(70");
    terminal.wait_for("70");
    for (const unsigned short columns : {40, 3, 1, 200, 12}) {
      terminal.resize(columns);
      usleep(50000);
    }
    terminal.type("00 + 77)\n");
    terminal.wait_for("7077\r\n");
    terminal.wait_for("> ");
    terminal.type("exit\n");
    EXPECT_EQ(terminal.exit_status(), 0) << type;
  }
}

TEST(Repl, StoppedTwice_GoesOnWithTheLine) {
  TerminalConditions conditions;
  conditions.type = "xterm";
  Terminal terminal(conditions);
  terminal.wait_for("> ");
  terminal.type("print(70");
  terminal.wait_for("print(70");
  for (int i = 0; i < 2; ++i) {
    terminal.send(SIGSTOP);
    terminal.wait_until_it_stops();
    terminal.edit_lines_itself();  // as a shell leaves it
    terminal.send(SIGCONT);
    terminal.wait_for("print(70");
  }
  terminal.type("00 + 77)\n");
  terminal.wait_for("7077\r\n");
}

// Where no shell could continue it, the system does not stop it.
TEST(Repl, CtrlZ_WithoutAShell_GoesOnWithTheLine) {
  Prompt terminal;
  terminal.type("print(70\x1A");
  terminal.wait_for("print(70");
  terminal.type("00 + 77)\n");
  terminal.wait_for("7077\r\n");
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
  Prompt terminal;
  std::string block = "t = [\n";
  for (int i = 0; i < 100000; ++i) block += "  " + std::to_string(i) + ",\n";
  terminal.type(block + "]\nlen(t)\n");
  terminal.wait_for("\r\n100000\r\n");
  EXPECT_THAT(terminal.answer("t[99999]"), HasSubstr("\r\n99999\r\n"));
}

TEST(Repl, TabsInPastedText_AreNoRequests) {
  TerminalConditions conditions;
  conditions.type = "xterm";
  Prompt terminal(conditions);
  terminal.type("distance = 1\n");
  terminal.wait_for("> ");
  terminal.type("\x1b[200~dis\t= 40\ndis\t+\t2\n\x1b[201~");
  terminal.wait_for("42\r\n");
  terminal.type("dist\t + 776\n");
  terminal.wait_for("777\r\n");
}

TEST(Repl, ALongPastedLine_Arrives) {
  Prompt terminal;
  terminal.type("s = \"" + std::string(200000, 'x') + "\"\nlen(s)\n");
  terminal.wait_for("\r\n200000\r\n");
}

TEST(Repl, ControlCharacters_DoNoHarm) {
  Prompt terminal;
  EXPECT_THAT(terminal.answer("\"\\x1b[2J\\x07\\0\""), HasSubstr("\r\n\"\\x1b[2J\\x07\\x00\"\r\n"));
  terminal.type("\x80\xFF\x1B[Z\x1B[99~\x16\x01\x05\x0B\x15\x03");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
}

TEST(Repl, ControlCharactersInErrors_AreShownSafely) {
  TerminalConditions conditions;
  conditions.type = "xterm";
  Prompt terminal(conditions);
  for (const char* input : {"read_text(\"a\\x1b[31m\")", "error(\"a\\x1b[31m\")", ":load a\x16\x1b[31m"}) {
    terminal.type(std::string(input) + "\n");
    terminal.wait_for("rror");
    const std::string shown = terminal.wait_for("> ");
    EXPECT_THAT(shown, HasSubstr("a\ufffd[31m")) << input;
    EXPECT_THAT(shown, Not(HasSubstr("\x1b[31m"))) << input;
  }
}

}  // namespace
}  // namespace hvm::testing
