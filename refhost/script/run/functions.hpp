// script/run/functions.hpp: the functions that a script can call, by name

#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "script/module/module_functions.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

/// Finds functions by name: the fns of the script, the built-in functions and those of the module.
class Functions {
 public:
  /// `module` must outlive this.
  explicit Functions(const ModuleFunctions& module) : module_(module) {}

  const ModuleFunctions& module() const { return module_; }
  /// Adds the fns of a program; a later one of the same name replaces an earlier one.
  void define(const Program& program);

  /// The fn of a name, null when there is none. The caller holds it while it runs: another input may replace it.
  std::shared_ptr<const Function> fn(const std::string& name) const;
  /// The same for a call in `caller`. A library does not see the fns of scripts: one of them may have the name of
  /// a function that the library needs.
  std::shared_ptr<const Function> fn(const std::string& name, const SourceText& caller) const;
  /// The module's function of a name, null when there is none.
  const ModuleFunctions::Entry* of_module(const std::string& name) const { return module_.find_entry(name); }
  /// Whether there is a function of this name: a fn, a built-in one or the module's.
  bool has(const std::string& name) const;
  /// What to write in place of an unknown function, as the end of a sentence: where it comes from when it is part of a
  /// library, what takes its place when it is known from elsewhere, ` (did you mean 'xsum'?)` when a name is near.
  std::string advice(const std::string& name) const;

 private:
  using Fns = std::unordered_map<std::string, std::shared_ptr<const Function>>;

  static std::shared_ptr<const Function> found(const Fns& fns, const std::string& name);

  const ModuleFunctions& module_;
  Fns of_scripts_;
  Fns of_libraries_;
};

}  // namespace hvm
