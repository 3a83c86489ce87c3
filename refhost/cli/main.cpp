// cli/main.cpp: the program hvm
//
// Exit status: 0, 1 after a script error or a failed test, 2 for wrong usage, 3 when the module cannot be loaded.

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "cli/expectation_runner.hpp"
#include "cli/module_loader.hpp"
#include "cli/repl.hpp"
#include "script/library/script_file.hpp"
#include "script/module/fault_report.hpp"
#include "script/run/interpreter.hpp"

namespace hvm {
namespace {

enum ExitStatus { done = 0, script_failed = 1, wrong_usage = 2, no_module = 3 };

struct Settings {
  std::string code;
  bool has_code = false;
  std::string test_directory;
  std::string module_path;
  bool lists = false;
  bool shows_version = false;
  bool is_unchecked = false;
  bool counts_leaks = false;
  std::vector<std::string> rest;  // the script and its arguments, or the arguments of -e
};

Value arguments_table(const std::vector<std::string>& arguments) {
  std::vector<Value> values;
  for (const std::string& argument : arguments) values.emplace_back(std::string_view(argument));
  return Value::table_of(values);
}

void put_line(const std::string& text) { fmt::print("{}\n", text); }

void put_warning(const std::string& report) {
  std::fflush(stdout);
  fmt::print(stderr, "{}", report);
}

int run_source(Interpreter& interpreter, const SourcePtr& source) {
  try {
    interpreter.run(interpreter.parse(source));
  } catch (const ScriptError& error) {
    std::fflush(stdout);
    fmt::print(stderr, "{}", error.report());
    return script_failed;
  }
  return done;
}

/// The script that the settings name; null stands for the REPL.
SourcePtr chosen_source(const Settings& settings) {
  if (settings.has_code) return std::make_shared<SourceText>("<command line>", settings.code);
  if (!settings.rest.empty() && settings.rest.front() != "-") return read_script(settings.rest.front());
  if (settings.rest.empty() && isatty(STDIN_FILENO)) return nullptr;
  return read_standard_input();
}

int run_scripts(const Settings& settings, const Module& module) {
  const bool has_guards = !settings.is_unchecked;
  const SourcePtr source = chosen_source(settings);
  const std::size_t names = settings.has_code || settings.rest.empty() ? 0 : 1;
  const std::vector<std::string> arguments(settings.rest.begin() + static_cast<std::ptrdiff_t>(names),
                                           settings.rest.end());
  Interpreter interpreter(
      module.functions,
      {has_guards, [](const std::string& text, const SourceText&, std::size_t) { put_line(text); }, put_warning});
  interpreter.set_global("args", arguments_table(arguments));
  if (source) return run_source(interpreter, source);
  run_repl(interpreter);
  return done;
}

/// Whether everything that came since `before` has gone again; says what has not.
bool report_leaks(const Counts& before) {
  const Counts now = counts();
  fmt::print(stderr, "left behind: {} objects, {} tables, {} strings, {} blocks, {} records, {} pieces\n",
             now.objects - before.objects, now.tables - before.tables, now.strings - before.strings,
             now.blocks - before.blocks, now.records - before.records, now.pieces - before.pieces);
  return now == before;
}

int run_tests(const Settings& settings, const Module& module) {
  const Counts before = counts();
  const auto ends_well = [&] { return !settings.counts_leaks || report_leaks(before); };
  const bool passed =
      run_expectations_below(settings.test_directory, module.functions, !settings.is_unchecked, ends_well);
  return passed ? done : script_failed;
}

void list(const Module& module) {
  for (const std::string& name : module.functions.names()) fmt::print("function {}\n", name);
  for (const RegisteredType& type : registered_types()) fmt::print("type {}\n", type.name);
}

void show_libraries(const Module& module) {
  fmt::print("module {}\n", module.path);
  for (const std::string& library : module.libraries)
    if (library != module.path) fmt::print("  with {}\n", library);
}

int run(const Settings& settings) {
  if (settings.shows_version) fmt::print("hvm {}\n", HVM_VERSION);
  const Module module = load_module(settings.module_path.empty() ? default_module_path() : settings.module_path);
  if (settings.shows_version) return show_libraries(module), done;
  if (settings.lists) return list(module), done;
  if (!settings.test_directory.empty()) return run_tests(settings, module);
  const Counts before = counts();
  const int status = run_scripts(settings, module);
  if (!settings.counts_leaks) return status;
  return report_leaks(before) || status != done ? status : script_failed;
}

void describe(CLI::App& app, Settings& settings) {
  app.footer(
      "A script and its arguments follow the options: hvm [options] script.hvm [args], hvm [options] -e CODE [args].\n"
      "Without a script hvm reads one from the standard input, or talks to you at a terminal.\n"
      "Exit status: 0; 1 after a script error; 2 for wrong usage; 3 when the module cannot be loaded.");
  app.prefix_command();
  app.set_help_flag("--help,-h", "say this and end");
  const auto code = app.add_option("-e", settings.code, "run this code")->type_name("CODE");
  const auto test = app.add_option("--test", settings.test_directory, "run every *.hvm below a directory as a test")
                        ->type_name("DIR")
                        ->check(CLI::ExistingDirectory);
  app.add_option("--module", settings.module_path, "the module; otherwise arrayfold.so beside hvm or in ../lib")
      ->type_name("PATH");
  const auto list_flag = app.add_flag("--list", settings.lists, "list the functions and types of the module");
  app.add_flag("--unchecked", settings.is_unchecked, "leave out the checks that the module itself does not make");
  app.add_flag("--leaks", settings.counts_leaks,
               "count what is left behind at the end; status 1 when that is anything");
  const auto version =
      app.add_flag("--version", settings.shows_version, "say the version, the module and its libraries");
  code->excludes(test)->excludes(list_flag)->excludes(version);
  test->excludes(list_flag)->excludes(version);
}

bool looks_like_option(const std::vector<std::string>& rest) {
  return !rest.empty() && rest.front().size() > 1 && rest.front()[0] == '-';
}

/// Reads the command line. Gives the exit status where that is all there is to do.
std::optional<int> parse_command_line(int argc, char** argv, Settings& settings) {
  CLI::App app("hvm: runs scripts over a module", "hvm");
  describe(app, settings);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? done : wrong_usage;
  }
  settings.has_code = app.count("-e") > 0;
  settings.rest = app.remaining();
  const bool has_separator = !settings.rest.empty() && settings.rest.front() == "--";
  if (has_separator) settings.rest.erase(settings.rest.begin());
  if (!has_separator && looks_like_option(settings.rest)) {
    fmt::print(stderr, "hvm: there is no option {}; hvm --help lists them\n", settings.rest.front());
    return wrong_usage;
  }
  const bool takes_no_script = settings.lists || settings.shows_version || !settings.test_directory.empty();
  if (takes_no_script && !settings.rest.empty()) {
    fmt::print(stderr, "hvm: {} is one argument too many\n", settings.rest.front());
    return wrong_usage;
  }
  return std::nullopt;
}

int guarded_main(int argc, char** argv) {
  Settings settings;
  if (const auto status = parse_command_line(argc, argv, settings)) return *status;
  try {
    return run(settings);
  } catch (const ModuleError& error) {
    fmt::print(stderr, "hvm: {}\n", error.what());
    return no_module;
  } catch (const FileError& error) {
    fmt::print(stderr, "hvm: {}\n", error.what());
    return wrong_usage;
  } catch (const std::exception& error) {
    fmt::print(stderr, "hvm: {}\n", error.what());
    return script_failed;
  }
}

}  // namespace
}  // namespace hvm

int main(int argc, char** argv) {
  // Lines are written as they come, so that none is lost when a module ends the process.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  hvm::install_fault_report();
  return hvm::guarded_main(argc, argv);
}
