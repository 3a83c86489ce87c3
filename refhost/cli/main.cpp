// cli/main.cpp: the program hvm
//
// Exit status: 0, or what the script gives to `exit`; 1 after a script error, a failed test, or when the output cannot
// be written; 2 for wrong usage; 3 when the module cannot be loaded.

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <sstream>

#include "cli/module_loader.hpp"
#include "cli/process_end.hpp"
#include "cli/processor.hpp"
#include "cli/repl.hpp"
#include "cli/streams.hpp"
#include "cli/test_runner.hpp"
#include "script/explain/description.hpp"
#include "script/library/script_end.hpp"
#include "script/library/script_file.hpp"
#include "script/module/array_module.hpp"
#include "script/module/fault_report.hpp"
#include "script/module/trace.hpp"
#include "script/run/interpreter.hpp"

namespace hvm {
namespace {

constexpr double longest_time_limit = 1e6;

enum ExitStatus { done = 0, script_failed = 1, wrong_usage = 2, no_module = 3 };

struct Settings {
  std::string code;
  bool has_code = false;
  std::string test_directory;
  double time_limit = 60;  // seconds
  std::string module_path;
  bool lists = false;
  bool shows_version = false;
  bool is_unchecked = false;
  std::string warnings = "on";
  bool lists_warnings = false;
  bool counts_leaks = false;
  bool explains = false;
  std::string trace_path;
  std::string trace_operations = std::to_string(Trace::most_operations_by_default);
  std::vector<std::string> rest;  // the script and its arguments, or the arguments of -e
};

Value arguments_table(const std::vector<std::string>& arguments) {
  std::vector<Value> values;
  values.reserve(arguments.size());
  for (const std::string& argument : arguments) values.emplace_back(std::string_view(argument));
  return Value::table_of(values);
}

/// The text that fits into the terminal with room for the line above and the prompt below.
TextSize terminal_size() {
  winsize window = {};
  const bool is_known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 1 && window.ws_row > 2;
  return is_known ? TextSize{window.ws_col - 1, window.ws_row - 2} : TextSize{};
}

bool comes_by_standard_input(const Settings& settings) {
  return !settings.has_code && (settings.rest.empty() || settings.rest.front() == "-");
}

WarningMode warning_mode(const Settings& settings) {
  if (settings.warnings == "off") return WarningMode::off;
  return settings.warnings == "error" ? WarningMode::error : WarningMode::on;
}

/// The script that the settings name; null for the REPL.
SourcePtr chosen_source(const Settings& settings) {
  if (settings.has_code) return std::make_shared<SourceText>("<command line>", settings.code);
  if (!comes_by_standard_input(settings)) return read_script(settings.rest.front());
  if (settings.rest.empty() && isatty(STDIN_FILENO)) return nullptr;
  return read_standard_input();
}

/// What is known of the module's functions beside the module itself.
DescriptionReading described_functions(const Module& module) {
  DescriptionReading reading = read_description(module.path, module.functions.names());
  if (!reading.problem.empty()) put_error({"hvm: ", reading.problem, "\n"});
  return reading;
}

/// Why there is no description, in a sentence; empty when there is one.
std::string absence_of(const DescriptionReading& reading) {
  if (reading.description) return {};
  if (!reading.problem.empty()) return reading.problem;
  return fmt::format("there is no description of the module's functions, which would be {}",
                     fmt::join(reading.places, " or "));
}

/// The story of the last error; empty when there is none to tell, or no memory for it.
std::string story_of(const Interpreter& interpreter) {
  try {
    return interpreter.last_explanation().text();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

/// Runs the script that the settings name, or the prompt, and leaves the story of an error in `story`. Throws
/// `ScriptError` and `ScriptExit`.
void run_scripts(const Settings& settings, const Module& module, const DescriptionReading& reading, Trace* trace,
                 std::string& story) {
  const SourcePtr source = chosen_source(settings);
  const std::size_t names = settings.has_code || settings.rest.empty() ? 0 : 1;
  const std::vector<std::string> arguments(settings.rest.begin() + static_cast<std::ptrdiff_t>(names),
                                           settings.rest.end());
  InterpreterOptions options;
  options.has_checks = !settings.is_unchecked;
  options.print = [](const std::string& text, const SourceText&, std::size_t) { put(text + "\n"); };
  options.warn = [&settings](const Warning& warning) {
    const bool tells_story = settings.explains && warning.explanation;
    put_error({warning.report(), tells_story ? warning.explanation->text() : std::string()});
  };
  options.warnings = warning_mode(settings);
  if (comes_by_standard_input(settings)) options.files = FileAccess::without_standard_input;
  options.text_size = terminal_size;
  options.description = reading.description ? &*reading.description : nullptr;
  options.no_description = absence_of(reading);
  options.explains = settings.explains || !source;
  options.trace = trace;
  Interpreter interpreter(module.functions, std::move(options));
  interpreter.set_global("args", arguments_table(arguments));
  if (!source) return run_repl(interpreter, settings.explains);
  try {
    interpreter.run(interpreter.parse(source));
  } catch (const ScriptError&) {
    story = story_of(interpreter);
    throw;
  }
}

/// The exit status of what `run_scripts` runs. An error is reported when the variables of the script are gone, since
/// they may hold all memory.
int status_of_scripts(const Settings& settings, const Module& module, Trace* trace) {
  const DescriptionReading reading = described_functions(module);
  std::string story;
  try {
    run_scripts(settings, module, reading, trace, story);
    return done;
  } catch (const ScriptError& error) {
    put_error({error.report(), story});
    return script_failed;
  } catch (const ScriptExit& end) {
    return end.status();
  }
}

/// Whether everything made since `before` has been freed; reports what has not.
bool report_leaks(const Counts& before) {
  const Counts now = counts();
  put_error({fmt::format("left behind: {} objects, {} tables, {} strings, {} blocks, {} records, {} pieces\n",
                         now.objects - before.objects, now.tables - before.tables, now.strings - before.strings,
                         now.blocks - before.blocks, now.records - before.records, now.pieces - before.pieces)});
  return now == before;
}

int run_tests(const Settings& settings, const Module& module) {
  const Counts before = counts();
  const auto ends_well = [&] { return !settings.counts_leaks || report_leaks(before); };
  const DescriptionReading reading = described_functions(module);
  TestOptions options;
  options.conditions.has_checks = !settings.is_unchecked;
  options.conditions.description = reading.description ? &*reading.description : nullptr;
  options.conditions.warnings = warning_mode(settings);
  options.time_limit = settings.time_limit;
  options.ends_well = ends_well;
  const bool passed = run_tests_below(settings.test_directory, module.functions, options);
  return passed ? done : script_failed;
}

void list(const Module& module) {
  for (const std::string& name : module.functions.names()) put(fmt::format("function {}\n", name));
  for (const RegisteredType& type : registered_types()) put(fmt::format("type {}\n", type.name));
}

/// The page of a warning. For several functions it is that of the one with which the sentence begins.
std::string page_of(const WarningRow& row) {
  constexpr std::string_view place = "NAME";
  constexpr std::string_view of_names = "abcdefghijklmnopqrstuvwxyz0123456789_";
  std::string page(row.page);
  const std::size_t at = page.find(place);
  if (at != std::string::npos)
    page.replace(at, place.size(), row.sentence.substr(0, row.sentence.find_first_not_of(of_names)));
  return page;
}

/// The warnings in three columns: name, sentence, page.
void list_warnings() {
  const auto longest = [](std::string_view WarningRow::*column) {
    std::size_t width = 0;
    for (const WarningRow& row : warning_table()) width = std::max(width, (row.*column).size());
    return width;
  };
  const std::size_t names = longest(&WarningRow::name);
  const std::size_t sentences = longest(&WarningRow::sentence);
  for (const WarningRow& row : warning_table())
    put(fmt::format("{:{}}  {:{}}  {}\n", row.name, names, row.sentence, sentences, page_of(row)));
}

void show_libraries(const Module& module) {
  put(fmt::format("module {}\n", module.path));
  for (const std::string& library : module.libraries)
    if (library != module.path) put(fmt::format("  with {}\n", library));
}

std::size_t traced_operations(const Settings& settings) {
  return settings.trace_operations == "off" ? 0 : std::stoul(settings.trace_operations);
}

int run(const Settings& settings) {
  if (settings.lists_warnings) return list_warnings(), done;
  if (settings.shows_version) put(fmt::format("hvm {}\nprocessor {}\n", HVM_VERSION, processor_target()));
  const Module module = load_module(settings.module_path.empty() ? default_module_path() : settings.module_path);
  if (settings.shows_version) return show_libraries(module), done;
  if (settings.lists) return list(module), done;
  if (!settings.test_directory.empty()) return run_tests(settings, module);
  std::optional<Trace> trace;
  if (!settings.trace_path.empty()) trace.emplace(settings.trace_path, traced_operations(settings));
  const Counts before = counts();
  int status = status_of_scripts(settings, module, trace ? &*trace : nullptr);
  if (settings.counts_leaks && !report_leaks(before) && status == done) status = script_failed;
  if (trace) trace->finish();
  return status;
}

/// What is wrong with the text of a count; empty when nothing is.
std::string wrong_count_of_operations(const std::string& text) {
  constexpr std::size_t most_digits = 9;
  const bool is_count =
      !text.empty() && text.size() <= most_digits && text.find_first_not_of("0123456789") == std::string::npos;
  return is_count || text == "off" ? "" : fmt::format("'{}' is neither a count up to 999999999 nor off", text);
}

void describe(CLI::App& app, Settings& settings) {
  app.footer(
      "A script and its arguments follow the options: hvm [options] script.hvm [args], hvm [options] -e CODE [args].\n"
      "Without a script hvm reads one from the standard input; at a terminal it is a prompt.\n"
      "Exit status: 0, or what the script gives to exit; 1 after a script error, a failed test, or when the output\n"
      "cannot be written; 2 for wrong usage; 3 when the module cannot be loaded.");
  app.prefix_command();
  app.set_help_flag("--help,-h", "say this and end");
  const auto code = app.add_option("-e", settings.code, "run this code")->type_name("CODE");
  const auto test = app.add_option("--test", settings.test_directory, "run every *.hvm below a directory as a test")
                        ->type_name("DIR")
                        ->check(CLI::ExistingDirectory);
  app.add_option("--time-limit", settings.time_limit, "seconds for each script of --test; 0: any time")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CLI::Range(0.0, longest_time_limit).description(""))
      ->needs(test);
  app.add_option("--module", settings.module_path,
                 fmt::format("the module; otherwise {} beside hvm or in ../lib", array_module_file))
      ->type_name("PATH");
  const auto list_flag = app.add_flag("--list", settings.lists, "list the functions and types of the module");
  app.add_flag("--unchecked", settings.is_unchecked, "leave out the checks that the module itself does not make");
  app.add_option("--warnings", settings.warnings,
                 "what becomes of warnings: off, on, or error; with --test, error: a warning that no comment expects "
                 "fails the script")
      ->type_name("MODE")
      ->capture_default_str()
      ->check(CLI::IsMember({"off", "on", "error"}).description(""));
  const auto warnings_flag =
      app.add_flag("--list-warnings", settings.lists_warnings, "list all warnings and their pages");
  app.add_flag("--leaks", settings.counts_leaks,
               "count what is left behind at the end; status 1 when that is anything");
  app.add_flag("--explain", settings.explains, "tell the whole story of the error that ends a script, and of warnings");
  const auto version =
      app.add_flag("--version", settings.shows_version,
                   "say the version, the processor's vector instructions, the module and its libraries");
  const auto trace = app.add_option("--trace", settings.trace_path,
                                    "write every call of the module to a file, a line of JSON for each; -: to the "
                                    "standard error")
                         ->type_name("FILE");
  app.add_option("--trace-operations", settings.trace_operations,
                 "how many operations of the host the trace tells of each call; off: none")
      ->type_name("COUNT")
      ->capture_default_str()
      ->check(CLI::Validator(wrong_count_of_operations, ""))
      ->needs(trace);
  trace->excludes(test)->excludes(list_flag)->excludes(version)->excludes(warnings_flag);
  code->excludes(test)->excludes(list_flag)->excludes(version)->excludes(warnings_flag);
  test->excludes(list_flag)->excludes(version)->excludes(warnings_flag);
}

bool looks_like_option(const std::vector<std::string>& rest) {
  return !rest.empty() && rest.front().size() > 1 && rest.front()[0] == '-';
}

/// Reads the command line. Returns the exit status when there is nothing else to do.
std::optional<int> parse_command_line(int argc, char** argv, Settings& settings) {
  CLI::App app("hvm: runs scripts over a module", "hvm");
  describe(app, settings);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream err;
    const bool is_help = app.exit(error, out, err) == 0;
    put(out.str());
    put_error({err.str()});
    return is_help ? done : wrong_usage;
  }
  settings.has_code = app.count("-e") > 0;
  settings.rest = app.remaining();
  const bool has_separator = !settings.rest.empty() && settings.rest.front() == "--";
  if (has_separator) settings.rest.erase(settings.rest.begin());
  if (!has_separator && looks_like_option(settings.rest)) {
    put_error({"hvm: there is no option ", settings.rest.front(), "; hvm --help lists them\n"});
    return wrong_usage;
  }
  const bool takes_no_script =
      settings.lists || settings.lists_warnings || settings.shows_version || !settings.test_directory.empty();
  if (takes_no_script && !settings.rest.empty()) {
    put_error({"hvm: ", settings.rest.front(), " is one argument too many\n"});
    return wrong_usage;
  }
  return std::nullopt;
}

int run(int argc, char** argv) {
  Settings settings;
  const auto status = parse_command_line(argc, argv, settings);
  return status ? *status : run(settings);
}

/// Runs hvm and returns its exit status, whatever happens. A run whose output is lost fails.
int guarded_run(int argc, char** argv) noexcept {
  const auto failed = [](const std::exception& error, ExitStatus status) {
    put_error({"hvm: ", error.what(), "\n"});
    return status;
  };
  try {
    const int status = run(argc, argv);
    finish_output();
    return status;
  } catch (const ModuleError& error) {
    return failed(error, no_module);
  } catch (const FileError& error) {
    return failed(error, wrong_usage);
  } catch (const std::bad_alloc&) {
    put_error({"hvm: out of memory\n"});
    return script_failed;
  } catch (const std::exception& error) {
    return failed(error, script_failed);
  }
}

}  // namespace
}  // namespace hvm

int main(int argc, char** argv) {
  hvm::prepare_streams();
  hvm::install_fault_report();
  hvm::end_process(hvm::guarded_run(argc, argv));
}
