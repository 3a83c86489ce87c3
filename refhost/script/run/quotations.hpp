// script/run/quotations.hpp: quotations as values

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "script/run/variables.hpp"

namespace hvm {

/// Takes a warning, as text with its place.
using Warn = std::function<void(const std::string& report)>;

/// Makes values of quotations, and looks at those that are handed to a module.
class Quotations {
 public:
  /// Without `warn`, warnings are lost.
  Quotations(const Site& site, Scopes& scopes, const Variables& variables, Warn warn)
      : site_(site), scopes_(scopes), variables_(variables), warn_(std::move(warn)) {}

  Value value_of(const QuotationLiteral& form);
  /// Throws `ScriptError` when one of the values is a quotation whose scope has ended.
  void require_live(const std::vector<Value>& values, Span span) const;
  /// Warns, once, when the module drops a literal of a quotation among the arguments.
  void warn_of_dropped_elements(const std::string& function, const std::vector<Value>& arguments);

 private:
  const Site& site_;
  Scopes& scopes_;
  const Variables& variables_;
  Warn warn_;
  bool has_warned_ = false;
};

}  // namespace hvm
