// script/module/trace_values.cpp: values as a trace tells them

#include "script/module/trace_values.hpp"

#include <fmt/format.h>

#include <cmath>

#include "script/data/json_text.hpp"
#include "script/data/number_form.hpp"
#include "script/module/array_module.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::size_t most_text = 80;  // bytes, or units of 16 bits
constexpr std::size_t most_entries = 8;
constexpr int deepest_told = 3;

/// The front of a text, cut between two characters.
std::string_view front_of(std::string_view text) {
  if (text.size() <= most_text) return text;
  std::size_t cut = most_text;
  while (cut > most_text - 4 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return text.substr(0, cut);
}

void append_front(std::string& out, const char* name, std::string_view front, std::size_t length) {
  if (first_invalid_utf8(front) == std::string_view::npos) {
    out += fmt::format("\"{}\":", name);
    append_json_string(out, front);
  } else {
    out += "\"hex\":\"";
    for (const char c : front) out += fmt::format("{:02x}", static_cast<unsigned char>(c));
    out += '"';
  }
  if (length > front.size()) out += fmt::format(",\"length\":{}", length);
}

const char* string_kind(ValueTag tag) {
  switch (tag) {
    case ValueTag::string_record:
      return "string record";
    case ValueTag::converted_string:
      return "converted string";
    case ValueTag::wide_string:
      return "wide string";
    default:
      return "string";
  }
}

class ValueWriter {
 public:
  ValueWriter(std::string& out, const QuotationText& quotation_text) : out_(out), quotation_text_(quotation_text) {}

  void value(const HostValue& record, int depth) {
    switch (record.tag) {
      case ValueTag::integer:
        return integer("int", arrayfold::load<std::int32_t>(record.payload));
      case ValueTag::integer64:
        return integer("int64", arrayfold::load<std::int64_t>(record.payload));
      case ValueTag::real:
        out_ += "{\"kind\":\"real\",\"value\":";
        append_traced_real(out_, arrayfold::load<double>(record.payload));
        return void(out_ += '}');
      case ValueTag::string:
      case ValueTag::string_record:
      case ValueTag::converted_string:
      case ValueTag::wide_string:
        return string(record);
      case ValueTag::nil:
        return void(out_ += "{\"kind\":\"nil\"}");
      case ValueTag::table:
        return table(table_of(record), depth);
      case ValueTag::code:
        return quotation(record);
      case ValueTag::object:
        return object(record);
      default:
        return append("{{\"kind\":\"value\",\"tag\":{}}}", static_cast<int>(record.tag));
    }
  }

 private:
  template <class... Arguments>
  void append(const char* form, const Arguments&... arguments) {
    out_ += fmt::format(form, arguments...);
  }

  void integer(const char* kind, std::int64_t x) { append("{{\"kind\":\"{}\",\"value\":{}}}", kind, x); }

  void string(const HostValue& record) {
    append("{{\"kind\":\"{}\",", string_kind(record.tag));
    if (record.tag == ValueTag::wide_string)
      append_traced_text(out_, "value", wide_text_of(record));
    else
      append_traced_text(out_, "value", text_of(record));
    out_ += '}';
  }

  void quotation(const HostValue& record) {
    out_ += "{\"kind\":\"quotation\",";
    append_traced_text(out_, "text", quotation_text_ ? quotation_text_(record) : std::string_view());
    out_ += '}';
  }

  void object(const HostValue& record) {
    const HostAny* any = object_of(record);
    if (!any) return void(out_ += "{\"kind\":\"object\",\"object\":null}");
    const auto kind = kind_of_array(Value::sharing(record));
    out_ += "{\"kind\":";
    append_json_string(out_, kind ? *kind + " array" : type_name_of(any));
    append(",\"object\":{}}}", number_of(any));
  }

  void table(const HostHash* table, int depth) {
    append("{{\"kind\":\"table\",\"count\":{}", table ? entry_count(table) : 0);
    if (table && depth < deepest_told) entries(table, depth);
    out_ += '}';
  }

  void entries(const HostHash* table, int depth) {
    out_ += ",\"entries\":[";
    TableWalk walk(table);
    for (std::size_t i = 0; i < most_entries; ++i) {
      const Entry entry = walk.next();
      if (!entry) break;
      out_ += i > 0 ? ",[" : "[";
      key(*entry.key);
      out_ += ',';
      value(*entry.value, depth + 1);
      out_ += ']';
    }
    out_ += ']';
  }

  /// Numbers stand for themselves, and so do texts unless they are cut or not valid UTF-8.
  void key(const HostValue& record) {
    if (record.tag == ValueTag::integer) return append("{}", arrayfold::load<std::int32_t>(record.payload));
    if (record.tag == ValueTag::integer64) return append("{}", arrayfold::load<std::int64_t>(record.payload));
    if (record.tag == ValueTag::real) return append_traced_real(out_, arrayfold::load<double>(record.payload));
    const std::string_view text = text_of(record);
    const bool is_plain = text.size() <= most_text && first_invalid_utf8(text) == std::string_view::npos;
    if (is_plain) return append_json_string(out_, text);
    out_ += '{';
    append_traced_text(out_, "text", text);
    out_ += '}';
  }

  std::string& out_;
  const QuotationText& quotation_text_;
};

}  // namespace

void append_traced_value(std::string& out, const HostValue& record, const QuotationText& quotation_text) {
  ValueWriter(out, quotation_text).value(record, 0);
}

void append_traced_text(std::string& out, const char* name, std::string_view text) {
  append_front(out, name, front_of(text), text.size());
}

void append_traced_text(std::string& out, const char* name, std::u16string_view text) {
  std::string front;
  std::u16string_view left = text.substr(0, most_text);
  while (!left.empty()) append_utf8(front, take_character(left));
  const bool is_cut = text.size() > most_text;
  append_front(out, name, front, is_cut ? 2 * text.size() : front.size());
}

void append_traced_real(std::string& out, double x) {
  if (std::isfinite(x)) return append_real(out, x);
  out += std::isnan(x) ? "\"nan\"" : x > 0 ? "\"inf\"" : "\"-inf\"";
}

}  // namespace hvm
