// script/run/operators.hpp: what the operators of the language do
//
// Numbers and strings are the host's own; with an object among the operands the object's type decides. Integers that
// outgrow 32 bits become 64-bit ones; a result beyond 64 bits is an error, never a wrapped number. `/` and `%` of two
// integers truncate toward zero, as those of integer arrays do.

#pragma once

#include "script/explain/failed_calls.hpp"
#include "script/explain/warnings.hpp"
#include "script/module/array_module.hpp"
#include "script/run/site.hpp"

namespace hvm {

/// Applies operators at a place of the script. Everything that fails is a `ScriptError` there.
class Operators {
 public:
  Operators(Site& site, const ArrayChecks& checks, const FailedCalls& failed_calls, Warnings& warnings)
      : site_(site), checks_(checks), failed_calls_(failed_calls), warnings_(warnings) {}

  /// Where an operator stands: in a link of a chain, or elsewhere.
  struct Place {
    Span span;
    const Chain* chain = nullptr;
    const Link* link = nullptr;
  };

  /// The value of `left op right`.
  Value binary(BinaryOperator op, Value& left, Value& right, const Place& place) const;
  /// `variable op= right`. An object gets its own record as the result and may so change in place.
  void compound(BinaryOperator op, Value& variable, Value& right, Span span, const VariableAssignment& form) const;
  /// `-operand`; of an object its product with -1.
  Value negated(Value& operand, Span span) const;

 private:
  /// Runs `action`, which applies an operator to an object, and explains its failure.
  template <class Action>
  auto explained(const FailedOperation& operation, Span span, Action action) const;

  Site& site_;
  const ArrayChecks& checks_;
  const FailedCalls& failed_calls_;
  Warnings& warnings_;
};

/// An operator on two values of which none is an object. Throws `Failure`.
Value plain_binary(BinaryOperator op, const Value& left, const Value& right);

}  // namespace hvm
