// cli/options.hpp: the options of hvm, one row for each
//
// The rows are read by the command line, by --help and by the files that complete a command line in a shell.

#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/kept_memory.hpp"
#include "script/module/trace.hpp"

namespace hvm {

/// What hvm does.
enum class Task { run, test, conformance, list, list_warnings, show_version, show_help, complete };

/// What a command line asks for.
struct Settings {
  Task task = Task::run;
  std::optional<std::string> code;
  std::string filter;
  bool is_verbose = false;
  std::string junit_path;
  std::string json_path;
  std::size_t jobs = 0;    // 0: as many as there are processors
  double time_limit = 60;  // seconds
  std::string module_path;
  std::string shell;  // of `complete`
  bool is_unchecked = false;
  bool counts_leaks = false;
  bool stays = false;  // at a prompt after the script
  bool explains = false;
  std::string warnings = "on";
  std::string trace_path;
  std::size_t kept_memory = kept_memory_by_default;  // in MiB
  std::size_t trace_operations = Trace::most_operations_by_default;
  /// The script and its arguments, the arguments of -e, the paths of --test, the patterns of --list.
  std::vector<std::string> rest;
};

/// What an option takes.
struct OptionValue {
  enum class Form { text, file, choice };
  std::string word;   // in --help, such as CODE
  std::string terms;  // in error messages, such as `seconds from 0 to 1000000`
  Form form = Form::text;
  std::vector<std::string> choices;  // of the form `choice`
};

/// The headings of --help, in their order.
enum class OptionGroup { scripts, tests, module, information };

struct Option {
  std::string letter;  // such as -e; empty for none
  std::string name;    // such as --test; empty for none
  std::string meaning;
  OptionGroup group = OptionGroup::scripts;
  std::vector<Task> tasks;      // what it goes with
  std::optional<Task> chooses;  // what hvm does because of it
  std::string needs;            // the name of an option without which it has no meaning; empty for none
  std::optional<OptionValue> value;
  /// Stores the value, empty for an option without one. Returns false for a value that is not what the option takes.
  std::function<bool(Settings&, const std::string&)> store;

  /// The name, or the letter when there is none.
  const std::string& shown_name() const { return name.empty() ? letter : name; }
};

/// All options, in the order of --help.
const std::vector<Option>& options();

}  // namespace hvm
