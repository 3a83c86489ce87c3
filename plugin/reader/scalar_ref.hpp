// reader/scalar_ref.hpp: the value of an expression, and how host values are read, written and passed on

#pragma once

#include <string_view>
#include <variant>

#include "host/host_operations.hpp"

namespace arrayfold {

/// The value of an expression: false when it cannot be read, a number, a host value, or text. Views and host values are
/// not owned: they belong to the tree, to the variable, or to the evaluator that made the record.
using ScalarRef =
    std::variant<bool, std::int32_t, std::int64_t, double, HostValue*, std::u16string_view, std::string_view>;

/// The indices of the alternatives.
enum ScalarIndex : std::size_t {
  unreadable_scalar = 0,
  int_scalar = 1,
  int64_scalar = 2,
  real_scalar = 3,
  value_scalar = 4,
  wide_text_scalar = 5,
  text_scalar = 6,
};

/// Reads a host value: its tag selects the form, and every tag without one gives the record itself. Null is unreadable.
ScalarRef read_value(HostValue* value);

/// Writes `scalar` into `destination`; what could not be read leaves it as it was.
void write_scalar(HostContext ctx, HostValue* destination, const ScalarRef& scalar);

/// Writes the literal in `slot` into `destination`; what is no literal leaves it as it was.
void write_literal(HostContext ctx, HostValue* destination, const HostCodeSlot& slot);

/// A temporary record of the module's own: nil at first, dropped at the end of the scope.
class TemporaryValue {
 public:
  TemporaryValue();
  ~TemporaryValue();
  TemporaryValue(const TemporaryValue&) = delete;
  TemporaryValue& operator=(const TemporaryValue&) = delete;

  HostValue* record() { return &record_; }
  /// Passes the value into a slot of the host's. With `copy` content is duplicated, otherwise it moves there.
  void pass_to(HostContext ctx, HostValue* destination, bool copy);

 private:
  HostValue record_{};
};

/// Releases the content of a table's slot before something else is written there, and leaves nil: the host may keep the
/// tag, and released content must not be released again.
inline void free_content(HostContext ctx, HostValue* slot) {
  if (slot->tag == ValueTag::nil) return;
  HVM_FreeObjectContent(ctx, slot);
  slot->tag = ValueTag::nil;
}

}  // namespace arrayfold
