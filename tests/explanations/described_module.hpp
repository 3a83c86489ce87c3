// explanations/described_module.hpp: the module and its description of this build

#pragma once

#include <stdexcept>
#include <string>

#include "script/explain/module_description.hpp"
#include "script/module/module_functions.hpp"
#include "support/module_test.hpp"

namespace hvm::testing {

inline const ModuleFunctions& module_functions() {
  static const ModuleFunctions functions = [] {
    ModuleFunctions made;
    for (const arrayfold::FunctionRow& row : arrayfold::test::Module::loaded().rows()) made.add(row.name, row.function);
    return made;
  }();
  return functions;
}

inline const Description& description() {
  static const DescriptionReading reading =
      read_description(std::string(BUILD_DIRECTORY) + "/lib/arrayfold.so", module_functions().names());
  if (!reading.description) throw std::runtime_error("no description: " + reading.problem);
  return *reading.description;
}

/// The same for an interpreter.
inline const ModuleDescription& module_description() {
  static const ModuleDescription known(description());
  return known;
}

}  // namespace hvm::testing
