// cli/main.cpp: the program hvm
//
// Exit status: 0, or what the script gives to `exit`; 1 after a script error, a failed test, or when the output cannot
// be written; 2 for wrong usage; 3 when the module cannot be loaded.

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <thread>

#include "cli/command_line.hpp"
#include "cli/listing.hpp"
#include "cli/module_loader.hpp"
#include "cli/process_end.hpp"
#include "cli/processor.hpp"
#include "cli/repl.hpp"
#include "cli/shell_completions.hpp"
#include "cli/streams.hpp"
#include "cli/terminal.hpp"
#include "cli/test_runner.hpp"
#include "script/library/script_end.hpp"
#include "script/library/script_file.hpp"
#include "script/module/array_module.hpp"
#include "script/module/fault_report.hpp"
#include "script/module/trace.hpp"
#include "script/run/interpreter.hpp"

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

/// The script that the settings name; null for the REPL.
SourcePtr chosen_source(const Settings& settings) {
  if (settings.code) return std::make_shared<SourceText>("<command line>", *settings.code);
  if (!comes_by_standard_input(settings)) return read_script(settings.rest.front());
  if (settings.rest.empty() && isatty(STDIN_FILENO)) return nullptr;
  return read_standard_input();
}

/// Runs the script that the settings name, or the prompt. Throws `ScriptError` and `ScriptExit`.
void run_scripts(const Settings& settings, const Module& module, Trace* trace) {
  const SourcePtr source = chosen_source(settings);
  const std::size_t names = settings.code || settings.rest.empty() ? 0 : 1;
  const std::vector<std::string> arguments(settings.rest.begin() + static_cast<std::ptrdiff_t>(names),
                                           settings.rest.end());
  InterpreterOptions options;
  options.has_checks = !settings.is_unchecked;
  options.print = [](const std::string& text, const SourceText&, std::size_t) { put(text + "\n"); };
  options.warn = [](const std::string& warning) { put_error({warning}); };
  options.files = comes_by_standard_input(settings) ? FileAccess::without_standard_input : FileAccess::all;
  options.text_size = terminal_size;
  options.trace = trace;
  Interpreter interpreter(module.functions, std::move(options));
  interpreter.set_global("args", arguments_table(arguments));
  if (source)
    interpreter.run(interpreter.parse(source));
  else
    run_repl(interpreter);
}

/// The exit status of what `run_scripts` runs. An error is reported when the variables of the script are gone, since
/// they may hold all memory.
int status_of_scripts(const Settings& settings, const Module& module, Trace* trace) {
  try {
    run_scripts(settings, module, trace);
    return done;
  } catch (const ScriptError& error) {
    put_error({error.report()});
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

int status_of_tests(const Settings& settings, const Module& module) {
  const Counts before = counts();
  TestOptions options;
  options.has_checks = !settings.is_unchecked;
  options.time_limit = settings.time_limit;
  options.ends_well = [&] { return !settings.counts_leaks || report_leaks(before); };
  options.filter = settings.filter;
  options.jobs = settings.jobs > 0 ? settings.jobs : std::max(std::thread::hardware_concurrency(), 1U);
  options.is_verbose = settings.is_verbose;
  options.junit_path = settings.junit_path;
  return run_tests(settings.rest, module.functions, options) ? done : script_failed;
}

void list(const Settings& settings, const Module& module) {
  std::vector<ListedName> names;
  for (const std::string& name : module.functions.names()) names.push_back({"function", name, ""});
  for (const RegisteredType& type : registered_types()) names.push_back({"type", type.name, ""});
  const auto terminal = output_terminal();
  put(listing(fitting_names(names, settings.rest), terminal ? static_cast<std::size_t>(terminal->columns) : 0));
}

void show_libraries(const Module& module) {
  put(fmt::format("module {}\n", module.path));
  for (const std::string& library : module.libraries)
    if (library != module.path) put(fmt::format("  with {}\n", library));
}

int run(const Settings& settings) {
  if (settings.task == Task::show_help) return put(help_text()), done;
  if (settings.task == Task::complete)
    return put(settings.shell == "bash" ? bash_completion() : zsh_completion()), done;
  if (settings.task == Task::show_version) put(fmt::format("hvm {}\nprocessor {}\n", HVM_VERSION, processor_target()));
  const Module module = load_module(settings.module_path.empty() ? default_module_path() : settings.module_path);
  if (settings.task == Task::show_version) return show_libraries(module), done;
  if (settings.task == Task::list) return list(settings, module), done;
  if (settings.task == Task::test) return status_of_tests(settings, module);
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
