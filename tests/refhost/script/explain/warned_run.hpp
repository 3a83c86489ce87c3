// refhost/script/explain/warned_run.hpp: a script over the module of arrays, with what it is told

#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "script/explain/warnings.hpp"
#include "script/run/interpreter.hpp"

namespace hvm::testing {

/// The module of arrays, loaded once.
inline const ModuleFunctions& arrays() {
  static const ModuleFunctions functions = [] {
    ModuleFunctions made;
    void* library = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(dlerror());
    void* init = dlsym(library, "PKG_Init");
    arrayfold::load<arrayfold::PackageInit> (&init)(&made, &ModuleFunctions::register_rows);
    return made;
  }();
  return functions;
}

/// The greatest numbers of arguments of some functions.
inline const ModuleDescription& description() {
  static const ModuleDescription described = [] {
    Description made;
    for (const auto& [name, most] : std::initializer_list<std::pair<const char*, int>>{
             {"xsum", 1}, {"xmean", 1}, {"xsort", 1}, {"xstddev", 1}, {"xtrapz", 1}, {"xabs", 1}, {"xlinspace", 3}}) {
      FunctionEntry entry;
      entry.name = name;
      entry.most_arguments = most;
      made.functions.push_back(entry);
    }
    made.functions.emplace_back().name = "xzeros";  // any number
    return ModuleDescription(std::move(made));
  }();
  return described;
}

struct Told {
  std::string name;
  std::string message;
  std::string report;
};

struct ToldRun {
  std::vector<Told> warnings;
  std::string output;  // and ` !` with the error that ended it
};

/// Runs a script over the module of arrays.
inline ToldRun run(const std::string& script, WarningMode mode = WarningMode::on, Origin origin = Origin::script,
                   const ModuleFunctions& functions = arrays()) {
  ToldRun result;
  InterpreterOptions options;
  options.print = [&](const std::string& text, const SourceText&, std::size_t) {
    result.output += (result.output.empty() ? "" : "|") + text;
  };
  options.warn = [&](const Warning& warning) {
    result.warnings.push_back({std::string(warning.row.name), warning.message, warning.report()});
  };
  options.warnings = mode;
  options.description = &description();
  const Counts before = counts();
  {
    Interpreter interpreter(functions, options);
    try {
      interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", script, origin)));
    } catch (const ScriptError& error) {
      result.output += "!" + error.message();
    }
  }
  EXPECT_TRUE(counts() == before) << "left behind by: " << script;
  return result;
}

/// What the script is told, as `name: message` with `|` between.
inline std::string told(const std::string& script) {
  std::string text;
  for (const Told& warning : run(script).warnings)
    text += (text.empty() ? "" : "|") + warning.name + ": " + warning.message;
  return text;
}

}  // namespace hvm::testing
