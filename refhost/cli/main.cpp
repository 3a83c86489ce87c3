// cli/main.cpp: the program hvm
//
// Exit status: 0, or what the script gives to `exit`; 1 after a script error, a failed test, for a module that does not
// conform, or when the output cannot be written; 2 for wrong usage; 3 when the module cannot be loaded.

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <thread>

#include "cli/command_line.hpp"
#include "cli/conformance.hpp"
#include "cli/help_page.hpp"
#include "cli/listing.hpp"
#include "cli/module_loader.hpp"
#include "cli/process_end.hpp"
#include "cli/processor.hpp"
#include "cli/repl.hpp"
#include "cli/reports.hpp"
#include "cli/shell_completions.hpp"
#include "cli/streams.hpp"
#include "cli/terminal.hpp"
#include "cli/test_runner.hpp"
#include "script/explain/module_description.hpp"
#include "script/library/script_file.hpp"
#include "script/module/array_module.hpp"
#include "script/module/fault_report.hpp"
#include "script/module/trace.hpp"
#include "script/run/interpreter.hpp"
#include "script/stop/script_end.hpp"

namespace hvm {
namespace {

enum ExitStatus { done = 0, script_failed = 1, wrong_usage = 2, no_module = 3 };

Value arguments_table(const std::vector<std::string>& arguments) {
  std::vector<Value> values;
  values.reserve(arguments.size());
  for (const std::string& argument : arguments) values.emplace_back(std::string_view(argument));
  return Value::table_of(values);
}

/// The text that fits into the terminal with room for the line above and the prompt below.
TextSize terminal_size() {
  const auto terminal = output_terminal();
  const bool has_room = terminal && terminal->columns > 1 && terminal->rows > 2;
  return has_room ? TextSize{terminal->columns - 1, terminal->rows - 2} : TextSize{};
}

bool comes_by_standard_input(const Settings& settings) {
  return !settings.code && (settings.rest.empty() || settings.rest.front() == "-");
}

/// Throws `UsageError` where there is no one to type at a prompt, or the script itself comes from there.
void require_terminal(const Settings& settings) {
  const bool is_script = !settings.code && !settings.rest.empty() && settings.rest.front() == "-";
  if (settings.stays && (is_script || isatty(STDIN_FILENO) != 1))
    throw UsageError("-i needs a terminal as the standard input");
}

WarningMode warning_mode(const Settings& settings) {
  if (settings.warnings == "off") return WarningMode::off;
  return settings.warnings == "error" ? WarningMode::error : WarningMode::on;
}

/// The script that the settings name; null for the REPL.
SourcePtr chosen_source(const Settings& settings) {
  if (settings.code) return std::make_shared<SourceText>("<command line>", *settings.code);
  if (!comes_by_standard_input(settings)) return read_script(settings.rest.front());
  if (settings.rest.empty() && isatty(STDIN_FILENO)) return nullptr;
  return read_standard_input();
}

/// What is known of the module's functions beside the module itself.
ModuleDescription description_of(const Module& module) {
  return {module.path, module.functions.names(), [](const std::string& problem) {
            put_error({"hvm: ", problem, "\n"});
          }};
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
void run_scripts(const Settings& settings, const Module& module, const ModuleDescription& description, Trace* trace,
                 std::string& story) {
  require_terminal(settings);
  const SourcePtr source = chosen_source(settings);
  const std::size_t names = settings.code || settings.rest.empty() ? 0 : 1;
  const std::vector<std::string> arguments(settings.rest.begin() + static_cast<std::ptrdiff_t>(names),
                                           settings.rest.end());
  InterpreterOptions options;
  options.has_checks = !settings.is_unchecked;
  options.print = [](const std::string& text, const SourceText&, std::size_t) { put(text + "\n"); };
  options.warn = [&settings](const Warning& warning) {
    const bool tells_story = settings.explains && warning.explanation;
    put_report(warning.report(), tells_story ? warning.explanation->text() : std::string());
  };
  options.warnings = warning_mode(settings);
  if (comes_by_standard_input(settings)) options.files = FileAccess::without_standard_input;
  options.text_size = terminal_size;
  options.description = &description;
  options.pages_folder = pages_folder();
  options.explains = settings.explains || !source || settings.stays;
  options.trace = trace;
  Interpreter interpreter(module.functions, options);
  interpreter.set_global("args", arguments_table(arguments));
  if (!source || settings.stays) return run_repl(interpreter, {source, arguments, settings.explains, &description});
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
  const ModuleDescription description = description_of(module);
  std::string story;
  try {
    run_scripts(settings, module, description, trace, story);
    return done;
  } catch (const ScriptError& error) {
    put_report(error.report(), story);
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

std::size_t jobs_of(const Settings& settings) {
  return settings.jobs > 0 ? settings.jobs : std::max(std::thread::hardware_concurrency(), 1U);
}

int status_of_tests(const Settings& settings, const Module& module) {
  const Counts before = counts();
  const ModuleDescription description = description_of(module);
  description.get();  // once, in place of in each process
  TestOptions options;
  options.conditions.has_checks = !settings.is_unchecked;
  options.conditions.description = &description;
  options.conditions.warnings = warning_mode(settings);
  options.time_limit = settings.time_limit;
  options.ends_well = [&] { return !settings.counts_leaks || report_leaks(before); };
  options.filter = settings.filter;
  options.jobs = jobs_of(settings);
  options.is_verbose = settings.is_verbose;
  options.junit_path = settings.junit_path;
  return run_tests(settings.rest, module.functions, options) ? done : script_failed;
}

/// The description that lies beside hvm's own module: the script tests expect its words, and the module under test may
/// lie anywhere.
ModuleDescription own_description(const Module& module) {
  try {
    return {default_module_path(), module.functions.names(), [](const std::string&) {}};
  } catch (const ModuleError&) {
    return description_of(module);
  }
}

int status_of_conformance(const Settings& settings, const Module& module) {
  const ModuleDescription description = own_description(module);
  description.get();  // once, in place of in each process
  ConformanceOptions options;
  options.conditions.description = &description;
  options.time_limit = settings.time_limit;
  options.filter = settings.filter;
  options.jobs = jobs_of(settings);
  options.is_verbose = settings.is_verbose;
  options.json_path = settings.json_path;
  return run_conformance(module, options) ? done : script_failed;
}

/// What the description says of a type; empty when it says nothing.
std::string sentence_on_type(const Description& description, const std::string& type) {
  for (const KindEntry& kind : description.kinds)
    if (kind.type == type) return kind.name;
  return {};
}

void list(const Settings& settings, const Module& module) {
  const ModuleDescription reading = description_of(module);
  const Description nothing;
  const Description& description = reading.get() ? *reading.get() : nothing;
  std::vector<ListedName> names;
  for (const std::string& name : module.functions.names()) {
    const FunctionEntry* const entry = description.find(name);
    names.push_back({"function", name, entry ? entry->summary : ""});
  }
  for (const RegisteredType& type : registered_types())
    names.push_back({"type", type.name, sentence_on_type(description, type.name)});
  const auto terminal = output_terminal();
  put(listing(fitting_names(names, settings.rest), terminal ? static_cast<std::size_t>(terminal->columns) : 0));
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
  const std::string version = version_of(module);
  if (!version.empty()) put(fmt::format("  version {}\n", version));
  for (const std::string& library : module.libraries)
    if (library != module.path) put(fmt::format("  with {}\n", library));
}

int run(const Settings& settings) {
  if (settings.task == Task::show_help) return put(help_text()), done;
  if (settings.task == Task::complete)
    return put(settings.shell == "bash" ? bash_completion() : zsh_completion()), done;
  if (settings.task == Task::list_warnings) return list_warnings(), done;
  if (settings.task == Task::show_version) put(fmt::format("hvm {}\nprocessor {}\n", HVM_VERSION, processor_target()));
  const std::string path = settings.module_path.empty() ? default_module_path() : settings.module_path;
  if (settings.task == Task::conformance) check_that_it_loads(path, settings.time_limit);
  const Module module = load_module(path);
  if (settings.task == Task::show_version) return show_libraries(module), done;
  if (settings.task == Task::list) return list(settings, module), done;
  keep_freed_memory(settings.kept_memory);
  if (settings.task == Task::test) return status_of_tests(settings, module);
  if (settings.task == Task::conformance) return status_of_conformance(settings, module);
  std::optional<Trace> trace;
  if (!settings.trace_path.empty()) trace.emplace(settings.trace_path, settings.trace_operations);
  const Counts before = counts();
  int status = status_of_scripts(settings, module, trace ? &*trace : nullptr);
  if (settings.counts_leaks && !report_leaks(before) && status == done) status = script_failed;
  if (trace) trace->finish();
  return status;
}

/// Runs hvm and returns its exit status, whatever happens. A run whose output is lost fails.
int guarded_run(int argc, char** argv) noexcept {
  const auto failed = [](const std::exception& error, ExitStatus status) {
    put_error({"hvm: ", error.what(), "\n"});
    return status;
  };
  try {
    const int status = run(read_command_line({argv + std::min(argc, 1), argv + argc}));
    finish_output();
    return status;
  } catch (const UsageError& error) {
    return failed(error, wrong_usage);
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
