// script/data/csv_columns.hpp: the columns of a CSV file as tables, and its numbers

#pragma once

#include <deque>
#include <string>
#include <vector>

#include "kernel/kernel.hpp"
#include "script/data/csv_reader.hpp"

namespace hvm {

/// A table of the columns of a file: by their names in the order of the file, or by their positions without a header.
/// Each column is a table 0, 1, 2, ... If its cells are numbers or missing, it holds numbers: integers when all are
/// integers and none is missing, otherwise reals, with NaN for what is missing. If one cell is anything else, it holds
/// strings. Throws `DataError`, also for numbers beyond the range of a real.
Value columns_of_csv(const std::string& path, CsvFormat format);

/// The numbers of a file, row by row.
struct CsvNumbers {
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::deque<double> elements;  // NaN for what is missing
};
/// Throws `DataError`, also for a cell that is no number.
CsvNumbers numbers_of_csv(const std::string& path, CsvFormat format);

}  // namespace hvm
