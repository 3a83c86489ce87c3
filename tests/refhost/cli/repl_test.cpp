// refhost/cli/repl_test.cpp: the prompt at a pseudo-terminal

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

/// hvm at a terminal of its own.
class Terminal {
 public:
  /// `locale` is the user's, null for that of the test. Throws when there is no terminal, which ends the test.
  explicit Terminal(const char* locale = nullptr) {
    const std::string module = module_path("toy_module");
    child_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (child_ < 0) throw std::system_error(errno, std::generic_category(), "there is no pseudo-terminal");
    if (child_ == 0) {
      setenv("TERM", "dumb", 1);
      if (locale) setenv("LC_ALL", locale, 1);
      execl(HVM_PROGRAM, HVM_PROGRAM, "--module", module.c_str(), nullptr);
      _exit(127);
    }
  }
  ~Terminal() {
    close(terminal_);
    if (is_running_) {
      kill(child_, SIGKILL);
      waitpid(child_, nullptr, 0);
    }
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Waits until the terminal shows `text`, and forgets all up to there. Gives what it forgot.
  std::string wait_for(const std::string& text) {
    std::size_t at = std::string::npos;
    while ((at = shown_.find(text)) == std::string::npos) {
      pollfd waiting{terminal_, POLLIN, 0};
      char bytes[4096];
      const bool has_more = poll(&waiting, 1, 20000) == 1;
      const ssize_t count = has_more ? read(terminal_, bytes, sizeof(bytes)) : 0;
      if (count <= 0) {
        ADD_FAILURE() << "waited for " << text << ", but the terminal shows: " << shown_;
        return shown_;
      }
      shown_.append(bytes, static_cast<std::size_t>(count));
    }
    const std::string before = shown_.substr(0, at + text.size());
    shown_.erase(0, at + text.size());
    return before;
  }

  /// Types at the prompt. The line editor shows its prompt a moment before it takes over the terminal, and an end of
  /// file in that moment would be the terminal's own and get lost.
  void type(const std::string& text) {
    ASSERT_TRUE(comes_true([this] {
      termios settings = {};
      return tcgetattr(terminal_, &settings) == 0 && (settings.c_lflag & ICANON) == 0;
    })) << "the line editor does not take over the terminal";
    ASSERT_EQ(write(terminal_, text.data(), text.size()), ssize_t(text.size()));
  }

  /// Types a line at the prompt, and gives what is shown up to the next prompt.
  std::string answer(const std::string& line, const std::string& next_prompt = "\n> ") {
    type(line + "\n");
    return wait_for(next_prompt);
  }

  int exit_status() {
    int status = 0;
    is_running_ = !comes_true([&] { return waitpid(child_, &status, WNOHANG) == child_; });
    if (is_running_) return ADD_FAILURE() << "hvm does not end", -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  /// Asks again and again, for at most twenty seconds.
  template <class Condition>
  static bool comes_true(Condition condition) {
    for (int i = 0; i < 20000; ++i) {
      if (condition()) return true;
      usleep(1000);
    }
    return false;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  bool is_running_ = true;
  std::string shown_;
};

TEST(Repl, ShowsValuesSurvivesErrorsAndEndsAtTheEndOfFile) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("x = 20"), ::testing::Not(HasSubstr("\r\n20")));
  EXPECT_THAT(terminal.answer("x + 1"), HasSubstr("\r\n21\r\n"));
  EXPECT_THAT(terminal.answer("\"te\" + \"xt\""), HasSubstr("\r\n\"text\"\r\n"));
  EXPECT_THAT(terminal.answer("x / 0"), HasSubstr("<input 4>:1:3: error: '/' by the integer zero"));
  EXPECT_THAT(terminal.answer("x ="), HasSubstr("error: an expression expected"));
  EXPECT_THAT(terminal.answer("toy_fail()"), HasSubstr("error: toy_fail: the call failed"));
  EXPECT_THAT(terminal.answer("toy_nothing()"), ::testing::Not(HasSubstr("nil")));
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
    Terminal terminal(locale);
    terminal.wait_for("> ");
    EXPECT_THAT(terminal.answer("\"<\xCF\x80>\""), HasSubstr("\r\n\"<\xCF\x80>\"\r\n")) << locale;
    EXPECT_THAT(terminal.answer("len(w\"\xCF\x80\xE4\xB8\xAD\")"), HasSubstr("\r\n2\r\n")) << locale;
  }
}

TEST(Repl, Why_TellsTheStoryOfTheLastError) {
  Terminal terminal;
  terminal.wait_for("> ");
  EXPECT_THAT(terminal.answer("why"), HasSubstr("nothing has failed"));
  EXPECT_THAT(terminal.answer("toy_fail(toy_int(3))"), ::testing::Not(HasSubstr("arguments")));
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
