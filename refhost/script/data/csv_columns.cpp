// script/data/csv_columns.cpp: the columns of a CSV file as tables, and its numbers

#include "script/data/csv_columns.hpp"

#include <fmt/format.h>

#include <cstring>
#include <utility>

#include "script/syntax/string_literals.hpp"
#include "script/text/integer_value.hpp"
#include "script/text/number_reading.hpp"

namespace hvm {
namespace {

using Kind = SpelledNumber::Kind;

[[noreturn]] void fail_beyond_range(const CsvReader& reader, std::size_t row, std::size_t position,
                                    std::string_view cell) {
  reader.fail_at(row, position,
                 fmt::format("{} is beyond the range of 64-bit floating-point numbers", short_literal(cell)));
}

// ---- Columns

/// The texts of the cells of a column, each with a zero byte behind it: no cell has one in it. What kind of values they
/// are is known when all of them are there, so the texts are kept until then.
class ColumnTexts {
 public:
  explicit ColumnTexts(CsvColumn column) : column_(std::move(column)) {}

  const CsvColumn& column() const { return column_; }

  void add(std::string_view cell) {
    texts_.append(cell);
    texts_ += '\0';
  }

  /// Calls `take(row, cell)` for each cell until it returns false. False if it did.
  template <class Take>
  bool each(Take take) const {
    const char* at = texts_.data();
    const char* end = at + texts_.size();
    for (std::size_t row = 0; at < end; ++row) {
      const std::size_t length = std::strlen(at);
      if (!take(row, std::string_view(at, length))) return false;
      at += length + 1;
    }
    return true;
  }

 private:
  CsvColumn column_;
  std::string texts_;
};

/// The values of a column as numbers.
struct ColumnNumbers {
  std::vector<double> reals;
  bool are_integers = true;
};

/// No value when a cell is text.
std::optional<ColumnNumbers> numbers_of(const ColumnTexts& texts, std::size_t rows, const CsvReader& reader) {
  ColumnNumbers numbers;
  std::optional<std::pair<std::size_t, std::string_view>> beyond_range;
  numbers.reals.reserve(rows);
  const bool are_numbers = texts.each([&](std::size_t row, std::string_view cell) {
    const SpelledNumber number = spelled_number(cell);
    if (number.kind == Kind::beyond_range && !beyond_range) beyond_range.emplace(row, cell);
    numbers.are_integers = numbers.are_integers && number.kind == Kind::integer;
    numbers.reals.push_back(number.real);
    return number.kind != Kind::none;
  });
  if (!are_numbers) return std::nullopt;
  if (beyond_range) fail_beyond_range(reader, beyond_range->first, texts.column().position, beyond_range->second);
  return numbers;
}

Value column_of(const ColumnTexts& texts, std::size_t rows, const CsvReader& reader) {
  Value column = Value::table();
  HostHash* table = table_of(column.record());
  const auto fill = [&](auto value_of) {
    texts.each([&](std::size_t, std::string_view cell) {
      append_entry(table, value_of(cell).record());
      return true;
    });
  };
  const auto numbers = numbers_of(texts, rows, reader);
  if (!numbers)
    fill([](std::string_view cell) { return Value(cell); });
  else if (numbers->are_integers)
    fill([](std::string_view cell) { return integer_value(spelled_number(cell).integer); });
  else
    for (const double x : numbers->reals) append_entry(table, Value(x).record());
  return column;
}

class ColumnSink : public CsvSink {
 public:
  void begin(const std::vector<CsvColumn>& columns) override {
    columns_.reserve(columns.size());
    for (const CsvColumn& column : columns) columns_.emplace_back(column);
  }
  void cell(std::size_t column, std::string_view text) override { columns_[column].add(text); }
  void end_row() override { ++rows_; }

  /// The table of the columns. Their texts are freed one by one as the tables grow.
  Value columns(CsvReader& reader) {
    Value result = Value::table();
    HostHash* table = table_of(result.record());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      reader.progress().parts("column", i + 1, columns_.size());
      const ColumnTexts texts = std::move(columns_[i]);
      const Value column = column_of(texts, rows_, reader);
      if (texts.column().name.empty())
        set_entry(table, static_cast<int>(texts.column().position), column.record());
      else
        set_entry(table, texts.column().name, column.record());
    }
    return result;
  }

 private:
  std::vector<ColumnTexts> columns_;
  std::size_t rows_ = 0;
};

// ---- Numbers

class NumberSink : public CsvSink {
 public:
  explicit NumberSink(const CsvReader& reader) : reader_(reader) {}

  void begin(const std::vector<CsvColumn>& columns) override {
    columns_ = columns;
    row_.resize(columns.size());
    numbers_.columns = columns.size();
  }

  void cell(std::size_t column, std::string_view text) override {
    const SpelledNumber number = spelled_number(text);
    const std::size_t position = columns_[column].position;
    if (number.kind == Kind::none)
      reader_.fail_at(numbers_.rows, position, fmt::format("{} is not a number", short_literal(text)));
    if (number.kind == Kind::beyond_range) fail_beyond_range(reader_, numbers_.rows, position, text);
    row_[column] = number.real;
  }

  void end_row() override {
    numbers_.elements.insert(numbers_.elements.end(), row_.begin(), row_.end());
    ++numbers_.rows;
  }

  CsvNumbers take() { return std::move(numbers_); }

 private:
  const CsvReader& reader_;
  std::vector<CsvColumn> columns_;
  std::vector<double> row_;  // in the order in which the columns were chosen
  CsvNumbers numbers_;
};

}  // namespace

Value columns_of_csv(const std::string& path, CsvFormat format) {
  CsvReader reader(path, std::move(format));
  ColumnSink sink;
  reader.read(sink);
  return sink.columns(reader);
}

CsvNumbers numbers_of_csv(const std::string& path, CsvFormat format) {
  CsvReader reader(path, std::move(format));
  NumberSink sink(reader);
  reader.read(sink);
  return sink.take();
}

}  // namespace hvm
