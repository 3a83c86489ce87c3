// script/run/quotations.cpp: quotations as values

#include "script/run/quotations.hpp"

#include <fmt/format.h>

#include "script/module/array_module.hpp"

namespace hvm {

Value Quotations::value_of(const QuotationLiteral& form) {
  return hvm::value_of(scopes_.code_of(form.quotation, site_.source(), variables_));
}

void Quotations::require_live(const std::vector<Value>& values, Span span) const {
  for (const Value& value : values)
    if (value.tag() == ValueTag::code && !scopes_.find_code(value))
      site_.fail("a quotation cannot be used after the fn in which it was written has returned", span);
}

void Quotations::warn_of_dropped_elements(const std::string& function, const std::vector<Value>& arguments) {
  if (has_warned_ || !warn_ || arguments.size() < 2) return;
  const Code* dtype = scopes_.find_code(arguments[0]);
  const Code* data = scopes_.find_code(arguments[1]);
  const Expression* dropped = dtype && data ? dropped_element(function, *dtype->quotation, *data->quotation) : nullptr;
  if (!dropped) return;
  has_warned_ = true;
  const auto* narrow = std::get_if<IntegerLiteral>(&dropped->form);
  const std::int64_t number = narrow ? narrow->value : std::get<Integer64Literal>(dropped->form).value;
  warn_(warning_report(fmt::format("a data literal of reals drops the integer {0}; write {0}.0 or use a table", number),
                       *data->source, dropped->span));
}

}  // namespace hvm
