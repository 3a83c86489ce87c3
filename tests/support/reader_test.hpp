// support/reader_test.hpp: tests of the readers below the script language

#pragma once

#include "reader/evaluation.hpp"
#include "reader/selection.hpp"
#include "support/scripted_test.hpp"

namespace arrayfold::test {

/// A scalar as tests write it: "int 3", "real 2.5", "text abc", "value [1, 2]", "false".
inline std::string shown(const ScalarRef& scalar) {
  const auto printed = [](const Value& value) { return hvm::printed(value.record()); };
  switch (scalar.index()) {
    case int_scalar:
      return "int " + std::to_string(std::get<int_scalar>(scalar));
    case int64_scalar:
      return "int64 " + std::to_string(std::get<int64_scalar>(scalar));
    case real_scalar:
      return "real " + printed(Value(std::get<real_scalar>(scalar)));
    case value_scalar:
      return "value " + hvm::printed(*std::get<value_scalar>(scalar));
    case wide_text_scalar:
      return "wide " + printed(Value(std::get<wide_text_scalar>(scalar)));
    case text_scalar:
      return "text " + std::string(std::get<text_scalar>(scalar));
    default:
      return std::get<unreadable_scalar>(scalar) ? "true" : "false";
  }
}

class ReaderTest : public ScriptedTest {
 protected:
  /// The value of an argument, by the cell of an argument list.
  std::string evaluated(HostCodeSlot argument) {
    const HostCodeSlot list = code.list({argument});
    return evaluated_cell(list);
  }
  std::string evaluated_cell(const HostCodeSlot& slot) {
    ExpressionEvaluator evaluator(ctx(), frame_base);
    return shown(evaluate_cell(evaluator, &slot));
  }
  std::string evaluated_slot(const HostCodeSlot& slot) {
    ExpressionEvaluator evaluator(ctx(), frame_base);
    return shown(evaluate_slot(evaluator, &slot));
  }
  /// What `pairs` select in a table, printed.
  std::string selected(HostHash* table, const SelectorPairs& pairs) {
    Value result;
    select_entries(ctx(), table, pairs, result.address());
    return hvm::printed(result.record());
  }

  std::uint32_t frame_base = 0;
};

}  // namespace arrayfold::test
