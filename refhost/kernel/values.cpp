// kernel/values.cpp: records with an owner

#include <limits>
#include <new>
#include <utility>

#include "kernel/objects.hpp"
#include "kernel/records.hpp"
#include "kernel/strings.hpp"
#include "kernel/tables.hpp"

namespace hvm {

using namespace kernel;

namespace {

constexpr std::size_t longest_text = std::numeric_limits<std::int32_t>::max() - 1;

/// The length of a text is a number of 32 bits.
template <class Char>
std::basic_string_view<Char> limited(std::basic_string_view<Char> text) {
  if (text.size() > longest_text) throw std::bad_alloc();
  return text;
}

/// `record`, which is nil when memory was missing.
HostValue made(const HostValue& record) {
  if (record.tag == ValueTag::nil) throw std::bad_alloc();
  return record;
}

}  // namespace

Value::Value(std::string_view text) : record_(made(owned_string(limited(text)))) {}
Value::Value(std::u16string_view text) : record_(made(owned_string(limited(text)))) {}

Value Value::sharing_content(const HostValue& record) {
  Value other(hvm::shared(record));
  if (other.is_nil() && record.tag != ValueTag::nil) throw std::bad_alloc();
  return other;
}

Value Value::taking(HostValue& record) noexcept { return Value(std::exchange(record, nil_record())); }
Value Value::literal(std::string_view text) noexcept { return Value(literal_string(text)); }
Value Value::literal(std::u16string_view text) noexcept { return Value(literal_string(text)); }
Value Value::string_record(std::string_view text) { return Value(made(kernel::string_record(limited(text)))); }
Value Value::table(int capacity) { return Value(made(table_record(new_table(capacity)))); }

Value Value::table_of(const std::vector<Value>& values) {
  Value table = Value::table(static_cast<int>(values.size()));
  int key = 0;
  for (const Value& value : values) set_entry(hvm::table_of(table.record()), key++, value.record());
  return table;
}

Value Value::object(HostContext, const char* type_name) noexcept { return object(new_object(type_named(type_name))); }

Value Value::object(HostAny* any) noexcept {
  hold_object(any);
  return Value(any ? record_of<HostAny*>(ValueTag::object, any) : nil_record());
}

bool Value::is_string() const noexcept { return is_text(record_); }

HostValue* records_of(std::vector<Value>& values) noexcept {
  return values.empty() ? nullptr : values.front().address();
}

}  // namespace hvm
