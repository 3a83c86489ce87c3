// script/run/variables.cpp: reading variables, and the error of one without a value

#include "script/run/variables.hpp"

#include <fmt/format.h>

#include "script/explain/other_names.hpp"
#include "script/module/array_module.hpp"

namespace hvm {

VariableState Variables::state(const Variable& variable) const {
  const Slot& slot = scopes_.slot_of(variable);
  if (!slot.is_set) return VariableState::unset;
  return slot.value.is_table() ? VariableState::table : VariableState::set;
}

void Variables::fail_unset(const Variable& variable, Span span) const {
  const std::string& name = variable.name;
  if (variable.is_local)
    site_.fail(
        fmt::format("'{}' has no value yet in this fn{}", name,
                    scopes_.is_set_global(name) ? "; a fn cannot change the global variable: pass its value as an "
                                                  "argument, and return the new one"
                                                : ""),
        span);
  if (functions_.has(name))
    site_.fail(fmt::format("'{0}' is a function; it is called with parentheses: {0}(){1}", name,
                           names_kind(name) ? "; write @" + name + " for the kind of an array" : ""),
               span);
  const std::string instead = counterpart(name);
  site_.fail(fmt::format("there is no variable '{}'{}", name,
                         instead.empty() ? suggestion(name, scopes_.visible_names()) : instead),
             span);
}

}  // namespace hvm
