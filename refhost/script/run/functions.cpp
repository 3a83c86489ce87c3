// script/run/functions.cpp: the functions that a script can call, by name

#include "script/run/functions.hpp"

#include <fmt/format.h>

#include <map>

#include "script/explain/other_names.hpp"
#include "script/library/builtins.hpp"
#include "script/library/script_file.hpp"
#include "script/syntax/diagnostics.hpp"

namespace hvm {

void Functions::define(const Program& program) {
  Fns& fns = program.source->is_library() ? of_libraries_ : of_scripts_;
  for (const auto& function : program.functions) fns[function->name] = function;
}

std::shared_ptr<const Function> Functions::found(const Fns& fns, const std::string& name) {
  const auto entry = fns.find(name);
  return entry == fns.end() ? nullptr : entry->second;
}

std::shared_ptr<const Function> Functions::fn(const std::string& name) const {
  auto of_script = found(of_scripts_, name);
  return of_script ? of_script : found(of_libraries_, name);
}

std::shared_ptr<const Function> Functions::fn(const std::string& name, const SourceText& caller) const {
  return caller.is_library() ? found(of_libraries_, name) : fn(name);
}

std::vector<std::shared_ptr<const Function>> Functions::fns() const {
  std::map<std::string, std::shared_ptr<const Function>> by_name(of_scripts_.begin(), of_scripts_.end());
  by_name.insert(of_libraries_.begin(), of_libraries_.end());
  std::vector<std::shared_ptr<const Function>> all;
  all.reserve(by_name.size());
  for (auto& entry : by_name) all.push_back(std::move(entry.second));
  return all;
}

bool Functions::has(const std::string& name) const { return fn(name) || find_builtin(name) || module_.find(name); }

std::string Functions::advice(const std::string& name) const {
  const std::string library = library_with(name);
  if (!library.empty()) return fmt::format("; it comes with use \"{}\"", library);
  const std::string known_elsewhere = counterpart_of_function(name);
  if (!known_elsewhere.empty()) return known_elsewhere;
  std::vector<std::string_view> known = builtin_names();
  for (const auto& entry : of_scripts_) known.push_back(entry.first);
  for (const auto& entry : of_libraries_) known.push_back(entry.first);
  known.insert(known.end(), module_.names().begin(), module_.names().end());
  return suggestion(name, known);
}

}  // namespace hvm
