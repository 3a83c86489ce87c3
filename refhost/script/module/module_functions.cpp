// script/module/module_functions.cpp: the functions that modules have registered

#include "script/module/module_functions.hpp"

namespace hvm {

arrayfold::EntryFunction ModuleFunctions::find(const std::string& name) const {
  const auto entry = functions_.find(name);
  return entry == functions_.end() ? nullptr : entry->second;
}

void ModuleFunctions::add(const std::string& name, arrayfold::EntryFunction function) {
  const bool is_new = functions_.insert_or_assign(name, function).second;
  if (is_new) names_.push_back(name);
}

int ModuleFunctions::register_rows(void* host, int count, const arrayfold::FunctionRow* table) {
  auto& functions = *static_cast<ModuleFunctions*>(host);
  for (int i = 0; i < count; ++i)
    if (table[i].name && table[i].function) functions.add(table[i].name, table[i].function);
  return 1;
}

}  // namespace hvm
