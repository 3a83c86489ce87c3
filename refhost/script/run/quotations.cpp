// script/run/quotations.cpp: quotations as values

#include "script/run/quotations.hpp"

namespace hvm {

Value Quotations::value_of(const QuotationLiteral& form) {
  return hvm::value_of(scopes_.code_of(form.quotation, site_.source(), variables_));
}

void Quotations::require_live(const std::vector<Value>& values, Span span) const {
  for (const Value& value : values)
    if (value.tag() == ValueTag::code && !scopes_.find_code(value))
      site_.fail("a quotation cannot be used after the fn in which it was written has returned", span);
}

ReadVariable Quotations::reader_of(const Code& code) const {
  return [this, frame = code.frame](const Variable& variable) {
    const FrameScope scope(scopes_, frame);
    const Slot& slot = scopes_.slot_of(variable);
    return slot.is_set ? slot.value : Value();
  };
}

QuotedArguments Quotations::quoted(const std::vector<Value>& arguments) const {
  QuotedArguments quoted;
  const Code* dtype = arguments.empty() ? nullptr : scopes_.find_code(arguments[0]);
  const Code* data = arguments.size() < 2 ? nullptr : scopes_.find_code(arguments[1]);
  if (dtype) {
    quoted.dtype = dtype->quotation.get();
    const FrameScope frame(scopes_, dtype->frame);  // where its variables are
    const auto* name = std::get_if<Variable>(&quoted.dtype->subject->form);
    quoted.is_dtype_variable = name && variables_.state(*name) != VariableState::unset;
    quoted.read_in_dtype = reader_of(*dtype);
  }
  if (data) {
    quoted.data = data->quotation.get();
    quoted.data_source = data->source;
    quoted.read_in_data = reader_of(*data);
  }
  return quoted;
}

}  // namespace hvm
