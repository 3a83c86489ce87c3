// script/run/quotations.hpp: quotations as values

#pragma once

#include <string>
#include <vector>

#include "script/explain/warning_table.hpp"
#include "script/run/variables.hpp"

namespace hvm {

/// Makes values of quotations, and looks at those that are handed to a module.
class Quotations {
 public:
  Quotations(const Site& site, Scopes& scopes, const Variables& variables)
      : site_(site), scopes_(scopes), variables_(variables) {}

  Value value_of(const QuotationLiteral& form);
  /// Throws `ScriptError` when one of the values is a quotation whose scope has ended.
  void require_live(const std::vector<Value>& values, Span span) const;
  /// The quotations among the first two arguments of a call.
  QuotedArguments quoted(const std::vector<Value>& arguments) const;

 private:
  /// Reads variables where a quotation was written. It lasts as long as the quotation.
  ReadVariable reader_of(const Code& code) const;

  const Site& site_;
  Scopes& scopes_;
  const Variables& variables_;
};

}  // namespace hvm
