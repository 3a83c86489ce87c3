// script/run/variables.hpp: reading variables, and the error of one without a value

#pragma once

#include "script/run/functions.hpp"
#include "script/run/scopes.hpp"
#include "script/run/site.hpp"

namespace hvm {

/// The variables that the running scope sees.
class Variables final : public VariableView {
 public:
  Variables(const Site& site, Scopes& scopes, const Functions& functions)
      : site_(site), scopes_(scopes), functions_(functions) {}

  /// The value of a variable. Throws `ScriptError` when it has none.
  const Value& read(const Variable& variable, Span span) const { return set_slot(variable, span).value; }
  /// The same where it is stored, for a module that takes the record of the variable.
  Value& place(const Variable& variable, Span span) { return set_slot(variable, span).value; }

  VariableState state(const Variable& variable) const override;
  std::uint32_t slot(const Variable& variable) const override { return scopes_.tree_slot(variable); }
  [[noreturn]] void fail_unset(const Variable& variable, Span span) const override;

 private:
  Slot& set_slot(const Variable& variable, Span span) const {
    Slot& slot = scopes_.slot_of(variable);
    if (!slot.is_set) fail_unset(variable, span);
    return slot;
  }

  const Site& site_;
  Scopes& scopes_;
  const Functions& functions_;
};

}  // namespace hvm
