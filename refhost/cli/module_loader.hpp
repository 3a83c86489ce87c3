// cli/module_loader.hpp: finding, checking and loading a module

#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "script/module/module_functions.hpp"

namespace hvm {

/// Why a module cannot be loaded; the message names its path.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A module that is loaded for the rest of the process.
struct Module {
  std::string path;
  ModuleFunctions functions;
  std::vector<std::string> libraries;  // the files that loading it brought, itself included
};

/// Checks the file and the interpreter library under it, loads it, and lets it register. Throws `ModuleError`.
Module load_module(const std::string& path);

/// The version that a module states in its file, in a note whose owner has the module's name. Empty when there is no
/// such note, or none that can be read.
std::string version_of(const Module& module);

/// The module beside the running program, where both are installed, or in `../lib` from there, where they are built.
/// Throws `ModuleError` when there is none.
std::string default_module_path();

}  // namespace hvm
