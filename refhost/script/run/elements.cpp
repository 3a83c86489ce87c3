// script/run/elements.cpp: the entries of tables and the elements of objects

#include "script/run/elements.hpp"

#include <fmt/format.h>

#include "script/library/characters.hpp"
#include "script/library/table_circles.hpp"
#include "script/module/array_module.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

std::string index_count(ValueSpan indices) { return counted(indices.size(), "index", "indices"); }

}  // namespace

Value Elements::read(Value& container, ValueSpan indices, Span span) const {
  if (container.is_table()) {
    require_one_key(indices, span);
    const HostValue* found = find(table_of(container.record()), indices[0].record());
    return found ? Value::sharing(*found) : Value();
  }
  if (container.is_string()) return site_.placed(span, [&] { return character_at(container, indices); });
  if (!container.is_object()) site_.fail(fmt::format("{} has no elements", kind_in_words(container)), span);
  return site_.placed(span, [&] {
    const ModuleCaller caller = site_.caller(span);
    const bool has_fewer = checks_.indices(caller, container, indices);
    if (has_fewer) warnings_.element(site_.source(), span, {untraced(caller), container, indices, nullptr});
    if (auto element = read_element(caller, container, indices)) return std::move(*element);
    throw Failure(fmt::format("{} gives no element with {}", described(caller, container), index_count(indices)));
  });
}

Value Elements::read_range(const Value& container, const Value& low, const Value& high, Span span) const {
  if (container.is_table()) site_.fail("a range of keys is allowed in quotations only", span);
  if (!container.is_string())
    site_.fail(
        fmt::format("a range selects characters of a string, and this is {}{}", kind_in_words(container),
                    container.is_object() ? "; slice(a, from, to) takes a part of an array, after use \"arrays\"" : ""),
        span);
  return site_.placed(span, [&] { return characters_between(container, low, high); });
}

void Elements::write(const ElementAssignment& form, Value& container, ValueSpan indices, Value& value) const {
  const Span span = form.index_span;
  if (container.is_table()) {
    require_one_key(indices, span);
    require_no_circle(form, container, value);
    return write_entry(container, indices[0], value, span);
  }
  if (!container.is_object())
    site_.fail(fmt::format("{} has no elements to assign to", kind_in_words(container)), form.container->span);
  site_.placed(span, [&] {
    const ModuleCaller caller = site_.caller(span);
    const bool has_fewer = checks_.indices(caller, container, indices);
    if (has_fewer || warnings_.is_notable(container, value))
      warnings_.element(site_.source(), span, {untraced(caller), container, indices, &value});
    if (write_element(caller, container, indices, value)) return;
    if (!value.is_number())
      throw Failure(
          fmt::format("{} takes numbers as elements, not {}", described(caller, container), described(caller, value)));
    throw Failure(
        fmt::format("{} has no element to write with {}", described(caller, container), index_count(indices)));
  });
}

void Elements::write_entry(Value& table, const Value& key, const Value& value, Span key_span) const {
  require_key(key, key_span);
  set_entry(table_of(table.record()), key.record(), value.record());
}

void Elements::require_key(const Value& key, Span span) const {
  if (!is_key(key.record()))
    site_.fail(fmt::format("{} is not a key of a table{}", kind_in_words(key),
                           number_in_array(untraced(site_.caller(span)), key)),
               span);
}

void Elements::require_one_key(ValueSpan indices, Span span) const {
  if (indices.size() != 1) site_.fail("a table takes one key", span);
  require_key(indices[0], span);
}

void Elements::require_no_circle(const ElementAssignment& form, const Value& table, const Value& value) const {
  const HostHash* hash = table_of(table.record());
  // A variable's table with two references, the variable's and the one of `table`, lies in no other table.
  const bool is_variable = std::holds_alternative<Variable>(form.container->form);
  const bool may_lie_in_value = !is_variable || references(hash) > 2;
  const bool is_value = table_of(value.record()) == hash;
  if (is_value || (may_lie_in_value && holds_table(value, hash)))
    site_.fail("a table cannot hold itself", form.value->span);
}

}  // namespace hvm
