// script/data/table_building.cpp: values and tables that are made of data

#include "script/data/table_building.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <new>

#include "script/data/data_error.hpp"

namespace hvm {
namespace {

constexpr std::size_t longest_text = std::numeric_limits<std::int32_t>::max() - 1;
constexpr std::size_t most_entries = std::numeric_limits<std::int32_t>::max();

HostValue& required(HostValue* slot) {
  if (!slot) throw std::bad_alloc();
  return *slot;
}

}  // namespace

Value new_table(std::size_t expected_entries) {
  Value table = Value::table(static_cast<int>(std::min(expected_entries, most_entries)));
  if (table.is_nil()) throw std::bad_alloc();
  return table;
}

Value new_text(std::string_view text) {
  if (text.size() > longest_text)
    throw DataError(fmt::format("a string cannot have {} bytes; it has {} at most", text.size(), longest_text));
  Value made(text);
  if (made.is_nil()) throw std::bad_alloc();
  return made;
}

Value integer_of(std::int64_t x) noexcept {
  return x == static_cast<std::int32_t>(x) ? Value(static_cast<int>(x)) : Value(x);
}

HostValue& entry(HostHash* table, std::size_t position) {
  if (position >= most_entries) throw std::bad_alloc();
  return required(slot(table, static_cast<int>(position)));
}

HostValue& entry(HostHash* table, std::string_view key) { return required(slot(table, key)); }

void put(HostHash* table, std::size_t position, Value value) {
  HostValue& place = entry(table, position);
  release(place);
  place = value.give_up();
}

void put(HostHash* table, std::string_view key, Value value) {
  HostValue& place = entry(table, key);
  release(place);
  place = value.give_up();
}

void put_real(HostHash* table, std::size_t position, double x) {
  HostValue& place = entry(table, position);
  place.tag = ValueTag::real;
  arrayfold::store<double>(place.payload, x);
}

}  // namespace hvm
