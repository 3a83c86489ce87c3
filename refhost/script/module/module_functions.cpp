// script/module/module_functions.cpp: the functions that modules have registered

#include "script/module/module_functions.hpp"

namespace hvm {

arrayfold::EntryFunction ModuleFunctions::find(const std::string& name) const {
  const Entry* entry = find_entry(name);
  return entry ? entry->function : nullptr;
}

const ModuleFunctions::Entry* ModuleFunctions::find_entry(const std::string& name) const {
  const auto entry = functions_.find(name);
  return entry == functions_.end() ? nullptr : &entry->second;
}

void ModuleFunctions::add(const std::string& name, arrayfold::EntryFunction function) {
  const auto number = static_cast<std::uint32_t>(names_.size());
  const auto [entry, is_new] = functions_.try_emplace(name, Entry{function, number});
  entry->second.function = function;
  if (is_new) names_.push_back(name);
}

int ModuleFunctions::register_rows(void* host, int count, const arrayfold::FunctionRow* table) {
  auto& functions = *static_cast<ModuleFunctions*>(host);
  for (int i = 0; i < count; ++i)
    if (table[i].name && table[i].function) functions.add(table[i].name, table[i].function);
  return 1;
}

}  // namespace hvm
