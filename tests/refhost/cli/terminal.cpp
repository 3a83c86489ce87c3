// refhost/cli/terminal.cpp: hvm at a terminal of its own

#include "terminal.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

namespace hvm::testing {
namespace {

/// Asks again and again, for at most twenty seconds.
template <class Condition>
bool comes_true(Condition condition) {
  for (int i = 0; i < 20000; ++i) {
    if (condition()) return true;
    usleep(1000);
  }
  return false;
}

/// The child becomes hvm.
[[noreturn]] void become_hvm(const TerminalConditions& conditions, const std::string& state) {
  if (conditions.type.empty())
    unsetenv("TERM");
  else
    setenv("TERM", conditions.type.c_str(), 1);
  if (!conditions.locale.empty()) setenv("LC_ALL", conditions.locale.c_str(), 1);
  setenv("XDG_STATE_HOME", state.c_str(), 1);
  for (const char* name : {"HVM_HISTORY", "NO_COLOR", "COLUMNS", "LINES"}) unsetenv(name);
  for (const auto& [name, value] : conditions.environment) setenv(name.c_str(), value.c_str(), 1);
  if (!conditions.folder.empty() && chdir(conditions.folder.c_str()) != 0) _exit(127);
  if (conditions.obeys_permissions) drop_rights_of_root();
  limit(RLIMIT_AS, conditions.memory);
  if (conditions.ignores_hangup) signal(SIGHUP, SIG_IGN);
  const std::string module = conditions.module.empty() ? module_path("toy_module") : conditions.module;
  std::vector<char*> words{const_cast<char*>(HVM_PROGRAM), const_cast<char*>("--module"),
                           const_cast<char*>(module.c_str())};
  for (const std::string& argument : conditions.arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(HVM_PROGRAM, words.data());
  _exit(127);
}

}  // namespace

TerminalConditions in_folder(const Workplace& place) {
  TerminalConditions conditions;
  conditions.folder = place.path();
  return conditions;
}

TerminalConditions with_history_in(const Workplace& place) {
  TerminalConditions conditions;
  conditions.state = place.path();
  return conditions;
}

Terminal::Terminal(const TerminalConditions& conditions) {
  const std::string state = conditions.state.empty() ? place_.path() : conditions.state;
  const winsize size{conditions.lines, conditions.columns, 0, 0};
  child_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (child_ < 0) throw std::system_error(errno, std::generic_category(), "there is no pseudo-terminal");
  if (child_ == 0) become_hvm(conditions, state);
}

Terminal::~Terminal() {
  if (terminal_ >= 0) close(terminal_);
  if (!is_running_) return;
  kill(child_, SIGKILL);
  waitpid(child_, nullptr, 0);
}

std::string Terminal::wait_for(const std::string& text) {
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

bool Terminal::is_editing() const {
  termios settings = {};
  return tcgetattr(terminal_, &settings) == 0 && (settings.c_lflag & ICANON) == 0;
}

void Terminal::type(const std::string& text) {
  ASSERT_TRUE(comes_true([this] { return is_editing(); })) << "the line editor does not take over the terminal";
  std::size_t typed = 0;
  while (typed < text.size()) {
    // hvm shows what is typed, and waits when nobody reads that.
    pollfd waiting{terminal_, POLLIN | POLLOUT, 0};
    ASSERT_EQ(poll(&waiting, 1, 20000), 1) << "the terminal takes no more";
    if (waiting.revents & POLLIN) {
      char bytes[4096];
      const ssize_t count = read(terminal_, bytes, sizeof(bytes));
      ASSERT_GT(count, 0);
      shown_.append(bytes, static_cast<std::size_t>(count));
    }
    if ((waiting.revents & POLLOUT) == 0) continue;
    const ssize_t count = write(terminal_, text.data() + typed, std::min<std::size_t>(text.size() - typed, 512));
    ASSERT_GT(count, 0);
    typed += static_cast<std::size_t>(count);
  }
}

void Terminal::press(const std::string& text) const {
  ASSERT_EQ(write(terminal_, text.data(), text.size()), ssize_t(text.size()));
}

std::string Terminal::answer(const std::string& line, const std::string& next_prompt) {
  type(line + "\n");
  return wait_for(next_prompt);
}

std::string Terminal::interrupt(const std::string& line) {
  type(line + "\n");
  wait_until_it_runs();
  press("\x03");
  return wait_for("\n> ");
}

void Terminal::wait_until_it_runs() const {
  ASSERT_TRUE(comes_true([this] { return !is_editing(); })) << "nothing runs";
  usleep(50000);
}

char Terminal::state() const {
  std::ifstream file("/proc/" + std::to_string(child_) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t name_end = line.rfind(')');
  return name_end != std::string::npos && name_end + 2 < line.size() ? line[name_end + 2] : '\0';
}

void Terminal::wait_until_it_reads() const {
  ASSERT_TRUE(comes_true([this] { return is_editing() && state() == 'S'; })) << "nothing waits for a line";
}

void Terminal::wait_until_it_stops() const {
  ASSERT_TRUE(comes_true([this] { return state() == 'T'; })) << "nothing stops";
}

void Terminal::edit_lines_itself() const {
  termios settings = {};
  ASSERT_EQ(tcgetattr(terminal_, &settings), 0);
  settings.c_lflag |= ICANON | ECHO | ISIG;
  ASSERT_EQ(tcsetattr(terminal_, TCSANOW, &settings), 0);
}

void Terminal::resize(unsigned short columns) const {
  const winsize size{24, columns, 0, 0};
  ASSERT_EQ(ioctl(terminal_, TIOCSWINSZ, &size), 0);
}

void Terminal::go_away() {
  close(terminal_);
  terminal_ = -1;
}

void Terminal::send(int signal) const { kill(child_, signal); }

int Terminal::exit_status() {
  int status = 0;
  is_running_ = !comes_true([&] { return waitpid(child_, &status, WNOHANG) == child_; });
  if (is_running_) return ADD_FAILURE() << "hvm does not end", -1;
  signal_ = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Prompt::Prompt(const TerminalConditions& conditions) : Terminal(conditions) { wait_for("> "); }

void Prompt::expect_answers(const std::vector<Exchange>& exchanges) {
  for (const Exchange& each : exchanges)
    EXPECT_THAT(answer(each.input), ::testing::HasSubstr(each.shown)) << each.input;
}

}  // namespace hvm::testing
