// script/text/printer.cpp: any value as text

#include "script/text/printer.hpp"

#include <fmt/format.h>

#include <unordered_set>

#include "script/stop/interruption.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/value_kinds.hpp"

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

/// A literal of at most so many characters of a text. A shortened one tells how many there are.
std::string shortened_literal(std::string_view text, std::size_t most) {
  const std::size_t end = text.size() > most ? character_offset(text, most) : text.size();
  if (end == text.size()) return string_literal(text);
  return fmt::format("{}... ({} characters)", string_literal(text.substr(0, end)), character_count(text));
}

}  // namespace

std::string Printer::text(const Value& value) const {
  if (value.is_string()) return std::string(text_of(value.record()));
  return text_in_table(value);
}

std::string Printer::text_in_table(const Value& value) const { return text_in_table(value, Limits{}); }

std::string Printer::shortened_text(const Value& value, std::size_t most_characters) const {
  return text_in_table(value, Limits{most_characters, most_characters * 5});
}

std::string Printer::text_in_table(const Value& value, const Limits& limits) const {
  if (value.is_table()) return table(table_of(value.record()), limits);
  std::string out;
  append_leaf(out, value.record(), limits);
  return out;
}

void Printer::append_leaf(std::string& out, const HostValue& record, const Limits& limits) const {
  HostValue copy = record;
  const Value value = Value::sharing(record);
  if (value.is_string()) return void(out += shortened_literal(text_of(record), limits.string));
  switch (record.tag) {
    case ValueTag::integer:
    case ValueTag::integer64:
      return void(out += fmt::format("{}", HVM_AsInt64(&copy)));
    case ValueTag::real:
      return void(out += real_text(HVM_AsDouble(&copy), detail_));
    case ValueTag::nil:
      return void(out += "nil");
    case ValueTag::object:
      return object_text_(out, record);
    default:
      out += fmt::format("<{}>", kind_name(value));
  }
}

std::string Printer::table(const HostHash* outermost, const Limits& limits) const {
  std::string out = "[";
  std::vector<OpenTable> open{OpenTable(outermost)};
  std::unordered_set<const HostHash*> path{outermost};
  while (!open.empty()) {
    obey_interruption();
    const Entry entry = open.back().walk.next();
    if (!entry) {
      out += ']';
      path.erase(open.back().table);
      open.pop_back();
      continue;
    }
    if (open.back().position > 0) out += ", ";
    if (out.size() > limits.table) {
      out += "...";
      out.append(open.size(), ']');
      return out + fmt::format(" ({} entries)", entry_count(outermost));
    }
    const bool is_positional = is_at_position(*entry.key, open.back().position++);
    if (!is_positional) append_leaf(out, *entry.key, limits), out += ": ";
    const HostHash* inner = table_of(*entry.value);
    if (!inner) {
      append_leaf(out, *entry.value, limits);
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
