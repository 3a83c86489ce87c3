// faults/scripted_calls.cpp: the calls of scripts, under the interpreter of the reference host

#include <algorithm>
#include <filesystem>

#include "conformance/call_table.hpp"
#include "faults/swept_calls.hpp"
#include "faults/swept_module.hpp"
#include "script/library/script_file.hpp"
#include "script/module/module_functions.hpp"
#include "script/run/interpreter.hpp"
#include "script/stop/script_end.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {
namespace {

const hvm::ModuleFunctions& functions() {
  static const hvm::ModuleFunctions made = [] {
    hvm::ModuleFunctions swept;
    for (const FunctionRecord& record : all_functions()) swept.add(record.name, swept_function(record.name));
    return swept;
  }();
  return made;
}

/// Runs a source statement by statement, also behind one that fails.
void run_statements(hvm::Interpreter& interpreter, const hvm::SourcePtr& source) {
  const hvm::Program program = interpreter.parse(source);
  interpreter.define(program);
  for (const auto& statement : program.statements) {
    try {
      interpreter.run(statement, source);
    } catch (const hvm::ScriptError&) {
    }
  }
}

hvm::InterpreterOptions silent() {
  hvm::InterpreterOptions options;
  options.print = [](const std::string&, const hvm::SourceText&, std::size_t) {};
  options.warnings = hvm::WarningMode::off;
  return options;
}

/// `inner` in so many brackets, twice in each: `[[x, x], [x, x]]`.
std::string nested(const std::string& inner, int depth) {
  std::string text = inner;
  for (int n = 0; n < depth; ++n) text = "[" + text + ", " + text + "]";
  return text;
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int n = 0; n < count; ++n) all += (n == 0 ? "" : ", ") + text;
  return all;
}

/// The arguments of xarray, where KIND is the name of a kind.
std::vector<std::string> reading_arguments() {
  std::vector<std::string> all = {"@KIND",
                                  "@name",
                                  "@text",
                                  "\"KIND\"",
                                  "@label: KIND(2, n)",
                                  "@KIND, t",
                                  "@KIND, a",
                                  "@KIND, []",
                                  "@KIND, [[], []]",
                                  "@KIND, [[1, 2], [3]]",
                                  "@KIND, [[1, 2], [3, \"four\"]]",
                                  "@KIND, [7: 1, 2.5: 2, 0: 3]"};
  for (const char* argument : {"1.5",
                               "2L",
                               "n",
                               "n + 1",
                               "t[\"k\"]",
                               "t[0]",
                               "t[0:1]",
                               "t[\"in\", 1]",
                               "len(t)",
                               "len([1, 2, 3])",
                               "max(n, len(t))",
                               "text",
                               "w\"wide\"",
                               "\"narrow\"",
                               "[1, [2, \"k\": n]]",
                               "@n",
                               "@other(1, n, \"a\")",
                               "@label_that_is_longer_than_what_fits_in_place: other(len(t))",
                               "a",
                               "nothing"})
    for (const int count : {1, 3, 12}) all.push_back("@KIND(" + repeated(argument, count) + ")");
  for (int dimensions = 0; dimensions <= 6; ++dimensions) {
    all.push_back("@KIND(" + repeated("2", dimensions) + ")");
    all.push_back("@KIND(" + repeated("n", dimensions) + ")");
    all.push_back("@KIND(" + repeated("len(t)", dimensions) + ")");
    if (dimensions == 0) continue;
    for (const char* element : {"1", "n", "2.5", "3L", "t[0]", "\"text\"", "[1, \"k\": 2]"})
      all.push_back("@KIND, " + nested(element, dimensions));
    for (const char* element : {"1", "n", "2.5"}) all.push_back("@KIND, @" + nested(element, dimensions));
  }
  return all;
}

}  // namespace

void read_arrays(Sweep& sweep) {
  hvm::Interpreter interpreter(functions(), silent());
  const auto run = [&](const std::string& text) {
    sweep.come_from(text + ": ");
    run_statements(interpreter, std::make_shared<const hvm::SourceText>("reading", text));
  };
  run("n = 2\ntext = \"double\"\nname = \"int\"\na = xones(2)\nt = [2, 1, \"k\": 2, \"in\": [1, 2]]\n");
  const Sweeping sweeping(sweep);
  int number = 0;
  for (const std::string& arguments : reading_arguments())
    for (const std::string kind : {"bool", "int", "int64", "double", "float"}) {
      if (number++ % 6 != 0 && !sweep.is_whole()) continue;  // the interpreter takes longer than the module
      std::string call = "xarray(" + arguments + ")";
      for (std::size_t at = call.find("KIND"); at != std::string::npos; at = call.find("KIND"))
        call.replace(at, 4, kind);
      run(call);
    }
}

void make_recorded_calls(Sweep& sweep, const std::string& table) {
  for (const hvm::conformance::CallRow& row : hvm::conformance::read_call_table(table).rows) {
    if (row.ending_signal() != 0) continue;  // it ends the process
    hvm::Interpreter interpreter(functions(), silent());
    const auto source = [&](const std::string& text) { return std::make_shared<const hvm::SourceText>(row.id, text); };
    run_statements(interpreter, source(row.made.preparation));
    sweep.come_from(row.id + ": " + row.made.call + ": ");
    const Sweeping sweeping(sweep);
    run_statements(interpreter, source(row.made.call));
  }
}

void run_scripts(Sweep& sweep, const std::string& folder) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    if (entry.path().extension() == ".hvm") paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  int number = 0;
  for (const std::string& path : paths) {
    if (number++ % 6 != 0 && !sweep.is_whole()) continue;
    hvm::Interpreter interpreter(functions(), silent());
    sweep.come_from(path + ": ");
    const Sweeping sweeping(sweep);
    try {
      run_statements(interpreter, hvm::read_script(path));
    } catch (const hvm::ScriptError&) {
    } catch (const hvm::ScriptEnd&) {
    }
  }
}

}  // namespace arrayfold::test
