// script/data/csv_writer.cpp: rows of values as a CSV file

#include "script/data/csv_writer.hpp"

#include <fmt/format.h>

#include "script/data/data_error.hpp"
#include "script/data/number_form.hpp"
#include "script/data/output_file.hpp"
#include "script/data/text_input.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }

class RowWriter {
 public:
  RowWriter(std::string& out, char separator, std::size_t columns)
      : out_(out), separator_(separator), has_one_column_(columns == 1) {}

  void number(const HostValue& value) {
    HostValue record = value;
    digits_.clear();
    value.tag == ValueTag::real ? append_real(digits_, HVM_AsDouble(&record))
                                : append_integer(digits_, HVM_AsInt64(&record));
    // The separator may be a point or a digit.
    text(digits_);
  }

  void text(std::string_view text) {
    separate();
    if (needs_quotes(text))
      quoted(text);
    else
      out_ += text;
  }

  void end_row() {
    out_ += '\n';
    is_first_ = true;
  }

 private:
  void separate() {
    if (!is_first_) out_ += separator_;
    is_first_ = false;
  }

  /// An empty cell in a column of its own would be an empty line, which is no row. A byte order mark that begins the
  /// file would be left out.
  bool needs_quotes(std::string_view text) const {
    if (text.empty()) return has_one_column_;
    if (is_blank(text.front()) || is_blank(text.back())) return true;
    if (text.substr(0, byte_order_mark.size()) == byte_order_mark) return true;
    const char special[] = {separator_, '"', '\n', '\r'};
    return text.find_first_of({special, sizeof(special)}) != std::string_view::npos;
  }

  void quoted(std::string_view text) {
    out_ += '"';
    for (const char c : text) {
      if (c == '"') out_ += '"';
      out_ += c;
    }
    out_ += '"';
  }

  std::string& out_;
  char separator_;
  bool has_one_column_;
  std::string digits_;
  bool is_first_ = true;
};

/// Why a text cannot stand in a file that is read back; null when it can.
const char* fault_of(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return "the text has a zero byte";
  return first_invalid_utf8(text) != std::string_view::npos ? "the text is not valid UTF-8" : nullptr;
}

void write_cell(RowWriter& row, const HostValue& value) {
  const Value shared = Value::sharing(value);
  if (shared.is_number()) return row.number(value);
  if (shared.is_nil()) return row.text({});
  if (!shared.is_string()) throw DataError(fmt::format("{} cannot stand in a cell", kind_in_words(shared)));
  const std::string_view text = text_of(value);
  if (const char* fault = fault_of(text)) throw DataError(fault);
  row.text(text);
}

}  // namespace

void write_csv_file(const std::string& path, const CsvContent& content, char separator) {
  OutputFile file(path);
  std::string line;
  RowWriter writer(line, separator, content.columns);
  const auto finish_row = [&] {
    writer.end_row();
    file.write(line);
    line.clear();
  };
  for (const std::string& name : content.names) {
    if (const char* fault = fault_of(name)) throw DataError(fmt::format("{}: the header: {}", path, fault));
    writer.text(name);
  }
  if (!content.names.empty()) finish_row();
  for (std::size_t row = 0; row < content.rows; ++row) {
    for (std::size_t column = 0; column < content.columns; ++column) {
      try {
        write_cell(writer, content.cell(row, column));
      } catch (const DataError& error) {
        throw DataError(fmt::format("{}: row {}, column {}: {}", path, row + 1, column + 1, error.what()));
      }
    }
    finish_row();
  }
  file.finish();
}

}  // namespace hvm
