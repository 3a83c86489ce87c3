// script/value_kinds.cpp: what kind of value a script has in its hands

#include "script/value_kinds.hpp"

#include <fmt/format.h>

#include <unordered_set>

#include "script/diagnostics.hpp"

namespace hvm {

std::string kind_name(const Value& value) {
  if (value.is_string()) return "string";
  switch (value.tag()) {
    case ValueTag::integer:
      return "int";
    case ValueTag::integer64:
      return "int64";
    case ValueTag::real:
      return "real";
    case ValueTag::table:
      return "table";
    case ValueTag::nil:
      return "nil";
    case ValueTag::code:
      return "code";
    case ValueTag::object:
      return type_name_of(object_of(value.record()));
    default:
      return "value";
  }
}

std::string kind_in_words(const Value& value) {
  const std::string name = kind_name(value);
  if (value.is_nil() || value.is_object()) return name;
  return fmt::format("{} {}", name.front() == 'i' ? "an" : "a", name);
}

bool truth(const Value& value) {
  if (value.is_nil()) return false;
  HostValue record = value.record();
  if (value.is_number()) return HVM_AsBool(&record) != 0;
  if (value.is_object())
    throw Failure(fmt::format("a condition must be a number, and {} is an array or another object", kind_name(value)));
  throw Failure(fmt::format("a condition must be a number, not {}", kind_in_words(value)));
}

bool holds_table(const Value& value, const HostHash* table) {
  const HostHash* outermost = table_of(value.record());
  if (!outermost) return false;
  std::unordered_set<const HostHash*> seen{outermost};
  std::vector<const HostHash*> waiting{outermost};
  while (!waiting.empty()) {
    const HostHash* current = waiting.back();
    waiting.pop_back();
    if (current == table) return true;
    TableWalk walk(current);
    while (const Entry entry = walk.next()) {
      const HostHash* inner = table_of(*entry.value);
      if (inner && seen.insert(inner).second) waiting.push_back(inner);
    }
  }
  return false;
}

}  // namespace hvm
