// cli/options.cpp: the options of hvm, one row for each

#include "cli/options.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>

#include "script/module/array_module.hpp"
#include "script/text/number_reading.hpp"

namespace hvm {
namespace {

using Form = OptionValue::Form;
using Group = OptionGroup;
using Tasks = std::vector<Task>;

const Tasks scripts = {Task::run, Task::test};
const Tasks tests = {Task::test, Task::conformance};
// Also where it changes nothing: whoever has an alias with such an option can give it always.
const Tasks everything = {Task::run,           Task::test,         Task::conformance, Task::list,
                          Task::list_warnings, Task::show_version, Task::complete};

// ---- Kinds of options. `names` is `-e`, `--test` or `-h, --help`.

Option named(const std::string& names, Group group, Tasks tasks, std::string meaning) {
  const std::size_t comma = names.find(", ");
  const bool has_both = comma != std::string::npos;
  const bool is_letter = !has_both && names.size() == 2;
  Option option;
  option.letter = has_both ? names.substr(0, comma) : is_letter ? names : "";
  option.name = has_both ? names.substr(comma + 2) : is_letter ? "" : names;
  option.group = group;
  option.tasks = std::move(tasks);
  option.meaning = std::move(meaning);
  return option;
}

/// Makes an option choose what hvm does.
Option choosing(Task chosen, Option option) {
  option.chooses = chosen;
  option.store = [chosen, store = std::move(option.store)](Settings& settings, const std::string& value) {
    settings.task = chosen;
    return store(settings, value);
  };
  return option;
}

Option flag(const std::string& names, Group group, Tasks tasks, bool Settings::*field, std::string meaning) {
  Option option = named(names, group, std::move(tasks), std::move(meaning));
  option.store = [field](Settings& settings, const std::string&) { return settings.*field = true; };
  return option;
}

Option task(const std::string& names, Group group, Task chosen, std::string meaning) {
  Option option = named(names, group, {chosen}, std::move(meaning));
  option.store = [](Settings&, const std::string&) { return true; };
  return choosing(chosen, std::move(option));
}

/// Any text; `terms` says what it is.
template <class Field>
Option text(const std::string& names, const char* word, Group group, Tasks tasks, Field Settings::*field,
            const char* terms, std::string meaning) {
  Option option = named(names, group, std::move(tasks), std::move(meaning));
  option.value = OptionValue{word, terms, Form::text, {}};
  option.store = [field](Settings& settings, const std::string& value) { return settings.*field = value, true; };
  return option;
}

/// The name of a file.
Option file(const std::string& names, const char* word, Group group, Tasks tasks, std::string Settings::*field,
            std::string meaning) {
  Option option = text(names, word, group, std::move(tasks), field, "the name of a file", std::move(meaning));
  option.value->form = Form::file;
  option.store = [field](Settings& settings, const std::string& value) {
    settings.*field = value;
    return !value.empty();
  };
  return option;
}

/// `off, on or error`
std::string alternatives(const std::vector<std::string>& words) {
  const std::vector<std::string> first(words.begin(), words.end() - 1);
  return fmt::format("{} or {}", fmt::join(first, ", "), words.back());
}

/// One of at least two words.
Option choice(const std::string& names, const char* word, Group group, Tasks tasks, std::string Settings::*field,
              const std::vector<std::string>& choices, std::string meaning) {
  Option option = named(names, group, std::move(tasks), std::move(meaning));
  option.value = OptionValue{word, alternatives(choices), Form::choice, choices};
  option.store = [=](Settings& settings, const std::string& value) {
    settings.*field = value;
    return std::find(choices.begin(), choices.end(), value) != choices.end();
  };
  return option;
}

/// A number from `least` to `most`; `unit` is its unit in the plural.
Option number(const std::string& names, const char* word, Group group, Tasks tasks, double Settings::*field,
              double least, double most, const char* unit, std::string meaning) {
  Option option = named(names, group, std::move(tasks), std::move(meaning));
  option.value = OptionValue{word, fmt::format("{} from {:.0f} to {:.0f}", unit, least, most), Form::text, {}};
  option.store = [=](Settings& settings, const std::string& value) {
    const double x = spelled_number(value).real;
    settings.*field = x;
    return x >= least && x <= most;  // false for NaN, which stands for what is no number
  };
  return option;
}

/// A whole number from `least` to `most`.
Option count(const std::string& names, const char* word, Group group, Tasks tasks, std::size_t Settings::*field,
             std::int64_t least, std::int64_t most, std::string meaning) {
  Option option = named(names, group, std::move(tasks), std::move(meaning));
  option.value = OptionValue{word, fmt::format("a whole number from {} to {}", least, most), Form::text, {}};
  option.store = [=](Settings& settings, const std::string& value) {
    const SpelledNumber number = spelled_number(value);
    settings.*field = static_cast<std::size_t>(number.integer);
    return number.kind == SpelledNumber::Kind::integer && number.integer >= least && number.integer <= most;
  };
  return option;
}

/// Lets a count also be `off`, which stands for 0.
Option or_off(Option option) {
  option.value->terms += " or off";
  option.store = [store = std::move(option.store)](Settings& settings, const std::string& value) {
    return store(settings, value == "off" ? "0" : value);
  };
  return option;
}

/// Gives an option a meaning only beside another one.
Option beside(const char* other, Option option) {
  option.needs = other;
  return option;
}

}  // namespace

const std::vector<Option>& options() {
  // clang-format off
  static const std::vector<Option> rows = {
      text("-e", "CODE", Group::scripts, {Task::run}, &Settings::code, "code", "run this code"),
      flag("-i", Group::scripts, {Task::run}, &Settings::stays, "stay at a prompt after the script or CODE"),
      flag("--unchecked", Group::scripts, scripts, &Settings::is_unchecked,
           "leave out the checks that the module itself does not make"),
      flag("--leaks", Group::scripts, scripts, &Settings::counts_leaks,
           "count what is not released at the end; the exit status is 1 if there is anything"),
      flag("--explain", Group::scripts, {Task::run}, &Settings::explains,
           "explain in detail warnings, and the error that ends a script"),
      choice("--warnings", "MODE", Group::scripts, scripts, &Settings::warnings, {"off", "on", "error"},
             "report warnings (on, the default), do not look for them (off), or make errors of them (error); with --test, "
             "error fails a script at a warning that no comment expects"),
      file("--trace", "FILE", Group::scripts, {Task::run}, &Settings::trace_path,
           "write each call of the module to a file, as a line of JSON; - is the standard error"),
      beside("--trace",
             or_off(count("--trace-operations", "COUNT", Group::scripts, {Task::run}, &Settings::trace_operations, 0,
                          999999999,
                          fmt::format("the most operations of the host that the trace lists for a call: {} by default, "
                                      "or off", Trace::most_operations_by_default)))),
      or_off(count("--keep-memory", "MIB", Group::scripts, scripts, &Settings::kept_memory, 0, 2047,
                   fmt::format("how much memory of freed arrays stays with the process for the next ones, in MiB: {} by "
                               "default, off for as much as the C library keeps", kept_memory_by_default))),

      task("--test", Group::tests, Task::test, "run scripts as tests: files, and every *.hvm below folders"),
      task("--conformance", Group::tests, Task::conformance,
           "compare the module with a table of calls and the operations of the host that they perform, run the script "
           "tests that come with hvm, and name the functions that differ"),
      text("--filter", "PATTERN", Group::tests, tests, &Settings::filter, "a shell pattern",
           "run only the scripts whose path below the folder contains a match of this shell pattern; * also matches /; "
           "with --conformance also calls, as of calls/xsum/1"),
      flag("-v, --verbose", Group::tests, tests, &Settings::is_verbose,
           "show how each script ended and how long it took, and list the slowest ones; with --conformance show all "
           "differences of each function"),
      file("--json", "FILE", Group::tests, {Task::conformance}, &Settings::json_path,
           "write what --conformance found into a file, as JSON"),
      file("--junit", "FILE", Group::tests, {Task::test}, &Settings::junit_path,
           "write the results into a JUnit file, for programs of continuous integration"),
      count("--jobs", "COUNT", Group::tests, tests, &Settings::jobs, 1, 1000,
            "the most scripts that run at the same time: by default, the number of processors"),
      number("--time-limit", "SECONDS", Group::tests, tests, &Settings::time_limit, 0, 1e6, "seconds",
             "the time that each script or call may take: 60 by default, 0 for no limit"),

      task("--list", Group::module, Task::list,
           "list the functions and types of the module, or those that match shell patterns"),
      file("--module", "PATH", Group::module, everything, &Settings::module_path,
           fmt::format("the module; otherwise {} beside hvm, where it is installed with hvm, or in ../lib", array_module_file)),

      task("--list-warnings", Group::information, Task::list_warnings, "list all warnings and their pages"),
      task("-V, --version", Group::information, Task::show_version,
           "show the version, the processor's vector instructions, the module and its libraries"),
      choosing(Task::complete,
               choice("--completion", "SHELL", Group::information, {Task::complete}, &Settings::shell, {"bash", "zsh"},
                      "write the file with which bash or zsh completes the command lines of hvm")),
      task("-h, --help", Group::information, Task::show_help, "show this help"),
  };
  // clang-format on
  return rows;
}

}  // namespace hvm
