// script/explain/warning_table.hpp: every warning there is: its name, when it comes, what it says, and its page

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "script/explain/columns.hpp"
#include "script/explain/description.hpp"
#include "script/module/array_module.hpp"

namespace hvm {

/// What a condition has found: the sentence, and where it leads when that is not the row's own.
struct Finding {
  std::string message;
  std::string page = {};          // empty: the row's
  std::optional<Span> span = {};  // none: that of the call or the operator
  SourcePtr source = {};          // null: the running one
};

/// The quotations among the arguments of a call.
struct QuotedArguments {
  const Quotation* dtype = nullptr;  // the first argument
  bool is_dtype_variable = false;    // the name there is a variable with a value
  const Quotation* data = nullptr;   // the second argument
  SourcePtr data_source;
};

/// What in a table of data is read in another way than it looks.
struct DataFault {
  enum class Form { none, no_number, ragged, named };
  Form form = Form::none;
  std::string what;  // in words: a string, `"x"`, or two counts
};

/// A call of a function that the module has answered.
struct AnsweredCall {
  ModuleCaller caller;
  Span span;
  const std::string& function;
  std::vector<Value>& arguments;
  Value& result;
  bool is_used;  // something takes the value
  QuotedArguments quoted;
  const FunctionEntry* entry;  // null without a description
  Columns& columns;
  mutable std::optional<DataFault> data_fault = {};  // of a table of data, once it has been walked

  std::string_view text() const { return caller.source->text(span); }
};

/// An operator with an array among its operands, before the module is asked.
struct ArrayOperation {
  ModuleCaller caller;
  BinaryOperator op;
  Value& left;
  Value& right;
  // Where the operands are written: in a chain before and behind a link, or in `variable op= value`. Null where
  // neither.
  const Chain* chain = nullptr;
  const Link* link = nullptr;
  const VariableAssignment* assignment = nullptr;

  bool is_compound() const { return assignment != nullptr; }
  /// The operands in the words of the script; `otherwise` where they are too long for a sentence.
  std::string left_text(std::string_view otherwise) const;
  std::string right_text(std::string_view otherwise) const;
};

/// An element that is read or written.
struct ElementAccess {
  ModuleCaller caller;
  Value& object;
  ValueSpan indices;
  Value* written;  // null: it is read
};

/// A method of an array that the module has answered.
struct AnsweredMethod {
  ModuleCaller caller;
  Span span;
  const std::string& method;
  bool is_used;
};

/// When the condition of a row about calls is looked at: what is seen at once, so that most calls cost next to nothing.
enum class Sign : std::uint8_t {
  call,             // at each call of its functions
  used_value,       // when something takes the value
  real_argument,    // when an argument is a real
  three_arguments,  // when there are three arguments
  cut_integers,     // when integers from the first argument to the second one have no whole spacing
  odd_powers,       // the same, or when such powers of ten are no integers
  integer_array,    // when the first argument is an array of integers
  odd_extreme,      // when the result is an int64, or the smallest normal number
  odd_data,         // when the second argument is a table of other things than numbers in longer rows of one length
  quoted_data,      // when the second argument is a quotation
  // Of all functions alike:
  nothing,         // when the call gave nil
  more_arguments,  // when there are more arguments than the function looks at
  column,          // when an argument may be a column
};

/// Whether a call bears one of the signs before `nothing`.
bool bears(Sign sign, const std::vector<Value>& arguments, const Value& result, bool is_used) noexcept;

struct CallCondition {
  Sign sign;
  std::vector<std::string_view> functions;  // empty: all
  std::optional<Finding> (*find)(const AnsweredCall& call);
};
struct OperationCondition {
  std::optional<Finding> (*find)(const ArrayOperation& operation);
};
struct ElementCondition {
  std::optional<Finding> (*find)(const ElementAccess& access);
};
struct MethodCondition {
  std::optional<Finding> (*find)(const AnsweredMethod& call);
};

struct WarningRow {
  std::string_view name;
  std::string_view sentence;  // for the list of all; `a` is an array, `n` a number
  std::string_view page;      // below docs, `NAME` being the function; behind the comma its section
  std::variant<CallCondition, OperationCondition, ElementCondition, MethodCondition> condition;
};

/// All rows, in the order in which they are listed and looked at.
const std::vector<WarningRow>& warning_table();

}  // namespace hvm
