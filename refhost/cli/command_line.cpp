// cli/command_line.cpp: reading the command line of hvm

#include "cli/command_line.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>

#include "cli/safe_text.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

// ---- Finding options

const Option* option_of(std::string_view spelling) {
  for (const Option& option : options())
    if (!spelling.empty() && (spelling == option.letter || spelling == option.name)) return &option;
  return nullptr;
}

/// The option that chooses a task; null for running a script.
const Option* chooser_of(Task task) {
  for (const Option& option : options())
    if (option.chooses == task) return &option;
  return nullptr;
}

/// ` (did you mean '--jobs'?)`, or nothing: the only name that begins like this, or the most similar one.
std::string suggested_option(std::string_view wrong) {
  std::vector<std::string_view> names;
  std::vector<std::string_view> longer;
  for (const Option& option : options()) {
    const std::string_view name = option.name;
    if (!name.empty()) names.push_back(name);
    if (wrong.size() > 2 && begins_with(name, wrong)) longer.push_back(name);
  }
  if (longer.size() == 1) return fmt::format(" (did you mean '{}'?)", longer.front());
  return suggestion(wrong, names);
}

[[noreturn]] void fail_unknown(std::string_view wrong) {
  throw UsageError(
      fmt::format("there is no option {}{}; hvm --help lists them", briefly(wrong), suggested_option(wrong)));
}

// ---- Reading

