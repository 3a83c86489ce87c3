// script/printer.cpp: any value as text

#include "script/printer.hpp"

#include <fmt/format.h>

#include <unordered_set>

#include "script/array_text.hpp"
#include "script/guards.hpp"
#include "script/string_literals.hpp"
#include "script/value_kinds.hpp"

namespace hvm {
namespace {

/// A table that is being written.
struct OpenTable {
  const HostHash* table;
  TableWalk walk;
  int position = 0;

  explicit OpenTable(const HostHash* opened) : table(opened), walk(opened) {}
};

bool is_at_position(const HostValue& key, int position) {
  HostValue record = key;
  return key.tag == ValueTag::integer && HVM_AsInt(&record) == position;
}

}  // namespace

std::string Printer::text(const Value& value) const {
  if (value.is_string()) return std::string(text_of(value.record()));
  return text_in_table(value);
}

std::string Printer::text_in_table(const Value& value) const {
  if (value.is_table()) return table(table_of(value.record()));
  return leaf(value.record());
}

std::string Printer::leaf(const HostValue& record) const {
  HostValue copy = record;
  const Value value = Value::sharing(record);
  if (value.is_string()) return string_literal(text_of(record));
  switch (record.tag) {
    case ValueTag::integer:
    case ValueTag::integer64:
      return fmt::format("{}", HVM_AsInt64(&copy));
    case ValueTag::real:
      return real_text(HVM_AsDouble(&copy), detail_);
    case ValueTag::nil:
      return "nil";
    case ValueTag::object:
      return object(record);
    default:
      return fmt::format("<{}>", kind_name(value));
  }
}

std::string Printer::object(const HostValue& record) const {
  Value value = Value::sharing(record);
  if (has_guards_) guard_extents(caller_, value);
  return array_text(caller_, value, detail_);
}

std::string Printer::table(const HostHash* outermost) const {
  std::string out = "[";
  std::vector<OpenTable> open{OpenTable(outermost)};
  std::unordered_set<const HostHash*> path{outermost};
  while (!open.empty()) {
    const Entry entry = open.back().walk.next();
    if (!entry) {
      out += ']';
      path.erase(open.back().table);
      open.pop_back();
      continue;
    }
    if (open.back().position > 0) out += ", ";
    const bool is_positional = is_at_position(*entry.key, open.back().position++);
    if (!is_positional) out += leaf(*entry.key) + ": ";
    const HostHash* inner = table_of(*entry.value);
    if (!inner) {
      out += leaf(*entry.value);
    } else if (path.insert(inner).second) {
      out += '[';
      open.emplace_back(inner);
    } else {
      out += "[...]";
    }
  }
  return out;
}

}  // namespace hvm
