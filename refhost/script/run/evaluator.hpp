// script/run/evaluator.hpp: the values of expressions

#pragma once

#include <array>
#include <vector>

#include "script/run/elements.hpp"
#include "script/run/operators.hpp"
#include "script/run/quotations.hpp"

namespace hvm {

class Calls;

/// Evaluates expressions in the running scope. Everything that fails is a `ScriptError`.
class Evaluator {
 public:
  Evaluator(const Site& site, Variables& variables, const Elements& elements, const Operators& operators,
            Quotations& quotations, Calls& calls)
      : site_(site),
        variables_(variables),
        elements_(elements),
        operators_(operators),
        quotations_(quotations),
        calls_(calls) {}

  Value evaluate(const Expression& expression);
  std::vector<Value> evaluate(const Expressions& expressions);
  /// Room for the values of indices, on the stack where they are few.
  struct IndexValues {
    std::array<Value, 4> few;
    std::vector<Value> many;
  };
  /// The values of indices, in `values`.
  ValueSpan indices(const Index& index, IndexValues& values);
  /// Whether a condition holds.
  bool holds(const Expression& condition);

 private:
  Value evaluate(const IntegerLiteral& form, Span span);
  Value evaluate(const Integer64Literal& form, Span span);
  Value evaluate(const RealLiteral& form, Span span);
  Value evaluate(const StringLiteral& form, Span span);
  Value evaluate(const WideStringLiteral& form, Span span);
  Value evaluate(const NilLiteral& form, Span span);
  Value evaluate(const TableLiteral& form, Span span);
  Value evaluate(const Variable& form, Span span);
  Value evaluate(const Call& form, Span span);
  Value evaluate(const Postfix& form, Span span);
  Value evaluate(const Negation& form, Span span);
  Value evaluate(const Not& form, Span span);
  Value evaluate(const Chain& form, Span span);
  Value evaluate(const Logic& form, Span span);
  Value evaluate(const KeyRange& form, Span span);
  Value element(Value& container, const Index& index, Span span);
  Value evaluate(const QuotationLiteral& form, Span span);

  const Site& site_;
  Variables& variables_;
  const Elements& elements_;
  const Operators& operators_;
  Quotations& quotations_;
  Calls& calls_;
};

}  // namespace hvm
