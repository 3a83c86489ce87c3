// script/data/json_text.cpp: values as JSON

#include "script/data/json_text.hpp"

#include <fmt/format.h>

#include <cmath>
#include <string_view>
#include <vector>

#include "script/data/data_error.hpp"
#include "script/data/json_limits.hpp"
#include "script/data/number_form.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

void append_escaped(std::string& out, char c) {
  switch (c) {
    case '"':
    case '\\':
      return void((out += '\\') += c);
    case '\n':
      return void(out += "\\n");
    case '\r':
      return void(out += "\\r");
    case '\t':
      return void(out += "\\t");
    default:
      out += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
  }
}

bool needs_escape(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; }

void append_string(std::string& out, std::string_view text) {
  if (first_invalid_utf8(text) != std::string_view::npos) throw DataError("a string is not valid UTF-8");
  append_json_string(out, text);
}

/// Whether a table is a list; an error when it is no object either.
bool is_list(const HostHash* table) {
  if (table->index_count == entry_count(table)) return true;
  TableWalk walk(table);
  while (const Entry entry = walk.next()) {
    const Value key = Value::sharing(*entry.key);
    if (key.is_string()) continue;
    throw DataError(
        fmt::format("a table is a list with the keys 0, 1, 2, ... or an object with strings as keys; this one has the "
                    "key {}",
                    printed(key.record())));
  }
  return false;
}

class JsonWriter {
 public:
  JsonWriter(std::optional<std::size_t> indent, const ObjectText& object_text)
      : indent_(indent), object_text_(object_text) {}

  std::string text(const Value& value) {
    add(value.record());
    while (!open_.empty()) {
      Open& top = open_.back();
      const Entry entry = top.walk.next();
      if (!entry) {
        close();
        continue;
      }
      if (top.has_entries) out_ += ',';
      top.has_entries = true;
      new_line();
      if (!top.is_list) {
        append_string(out_, text_of(*entry.key));
        out_ += indent_ ? ": " : ":";
      }
      add(*entry.value);
    }
    return std::move(out_);
  }

 private:
  struct Open {
    TableWalk walk;
    bool is_list;
    bool has_entries = false;
  };

  void add(const HostValue& record) {
    HostValue copy = record;
    const Value value = Value::sharing(record);
    if (value.is_string()) return append_string(out_, text_of(record));
    switch (record.tag) {
      case ValueTag::integer:
      case ValueTag::integer64:
        return append_integer(out_, HVM_AsInt64(&copy));
      case ValueTag::real:
        return add_real(HVM_AsDouble(&copy));
      case ValueTag::nil:
        return void(out_ += "null");
      case ValueTag::table:
        return open(table_of(record));
      case ValueTag::object:
        return object_text_(out_, record);
      default:
        throw DataError(fmt::format("{} has no form in JSON", kind_in_words(value)));
    }
  }

  void add_real(double x) {
    if (std::isfinite(x))
      append_real(out_, x);
    else
      out_ += "null";
  }

  void open(const HostHash* table) {
    if (open_.size() >= deepest_json)
      throw DataError(fmt::format("the table nests deeper than {} levels", deepest_json));
    const bool opens_list = is_list(table);
    out_ += opens_list ? '[' : '{';
    open_.push_back({TableWalk(table), opens_list});
  }

  void close() {
    const Open closed = open_.back();
    open_.pop_back();
    if (closed.has_entries) new_line();
    out_ += closed.is_list ? ']' : '}';
  }

  void new_line() {
    if (!indent_) return;
    out_ += '\n';
    out_.append(*indent_ * open_.size(), ' ');
  }

  std::optional<std::size_t> indent_;
  const ObjectText& object_text_;
  std::string out_;
  std::vector<Open> open_;
};

}  // namespace

void append_json_string(std::string& out, std::string_view text) {
  out += '"';
  std::size_t done = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!needs_escape(text[i])) continue;
    out += text.substr(done, i - done);
    append_escaped(out, text[i]);
    done = i + 1;
  }
  out += text.substr(done);
  out += '"';
}

std::string json_text(const Value& value, std::optional<std::size_t> indent, const ObjectText& object_text) {
  return JsonWriter(indent, object_text).text(value);
}

}  // namespace hvm
