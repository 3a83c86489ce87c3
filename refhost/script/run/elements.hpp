// script/run/elements.hpp: the entries of tables and the elements of objects

#pragma once

#include "script/explain/warnings.hpp"
#include "script/module/array_module.hpp"
#include "script/run/site.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

/// Reads and writes entries and elements. Everything that fails is a `ScriptError`.
class Elements {
 public:
  Elements(Site& site, const ArrayChecks& checks, Warnings& warnings)
      : site_(site), checks_(checks), warnings_(warnings) {}

  /// `container[indices]`, whose brackets are at `span`. An absent entry of a table is nil. The element of a string is
  /// a character.
  Value read(Value& container, ValueSpan indices, Span span) const;
  /// `container[low:high]`, the characters of a string from `low` to before `high`. An end that is nil is left open.
  Value read_range(const Value& container, const Value& low, const Value& high, Span span) const;
  /// `container[indices] = value`, as `form` writes it.
  void write(const ElementAssignment& form, Value& container, ValueSpan indices, Value& value) const;
  /// Writes an entry of a table. `key_span` is the place of the key.
  void write_entry(Value& table, const Value& key, const Value& value, Span key_span) const;

 private:
  void require_key(const Value& key, Span span) const;
  void require_one_key(ValueSpan indices, Span span) const;
  void require_no_circle(const ElementAssignment& form, const Value& table, const Value& value) const;

  Site& site_;
  const ArrayChecks& checks_;
  Warnings& warnings_;
};

}  // namespace hvm
