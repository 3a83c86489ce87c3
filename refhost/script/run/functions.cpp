// script/run/functions.cpp: the functions that a script can call, by name

#include "script/run/functions.hpp"

#include "script/library/builtins.hpp"
#include "script/syntax/diagnostics.hpp"

namespace hvm {

void Functions::define(const Program& program) {
  for (const auto& function : program.functions) fns_[function->name] = function;
}

std::shared_ptr<const Function> Functions::fn(const std::string& name) const {
  const auto entry = fns_.find(name);
  return entry == fns_.end() ? nullptr : entry->second;
}

bool Functions::has(const std::string& name) const {
  return fns_.count(name) != 0 || find_builtin(name) || module_.find(name);
}

std::string Functions::nearest(const std::string& name) const {
  std::vector<std::string_view> known = builtin_names();
  for (const auto& entry : fns_) known.push_back(entry.first);
  known.insert(known.end(), module_.names().begin(), module_.names().end());
  return suggestion(name, known);
}

}  // namespace hvm
