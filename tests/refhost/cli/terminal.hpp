// refhost/cli/terminal.hpp: hvm at a terminal of its own

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "program.hpp"

namespace hvm::testing {

/// Where and how hvm runs.
struct TerminalConditions {
  std::string locale;           // the user's; empty: that of the test
  std::string type = "dumb";    // empty: the terminal says nothing of itself
  unsigned short columns = 80;  // 0: the terminal does not say
  unsigned short lines = 24;
  std::vector<std::string> arguments;                            // beside the module
  std::string module;                                            // empty: the toy module
  std::vector<std::pair<std::string, std::string>> environment;  // what is added to it
  std::string folder;                                            // in which it runs; empty: that of the test
  std::string state;                                             // of the history; empty: a folder for this run alone
  std::size_t memory = 0;                                        // of its addresses, in bytes; 0: any
  bool obeys_permissions = false;                                // also when root runs the test
  bool ignores_hangup = false;
};

/// A run in the folder of a test.
TerminalConditions in_folder(const Workplace& place);
/// A run whose history lies in the folder of a test, with those of its other runs.
TerminalConditions with_history_in(const Workplace& place);

/// hvm at a pseudo-terminal.
class Terminal {
 public:
  /// Throws when there is no terminal, which ends the test.
  explicit Terminal(const TerminalConditions& conditions = {});
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Waits until the terminal shows `text`, and forgets all up to there. Gives what it forgot.
  std::string wait_for(const std::string& text);
  /// Types at the prompt. The line editor shows its prompt a moment before it takes over the terminal, and an end of
  /// file in that moment would be the terminal's own and get lost.
  void type(const std::string& text);
  /// Types while something runs.
  void press(const std::string& text) const;
  /// Types a line at the prompt, and gives what is shown up to the next prompt.
  std::string answer(const std::string& line, const std::string& next_prompt = "\n> ");
  /// Types a line at the prompt, ends what it runs by Ctrl-C, and gives what is shown up to the next prompt.
  std::string interrupt(const std::string& line);
  /// Waits until something runs that a typed line has begun.
  void wait_until_it_runs() const;
  /// Waits until hvm waits for a line.
  void wait_until_it_reads() const;

  /// Waits until hvm is stopped.
  void wait_until_it_stops() const;

  /// Takes the terminal out of the hands of the line editor.
  void edit_lines_itself() const;
  /// Changes the width of the terminal.
  void resize(unsigned short columns) const;
  /// Takes the terminal away.
  void go_away();
  /// Ends hvm by a signal.
  void send(int signal) const;
  pid_t id() const { return child_; }

  /// Waits for the end. -1 when a signal ended it, which `ending_signal` then gives.
  int exit_status();
  int ending_signal() const { return signal_; }

 private:
  bool is_editing() const;
  /// As the system tells it: S for a process that sleeps, T for one that is stopped.
  char state() const;

  Workplace place_;
  int terminal_ = -1;
  pid_t child_ = -1;
  bool is_running_ = true;
  int signal_ = 0;
  std::string shown_;
};

/// hvm at a pseudo-terminal, waiting for the first input.
class Prompt : public Terminal {
 public:
  explicit Prompt(const TerminalConditions& conditions = {});

  struct Exchange {
    std::string input;
    std::string shown = {};  // among other text; empty: whatever comes
  };
  /// Types one input after the other, and compares what is shown.
  void expect_answers(const std::vector<Exchange>& exchanges);
};

}  // namespace hvm::testing
