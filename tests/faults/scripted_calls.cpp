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

}  // namespace

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
  for (const std::string& path : paths) {
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
