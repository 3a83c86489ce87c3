// script/run/statements.hpp: running statements

#pragma once

#include "script/run/evaluator.hpp"
#include "script/run/steps.hpp"

namespace hvm {

class Range;
class Uses;

/// Runs statements in the running scope. Everything that fails is a `ScriptError`.
class Statements {
 public:
  Statements(const Site& site, Steps& steps, Scopes& scopes, const Functions& functions, const Variables& variables,
             const Elements& elements, const Operators& operators, Evaluator& evaluator, Uses& uses)
      : site_(site),
        steps_(steps),
        scopes_(scopes),
        functions_(functions),
        variables_(variables),
        elements_(elements),
        operators_(operators),
        evaluator_(evaluator),
        uses_(uses) {}

  /// Runs one statement of the outermost level.
  void run(const Statement& statement) { execute(statement); }
  /// Runs the body of a fn. Returns the value of its `return`, nil without one.
  Value run_body(const Block& body);

 private:
  enum class Flow { onward, broken, continued, returned };

  Flow execute(const Block& block);
  Flow execute(const Statement& statement);
  Flow execute(const ExpressionStatement& form, Span span);
  Flow execute(const VariableAssignment& form, Span span);
  Flow execute(const ElementAssignment& form, Span span);
  Flow execute(const If& form, Span span);
  Flow execute(const While& form, Span span);
  Flow execute(const For& form, Span span);
  Flow execute(const Return& form, Span span);
  Flow execute(const Break& form, Span span);
  Flow execute(const Continue& form, Span span);
  Flow execute(const Try& form, Span span);
  Flow execute(const Use& form, Span span);
  /// Runs the body of a loop once. Returns `broken` or `returned` when the loop ends with it.
  Flow turn(const Block& body);
  void give(const ExpressionPtr& variable, Value value);
  Flow iterate(const For& form, Range range);
  Flow iterate(const For& form, const Value& table);

  const Site& site_;
  Steps& steps_;
  Scopes& scopes_;
  const Functions& functions_;
  const Variables& variables_;
  const Elements& elements_;
  const Operators& operators_;
  Evaluator& evaluator_;
  Uses& uses_;
  Value returned_;
};

}  // namespace hvm
