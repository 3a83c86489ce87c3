// script/data/csv_writer.hpp: rows of values as a CSV file

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kernel/kernel.hpp"

namespace hvm {

/// What a CSV file is made of.
struct CsvContent {
  std::vector<std::string> names;  // of the columns; empty: without a header
  std::size_t rows = 0;
  std::size_t columns = 0;
  /// The value of a cell, which lasts until the next call.
  std::function<const HostValue&(std::size_t row, std::size_t column)> cell;
};

/// Writes a file that `CsvReader` reads back: numbers so that they keep their kind and value, nil as an empty cell,
/// strings in quotation marks where they need them. Throws `DataError`, also for a value that is no cell.
void write_csv_file(const std::string& path, const CsvContent& content, char separator);

}  // namespace hvm
