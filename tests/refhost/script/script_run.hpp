// refhost/script/script_run.hpp: runs a script over the toy module and keeps what it printed

#pragma once

#include <gtest/gtest.h>

#include <string>

#include "script/run/interpreter.hpp"
#include "toy_module.hpp"

namespace hvm::testing {

/// The toy module, registered once.
inline const ModuleFunctions& toy_functions() {
  static const ModuleFunctions functions = [] {
    ModuleFunctions made;
    PKG_Init(&made, &ModuleFunctions::register_rows);
    return made;
  }();
  return functions;
}

/// What a script printed, line by line with `|` between, and ` !` with the message of the error that ended it.
inline std::string output_of(const ModuleFunctions& functions, const std::string& script, bool has_guards = true) {
  std::string out;
  Interpreter interpreter(functions, {has_guards, [&](const std::string& text, const SourceText&, std::size_t) {
                                        out += (out.empty() ? "" : "|") + text;
                                      }});
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", script)));
  } catch (const ScriptError& error) {
    out += "!" + error.message();
  }
  return out;
}

/// The same over the toy module.
inline std::string output_of(const std::string& script, bool has_guards = true) {
  return output_of(toy_functions(), script, has_guards);
}

struct ScriptRow {
  const char* script;
  const char* output;
};

/// Every row prints what it says, and leaves nothing behind in the host.
inline void expect_outputs(const ModuleFunctions& functions, std::initializer_list<ScriptRow> rows) {
  for (const ScriptRow& row : rows) {
    const Counts before = counts();
    EXPECT_EQ(output_of(functions, row.script), row.output) << row.script;
    EXPECT_TRUE(counts() == before) << "left behind by: " << row.script;
  }
}

inline void expect_outputs(std::initializer_list<ScriptRow> rows) { expect_outputs(toy_functions(), rows); }

}  // namespace hvm::testing
