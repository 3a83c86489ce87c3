// cli/repl.cpp: the prompt at a terminal

#include "cli/repl.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>

#include "cli/completions.hpp"
#include "cli/help.hpp"
#include "cli/history_file.hpp"
#include "cli/inputs.hpp"
#include "cli/interrupts.hpp"
#include "cli/line_editor.hpp"
#include "cli/safe_text.hpp"
#include "cli/streams.hpp"
#include "cli/terminal.hpp"
#include "script/stop/script_end.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

bool has_terminal() {
  termios settings = {};
  return tcgetattr(STDIN_FILENO, &settings) == 0;
}

bool has_more_to_read() {
  int count = 0;
  return ioctl(STDIN_FILENO, FIONREAD, &count) == 0 && count > 0;
}

std::string folder_of(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return path.empty() || !folder.empty() ? folder : ".";
}

/// A path as a command takes it.
std::string as_typed(const std::string& path) {
  const bool is_plain = path.find_first_of(" \t\"") == std::string::npos;
  return safe_text(is_plain ? path : fmt::format("\"{}\"", path));
}

std::string unquoted(const std::string& path) {
  const bool is_quoted = path.size() > 1 && path.front() == '"' && path.back() == '"';
  return is_quoted ? path.substr(1, path.size() - 2) : path;
}

class Repl {
 public:
  Repl(Interpreter& interpreter, const PromptSettings& settings)
      : interpreter_(interpreter),
        settings_(settings),
        history_(history_path()),
        session_(folder_of(history_path())),
        inputs_(interpreter, session_, settings.explains, [this](const std::string& input) { remember(input); }),
        editor_([&interpreter](std::string_view line) { return completion_of(line, interpreter); }) {}

  void run() {
    try {
      greet();
      if (settings_.script) run_script();
      read_inputs();
    } catch (const ScriptExit&) {
      session_.end();
      throw;
    }
  }

 private:
  void greet() {
    put(fmt::format("hvm {}, type help for help\n", HVM_VERSION));
    for (const std::string& path : session_.lost_sessions())
      put(fmt::format("An earlier session did not end properly. To bring its variables back, type\n  :load {}\n",
                      as_typed(path)));
    for (const std::string& input : history_.read()) editor_.remember(input);
    tell_complaint();
  }

  /// The script of the session gives the arguments itself: it runs without any.
  void run_script() {
    std::string words;
    for (const std::string& argument : settings_.arguments)
      words += (words.empty() ? "" : ", ") + string_literal(argument);
    if (!words.empty()) session_.add({fmt::format("args = [{}]\n", words), IsShown::no});
    inputs_.run_script(settings_.script);
  }

  void tell_complaint() {
    const std::string complaint = history_.complaint();
    if (!complaint.empty()) put_error({"hvm: ", complaint, "\n"});
  }

  void remember(const std::string& input) {
    editor_.remember(input);
    history_.add(input);
    tell_complaint();
  }

  void read_inputs() {
    bool goes_on = true;
    while (goes_on) {
      finish_output();
      const TypedLine line = editor_.read(pending_.empty() ? "> " : "... ");
      if (line.end == TypedLine::End::closed) return close();
      if (line.has_replacements)
        put_error({"hvm: \xEF\xBF\xBD stands for bytes in this line that are not text in UTF-8\n"});
      if (line.end == TypedLine::End::dropped)
        drop();
      else
        goes_on = take_in_memory(line.text);
    }
    session_.end();
  }

  void drop() {
    put("\n");
    forget_pending();
  }

  void forget_pending() {
    pending_.clear();
    read_size_ = 0;
  }

  /// The input has ended. Where the terminal is gone the inputs of the session are kept for the next one.
  void close() {
    if (!has_terminal()) return;
    session_.end();
    put("\n");
    if (!pending_.empty()) inputs_.report_unfinished(pending_);
  }

  /// The variables stay, and may leave no memory for what a line asks. Returns false at the user's wish to leave.
  bool take_in_memory(const std::string& line) {
    try {
      return take(line);
    } catch (const std::bad_alloc&) {
      forget_pending();
      inputs_.tell_error("out of memory");
      return true;
    }
  }

  bool take(const std::string& line) {
    if (pending_.empty()) {
      const std::string words(trimmed(line));
      timing_ = Inputs::Timing::untold;
      if (words.empty()) return true;
      if (is_free("exit") && words == "exit") return remember(words), false;
      if (is_free("quit") && (words == "quit" || words == "quit()")) return remember(words), false;
      if (is_free("why") && words == "why") return remember(words), inputs_.tell_why(), true;
      const auto asked = is_free("help") ? help_asked(words) : std::nullopt;
      if (asked) return remember(words), show_help(*asked), true;
      if (words.front() == ':') return take_command(words), true;
    }
    take_part(line);
    return true;
  }

  /// Help shows comments of scripts, which may hold any characters.
  void show_help(const std::string& name) {
    const Description* known = settings_.description && !name.empty() ? settings_.description->get() : nullptr;
    put(name.empty() ? help_topics() : safe_text(help_on(name, {interpreter_, known, terminal_width()})));
  }

  /// Whether a word has no meaning of the script's own.
  bool is_free(const char* word) const { return !interpreter_.has_global(word) && !interpreter_.fn(word); }

  void take_part(const std::string& line) {
    pending_ += line + "\n";
    // A long block that still comes in is not read again for each of its lines.
    const bool is_long = pending_.size() > long_input && pending_.size() < read_size_ + read_size_ / 8;
    if (is_long && has_more_to_read()) return;
    read_size_ = pending_.size();
    if (inputs_.run(pending_, timing_)) forget_pending();
  }

  // ---- Commands

  void take_command(const std::string& words) {
    const std::size_t end = std::min(words.find_first_of(" \t"), words.size());
    const std::string name = words.substr(0, end);
    const std::string rest(trimmed(std::string_view(words).substr(end)));
    if (name == ":time" && !rest.empty()) {
      timing_ = Inputs::Timing::told;
      return take_part(rest);
    }
    remember(words);
    if (name == ":vars" && rest.empty()) return show_variables();
    if (name == ":load" && !rest.empty()) return inputs_.load(unquoted(rest));
    if (name == ":save" && !rest.empty()) return inputs_.save(unquoted(rest));
    const auto& known = prompt_commands();
    const auto command = std::find_if(known.begin(), known.end(), [&](const auto& each) { return each.name == name; });
    inputs_.tell_error(command == known.end() ? fmt::format("there is no command {}; help(commands) lists them", name)
                                              : fmt::format("write {}", command->usage));
  }

  void show_variables() {
    std::size_t widest = 0;
    for (const std::string& name : interpreter_.globals()) widest = std::max(widest, name.size());
    for (const std::string& name : interpreter_.globals())
      put(fmt::format("{:<{}}  {}\n", name, widest, inputs_.outline(name)));
  }

  static constexpr std::size_t long_input = std::size_t{16} << 10;

  Interpreter& interpreter_;
  const PromptSettings& settings_;
  HistoryFile history_;
  Session session_;
  Inputs inputs_;
  LineEditor editor_;
  Interrupts interrupts_;
  std::string pending_;        // the lines of an input that goes on
  std::size_t read_size_ = 0;  // of what was found to go on
  Inputs::Timing timing_ = Inputs::Timing::untold;
};

}  // namespace

void run_repl(Interpreter& interpreter, const PromptSettings& settings) { Repl(interpreter, settings).run(); }

}  // namespace hvm