class CommandLine {
 public:
  explicit CommandLine(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  Settings read() {
    while (!is_at_end() && settings_.task != Task::show_help) take(arguments_[next_++]);
    if (settings_.task != Task::show_help) check();
    return std::move(settings_);
  }

 private:
  struct Given {
    const Option* option;
    std::string spelling;
  };

  bool is_at_end() const { return next_ == arguments_.size(); }

  void take(const std::string& argument) {
    if (argument == "--") return take_rest();
    if (begins_with(argument, "--")) return take_name(argument);
    if (argument.size() > 1 && argument[0] == '-') return take_letters(argument);
    settings_.rest.push_back(argument);
    if (settings_.task == Task::run) take_rest();
  }

  void take_rest() {
    const auto behind = arguments_.begin() + static_cast<std::ptrdiff_t>(next_);
    settings_.rest.insert(settings_.rest.end(), behind, arguments_.end());
    next_ = arguments_.size();
  }

  /// `--name`, `--name VALUE` or `--name=VALUE`.
  void take_name(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const Option* const option = option_of(name);
    if (!option) fail_unknown(name);
    if (equals == std::string::npos) return give(*option, name);
    if (!option->value) throw UsageError(fmt::format("{} takes no value", name));
    store(*option, name, argument.substr(equals + 1));
  }

  /// `-a`, `-a VALUE`, `-aVALUE`, and `-ab` for letters without values.
  void take_letters(const std::string& argument) {
    for (std::size_t at = 1; at < argument.size(); ++at) {
      const std::string letter = {'-', argument[at]};
      const Option* const option = option_of(letter);
      if (!option) fail_unknown(argument);
      const bool is_last = at + 1 == argument.size();
      if (option->value && !is_last) return store(*option, letter, argument.substr(at + 1));
      give(*option, letter);
    }
  }

  /// Takes the value, if there must be one, from the next argument.
  void give(const Option& option, const std::string& spelling) {
    if (option.value && is_at_end()) throw UsageError(fmt::format("{} needs {}", spelling, option.value->terms));
    store(option, spelling, option.value ? arguments_[next_++] : std::string());
  }

  void store(const Option& option, const std::string& spelling, const std::string& value) {
    if (is_given(option) && option.value) throw UsageError(fmt::format("{} is given twice", spelling));
    given_.push_back({&option, spelling});
    const bool is_other_task = option.chooses && chooser_ && chooser_->chooses != option.chooses;
    if (is_other_task && option.chooses != Task::show_help) fail_together(spelling);
    if (option.chooses) chooser_ = &option;
    if (!option.store(settings_, value))
      throw UsageError(fmt::format("{} takes {}, not \"{}\"", spelling, option.value->terms, briefly(value)));
  }

  // ---- When everything is read

  void check() const {
    for (const Given& given : given_) check_task(given);
    const Task task = settings_.task;
    const bool takes_none = task == Task::conformance || task == Task::list_warnings || task == Task::show_version ||
                            task == Task::complete;
    if (takes_none && !settings_.rest.empty())
      throw UsageError(fmt::format("{} takes no arguments, but got \"{}\"", chooser_->shown_name(),
                                   briefly(settings_.rest.front())));
    if (settings_.task == Task::test && settings_.rest.empty()) throw UsageError("--test needs files or folders");
  }

  void check_task(const Given& given) const {
    const std::vector<Task>& tasks = given.option->tasks;
    const bool is_right = std::find(tasks.begin(), tasks.end(), settings_.task) != tasks.end();
    if (!is_right && chooser_) fail_together(given.spelling);
    if (!is_right) fail_alone(given.spelling, chooser_of(tasks.front())->shown_name());
    const std::string& needed = given.option->needs;
    if (!needed.empty() && !is_given(*option_of(needed))) fail_alone(given.spelling, needed);
  }

  bool is_given(const Option& option) const {
    return std::any_of(given_.begin(), given_.end(), [&](const Given& given) { return given.option == &option; });
  }

  [[noreturn]] static void fail_alone(const std::string& spelling, const std::string& needed) {
    throw UsageError(fmt::format("{} needs {}", spelling, needed));
  }

  [[noreturn]] void fail_together(const std::string& spelling) const {
    throw UsageError(fmt::format("{} cannot be combined with {}", spelling, chooser_->shown_name()));
  }

  const std::vector<std::string>& arguments_;
  std::size_t next_ = 0;
  Settings settings_;
  std::vector<Given> given_;
  const Option* chooser_ = nullptr;  // of the task
};

// ---- Help

constexpr std::size_t help_width = 80;
constexpr std::size_t meanings_column = 26;

const char* heading(OptionGroup group) {
  switch (group) {
    case OptionGroup::scripts:
      return "Scripts";
    case OptionGroup::tests:
      return "Tests";
    case OptionGroup::module:
      return "The module";
    case OptionGroup::information:
      return "About hvm";
  }
  return "";
}

/// `-V, --version` or `    --module PATH`.
std::string spellings(const Option& option) {
  std::string text = option.letter.empty() ? "    " : option.letter;
  if (!option.letter.empty() && !option.name.empty()) text += ", ";
  text += option.name;
  return option.value ? text + " " + option.value->word : text;
}

/// `left`, and from `meanings_column` on the words of `meaning`, in as many lines as they need.
std::string help_row(const std::string& left, const std::string& meaning) {
  std::string text = "  " + left;
  std::size_t column = text.size();
  if (column + 2 > meanings_column) text += "\n", column = 0;
  text.append(meanings_column - column, ' ');
  column = meanings_column;
  std::istringstream words(meaning);
  bool is_first = true;
  for (std::string word; words >> word; is_first = false) {
    const bool fits = is_first || column + 1 + word.size() <= help_width;
    if (!fits) text += "\n" + std::string(meanings_column, ' '), column = meanings_column;
    if (!is_first && fits) text += " ", ++column;
    text += word, column += word.size();
  }
  return text + "\n";
}

}  // namespace

Settings read_command_line(const std::vector<std::string>& arguments) { return CommandLine(arguments).read(); }

std::string help_text() {
  std::string text =
      "hvm: runs scripts over a module\n\n"
      "  hvm [OPTION...] SCRIPT [ARGUMENT...]\n"
      "  hvm [OPTION...] -e CODE [ARGUMENT...]\n"
      "  hvm [OPTION...] --test PATH...\n"
      "  hvm [OPTION...] --conformance\n"
      "  hvm [OPTION...] --list [PATTERN...]\n\n"
      "Without a script hvm reads one from the standard input; at a terminal it is a\n"
      "prompt. The script - is the standard input. Options end at --.\n";
  for (const OptionGroup group :
       {OptionGroup::scripts, OptionGroup::tests, OptionGroup::module, OptionGroup::information}) {
    text += fmt::format("\n{}:\n", heading(group));
    for (const Option& option : options())
      if (option.group == group) text += help_row(spellings(option), option.meaning);
  }
  return text +
         "\nExit status: 0, or what the script gives to exit; 1 after a script error, a\n"
         "failed test, for a module that does not conform, or when the output cannot be\n"
         "written; 2 for wrong usage; 3 when the module cannot be loaded.\n";
}

}  // namespace hvm
