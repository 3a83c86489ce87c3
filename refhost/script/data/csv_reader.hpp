// script/data/csv_reader.hpp: the rows of a CSV file
//
// Cells are separated by one character, rows by the end of a line: LF, CRLF or CR. A cell in quotation marks may hold
// all of these, and a quotation mark as two. Blanks around a cell are no part of it, unless it stands in quotation
// marks. Lines without a cell are skipped.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "script/data/text_input.hpp"

namespace hvm {

/// A column by its name or by its position, counted from 0.
using ColumnChoice = std::variant<std::string, std::int64_t>;

struct CsvFormat {
  std::optional<bool> has_header;  // no value: it has one, and numbers in its place are a mistake
  char separator = ',';
  std::optional<std::vector<ColumnChoice>> chosen;  // no value: all columns
  std::vector<std::string> missing;                 // the cells that count as empty ones
};

struct CsvColumn {
  std::string name;  // empty without a header
  std::size_t position;
};

/// What takes the cells of a file, row by row.
class CsvSink {
 public:
  virtual ~CsvSink() = default;
  /// The columns that are read, before all cells. Their names, if there are some, differ and are not empty.
  virtual void begin(const std::vector<CsvColumn>& columns) = 0;
  /// A cell of the column of this number among those of `begin`. The cells of a row come in the order of the file.
  virtual void cell(std::size_t column, std::string_view text) = 0;
  virtual void end_row() = 0;
};

/// Reads a CSV file. Everything that is wrong with it is a `DataError` with the row and the column, both counted from 1
/// without the header, and the line of the file in which the row begins.
class CsvReader {
 public:
  CsvReader(const std::string& path, CsvFormat format);
  ~CsvReader();
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;

  void read(CsvSink& sink);

  /// Throws a `DataError` at a row, counted from 0, and the column at this position of the file.
  [[noreturn]] void fail_at(std::size_t row, std::size_t position, const std::string& cause) const;
  Progress& progress() { return input_.progress(); }

 private:
  class Parser;

  TextInput input_;
  std::unique_ptr<Parser> parser_;
};

}  // namespace hvm
