// script/explain/warning_subjects.hpp: what the conditions of warnings look at, and what they find

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "script/explain/columns.hpp"
#include "script/explain/data_walk.hpp"
#include "script/module/array_module.hpp"
#include "script/module/module_functions.hpp"

namespace hvm {

/// What a condition has found: the sentence, and where it leads when that is not the row's own.
struct Finding {
  std::string message;
  std::string page = {};          // empty: the row's
  std::optional<Span> span = {};  // none: that of the call or the operator
  SourcePtr source = {};          // null: the running one
};
using Found = std::optional<Finding>;

/// Gives the value of a variable in a quotation; nil where it has none.
using ReadVariable = std::function<Value(const Variable&)>;

/// The quotations among the arguments of a call.
struct QuotedArguments {
  const Quotation* dtype = nullptr;  // the first argument
  bool is_dtype_variable = false;    // the name there is a variable with a value
  ReadVariable read_in_dtype;
  const Quotation* data = nullptr;  // the second argument
  SourcePtr data_source;
  ReadVariable read_in_data;
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
  std::size_t most_arguments;  // that the function looks at
  Columns& columns;
  DataElements elements;       // of the result
  const Expressions* written;  // the arguments; null where the script has no such call
  const ModuleFunctions& module;
  mutable std::optional<DataLook> looked_at = {};  // the table of data, once it has been walked

  std::string_view text() const { return caller.source->text(span); }
  bool has_table() const { return arguments.size() > 1 && arguments[1].is_table(); }
  /// What the table of data is like. Requires: there is one.
  const DataLook& data() const {
    if (!looked_at) looked_at = look_at_data(table_of(arguments[1].record()), elements);
    return *looked_at;
  }
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

}  // namespace hvm
