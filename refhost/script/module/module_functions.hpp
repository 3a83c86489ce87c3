// script/module/module_functions.hpp: the functions that modules have registered

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/host_operations.hpp"

namespace hvm {

/// The rows that a module registered, by name and in their order. The `host` of `PKG_Init` is one of these.
class ModuleFunctions {
 public:
  /// A function, and its place among the names.
  struct Entry {
    arrayfold::EntryFunction function;
    std::uint32_t number;
  };

  /// The function of a name, null when there is none.
  arrayfold::EntryFunction find(const std::string& name) const;
  /// The same with its number.
  const Entry* find_entry(const std::string& name) const;
  const std::vector<std::string>& names() const { return names_; }
  /// A later row of the same name replaces the function of the earlier one.
  void add(const std::string& name, arrayfold::EntryFunction function);
  /// The callback for `PKG_Init`; `host` is a `ModuleFunctions`. Rows without a name or a function are left out.
  static int register_rows(void* host, int count, const arrayfold::FunctionRow* table);

 private:
  std::vector<std::string> names_;
  std::unordered_map<std::string, Entry> functions_;
};

}  // namespace hvm
