// script/printer.hpp: any value as text

#pragma once

#include <string>

#include "script/module_calls.hpp"
#include "script/number_text.hpp"

namespace hvm {

/// Shows values for one place of a script. With guards, arrays are shown only when their extents are sound.
class Printer {
 public:
  Printer(const ModuleCaller& caller, Detail detail, bool has_guards)
      : caller_(caller), detail_(detail), has_guards_(has_guards) {}

  /// A string as it stands, everything else as in a table. Tables are written `[1, "a": 2]`; a table inside itself is
  /// `[...]`. Does not recurse, however deep the tables are. Throws `Failure`.
  std::string text(const Value& value) const;
  /// As `text`, but with strings in quotation marks.
  std::string text_in_table(const Value& value) const;

 private:
  std::string leaf(const HostValue& record) const;
  std::string table(const HostHash* outermost) const;
  std::string object(const HostValue& record) const;

  ModuleCaller caller_;
  Detail detail_;
  bool has_guards_;
};

}  // namespace hvm
