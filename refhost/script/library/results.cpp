// script/library/results.cpp: the texts and tables that built-in functions give

#include "script/library/results.hpp"

#include <limits>
#include <new>

namespace hvm {
namespace {

constexpr std::size_t longest_text = std::numeric_limits<std::int32_t>::max();

Value made(Value value) {
  if (value.is_nil()) throw std::bad_alloc();
  return value;
}

void store(HostValue* place, const HostValue& value) {
  if (!place) throw std::bad_alloc();
  assign(*place, value);
  if (place->tag != value.tag) throw std::bad_alloc();
}

}  // namespace

Value text_value(std::string_view text) {
  if (text.size() > longest_text) throw std::bad_alloc();
  return made(Value(text));
}

Value empty_table() { return made(Value::table()); }

void put(HostHash* table, const HostValue& key, const HostValue& value) { store(slot(table, key), value); }

void append_value(HostHash* table, const HostValue& value) { store(slot(table, next_position(table)), value); }

}  // namespace hvm
