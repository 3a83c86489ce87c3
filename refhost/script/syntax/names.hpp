// script/syntax/names.hpp: the numbering of variable names

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hvm {

/// Gives each name of a scope a slot, counted from 0 in the order in which they come. Slots are never reused.
class NameTable {
 public:
  /// The slot of a name, made if absent. Nothing changes when memory runs out.
  std::size_t slot_of(const std::string& name) {
    if (const auto known = find(name)) return *known;
    const std::size_t slot = names_.size();
    names_.push_back(name);
    try {
      slots_.emplace(name, slot);
    } catch (...) {
      names_.pop_back();
      throw;
    }
    return slot;
  }
  std::optional<std::size_t> find(const std::string& name) const {
    const auto entry = slots_.find(name);
    return entry == slots_.end() ? std::nullopt : std::optional(entry->second);
  }
  const std::string& name(std::size_t slot) const { return names_[slot]; }
  std::size_t size() const { return names_.size(); }

 private:
  std::unordered_map<std::string, std::size_t> slots_;
  std::vector<std::string> names_;
};

}  // namespace hvm
