// script/data/csv_reader.cpp: the rows of a CSV file

#include "script/data/csv_reader.hpp"

#include <csv.h>
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <new>
#include <unordered_map>

#include "script/syntax/string_literals.hpp"
#include "script/text/number_reading.hpp"
#include "script/text/number_text.hpp"

namespace hvm {
namespace {

constexpr std::size_t not_chosen = static_cast<std::size_t>(-1);
constexpr std::size_t most_named = 20;  // in a message

/// The lines in which rows begin. Most rows begin one line behind the row before; only others take memory.
class RowLines {
 public:
  void add(std::size_t row, std::uint64_t line) {
    if (!jumps_.empty() && jumps_.back().row == row) jumps_.pop_back();
    if (jumps_.empty() || line != line_of(row)) jumps_.push_back({row, line});
  }

  std::uint64_t line_of(std::size_t row) const {
    const auto behind = std::upper_bound(jumps_.begin(), jumps_.end(), row,
                                         [](std::size_t wanted, const Jump& jump) { return wanted < jump.row; });
    const Jump& jump = *(behind - 1);
    return jump.line + (row - jump.row);
  }

 private:
  struct Jump {
    std::size_t row;
    std::uint64_t line;
  };
  std::vector<Jump> jumps_;
};

/// The parser of the library, which reports cells and rows through plain functions.
class Machine {
 public:
  explicit Machine(char separator) {
    if (csv_init(&state_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
    csv_set_delim(&state_, static_cast<unsigned char>(separator));
    csv_set_blk_size(&state_, std::size_t{1} << 16);
  }
  ~Machine() { csv_free(&state_); }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  csv_parser* state() { return &state_; }
  bool is_out_of_memory() { return csv_error(&state_) == CSV_ENOMEM || csv_error(&state_) == CSV_ETOOBIG; }
  /// Whether the next character begins a row: the library's first state.
  bool is_between_rows() const { return state_.pstate == 0; }
  /// Whether the cell at which it stopped began with a quotation mark.
  bool is_in_quotes() const { return state_.quoted != 0; }

 private:
  csv_parser state_ = {};
};

std::string quoted_names(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), most_named); ++i)
    text += (i > 0 ? ", " : "") + string_literal(names[i]);
  return names.size() > most_named ? text + ", ..." : text;
}

}  // namespace

class CsvReader::Parser {
 public:
  Parser(const TextInput& input, CsvFormat format)
      : input_(input), format_(std::move(format)), machine_(format_.separator) {}

  void use(CsvSink& sink) { sink_ = &sink; }

  void parse(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
      parse_piece(text.substr(0, length));
      text.remove_prefix(length);
    }
  }

  void finish() {
    const int status = csv_fini(machine_.state(), &Parser::take_cell, &Parser::take_row, this);
    rethrow();
    if (status != 0) fail_here("the quotation marks of this cell do not close");
    if (!has_columns_) input_.fail(line_ == 1 ? "the file is empty" : "the file has no rows");
  }

  [[noreturn]] void fail_at(std::size_t row, std::size_t position, const std::string& cause) const {
    input_.fail(fmt::format("row {}, column {} (line {}): {}", row + 1, position + 1, lines_.line_of(row), cause));
  }

 private:
  // ---- Lines

  /// At most one line, and its end if it is here.
  void parse_piece(std::string_view piece) {
    if (!is_row_open_) row_line_ = line_;
    if (is_plain_row(piece)) return parse_plain_row(piece);
    const std::size_t used =
        csv_parse(machine_.state(), piece.data(), piece.size(), &Parser::take_cell, &Parser::take_row, this);
    rethrow();
    if (used < piece.size()) fail_in_cell();
    is_row_open_ = !machine_.is_between_rows();
    count_lines(piece);
  }

  // Most rows stand in one line and have no quotation marks. Taking them apart here takes a third of the library's
  // time.

  bool is_plain_row(std::string_view piece) const {
    if (is_row_open_ || piece.back() != '\n' || piece.find('"') != std::string_view::npos || is_blank(piece))
      return false;
    const std::size_t last = piece.size() - 1;
    return piece.find('\r') >= last - (last > 0 && piece[last - 1] == '\r' ? 1 : 0);
  }

  void parse_plain_row(std::string_view line) {
    line = line.substr(0, line.find_first_of("\r\n", line.size() - std::min<std::size_t>(line.size(), 2)));
    for (std::size_t end = line.find(format_.separator); end != std::string_view::npos;
         end = line.find(format_.separator)) {
      cell(without_blanks(line.substr(0, end)));
      line.remove_prefix(end + 1);
    }
    cell(without_blanks(line));
    end_row();
    ++line_;
  }

  /// `text` without the blanks around it. A blank that separates cells is none.
  std::string_view without_blanks(std::string_view text) const {
    const auto is_space = [&](char c) { return (c == ' ' || c == '\t') && c != format_.separator; };
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
    return text;
  }

  /// Whether nothing stands in a piece. Separators do, also when they are blanks.
  bool is_blank(std::string_view piece) const {
    return std::all_of(piece.begin(), piece.end(), [&](char c) {
      return c != format_.separator && (c == ' ' || c == '\t' || c == '\r' || c == '\n');
    });
  }

  void count_lines(std::string_view piece) {
    if (piece.back() == '\n') ++line_;
    // A carriage return alone ends a line, too.
    for (std::size_t at = piece.find('\r'); at != std::string_view::npos; at = piece.find('\r', at + 1))
      if (at + 1 < piece.size() && piece[at + 1] != '\n') ++line_;
  }

  [[noreturn]] void fail_in_cell() {
    if (machine_.is_out_of_memory()) throw std::bad_alloc();
    fail_here(machine_.is_in_quotes() ? "text after the closing quotation mark of the cell"
                                      : "a quotation mark stands inside a cell that does not begin with one");
  }

  // ---- Errors at the place that is being read

  std::string place() const {
    return is_in_header() ? fmt::format("the header, column {} (line {})", cells_ + 1, row_line_)
                          : fmt::format("row {}, column {} (line {})", row_ + 1, cells_ + 1, row_line_);
  }
  [[noreturn]] void fail_here(const std::string& cause) const { input_.fail(fmt::format("{}: {}", place(), cause)); }

  // ---- Cells and rows, as the library reports them. No exception passes through the library.

  static void take_cell(void* text, std::size_t length, void* self) noexcept {
    auto& parser = *static_cast<Parser*>(self);
    parser.guarded([&] { parser.cell({static_cast<const char*>(text), length}); });
  }

  static void take_row(int, void* self) noexcept {
    auto& parser = *static_cast<Parser*>(self);
    parser.guarded([&] { parser.end_row(); });
  }

  template <class Action>
  void guarded(Action action) noexcept {
    if (failure_) return;
    try {
      action();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  void rethrow() {
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  }

  void cell(std::string_view text) {
    if (cells_ == 0) lines_.add(row_, row_line_);
    if (!has_columns_) {
      first_.emplace_back(text);
    } else if (cells_ < numbers_.size() && numbers_[cells_] != not_chosen) {
      sink_->cell(numbers_[cells_], is_missing(text) ? std::string_view() : text);
    }
    ++cells_;
  }

  bool is_missing(std::string_view text) const {
    return std::find(format_.missing.begin(), format_.missing.end(), text) != format_.missing.end();
  }

  void end_row() {
    if (!has_columns_) return end_first_row();
    if (cells_ != numbers_.size())
      input_.fail(fmt::format("row {} (line {}): {} instead of {}", row_ + 1, row_line_,
                              counted(cells_, "cell", "cells"), numbers_.size()));
    sink_->end_row();
    next_row();
    ++row_;
  }

  void next_row() {
    cells_ = 0;
    ++row_line_;  // right where several rows end in one piece: after a carriage return alone
  }

  // ---- The first row, and the columns

  bool is_in_header() const { return !has_columns_ && format_.has_header.value_or(true); }

  void end_first_row() {
    const bool has_header = format_.has_header.value_or(true);
    if (has_header && !format_.has_header) require_names_in_header();
    const std::vector<CsvColumn> columns = chosen_columns(has_header);
    require_different(columns);
    numbers_.assign(first_.size(), not_chosen);
    for (std::size_t i = 0; i < columns.size(); ++i) numbers_[columns[i].position] = i;
    has_columns_ = true;
    cells_ = 0;
    sink_->begin(columns);
    if (has_header) return next_row();
    for (const std::string& text : std::exchange(first_, {})) cell(text);
    end_row();
  }

  void require_names_in_header() const {
    const bool are_numbers = std::all_of(first_.begin(), first_.end(), [](const std::string& text) {
      const auto kind = spelled_number(text).kind;
      return kind != SpelledNumber::Kind::none && kind != SpelledNumber::Kind::empty;
    });
    if (are_numbers)
      input_.fail(
          fmt::format("the first row (line {}) has numbers, not the names of columns; the option \"header\" says "
                      "whether it is a header",
                      row_line_));
  }

  std::vector<CsvColumn> chosen_columns(bool has_header) const {
    std::vector<CsvColumn> columns;
    const auto add = [&](std::size_t position) {
      columns.push_back({has_header ? first_[position] : std::string(), position});
      if (has_header && first_[position].empty())
        input_.fail(fmt::format("the header (line {}): column {} has no name", row_line_, position + 1));
    };
    if (format_.chosen)
      for (const ColumnChoice& choice : *format_.chosen) add(position_of(choice, has_header));
    else
      for (std::size_t position = 0; position < first_.size(); ++position) add(position);
    return columns;
  }

  std::size_t position_of(const ColumnChoice& choice, bool has_header) const {
    if (const auto* position = std::get_if<std::int64_t>(&choice)) {
      if (*position >= 0 && *position < static_cast<std::int64_t>(first_.size()))
        return static_cast<std::size_t>(*position);
      input_.fail(fmt::format("there is no column {}; the positions are 0 to {}", *position, first_.size() - 1));
    }
    const auto& name = std::get<std::string>(choice);
    if (!has_header)
      input_.fail(fmt::format("the column {} is chosen by name, but there is no header", string_literal(name)));
    const auto found = std::find(first_.begin(), first_.end(), name);
    if (found == first_.end())
      input_.fail(fmt::format("there is no column {}; there are {}", string_literal(name), quoted_names(first_)));
    return static_cast<std::size_t>(found - first_.begin());
  }

  void require_different(const std::vector<CsvColumn>& columns) const {
    std::unordered_map<std::string_view, std::size_t> positions;
    std::vector<bool> is_taken(first_.size());
    for (const CsvColumn& column : columns) {
      if (is_taken[column.position]) input_.fail(fmt::format("column {} is chosen twice", column.position));
      is_taken[column.position] = true;
      if (column.name.empty()) continue;
      const auto [other, is_new] = positions.emplace(column.name, column.position);
      if (!is_new)
        input_.fail(fmt::format("the header (line {}): the columns {} and {} have the same name {}", row_line_,
                                other->second + 1, column.position + 1, string_literal(column.name)));
    }
  }

  const TextInput& input_;
  CsvFormat format_;
  Machine machine_;
  CsvSink* sink_ = nullptr;
  std::exception_ptr failure_;

  std::vector<std::string> first_;    // the cells of the first row
  std::vector<std::size_t> numbers_;  // of each column of the file: its number among the chosen ones
  bool has_columns_ = false;

  std::size_t row_ = 0;
  std::size_t cells_ = 0;  // of the row that is being read
  RowLines lines_;
  std::uint64_t line_ = 1;
  std::uint64_t row_line_ = 1;  // in which the row begins
  bool is_row_open_ = false;
};

CsvReader::CsvReader(const std::string& path, CsvFormat format)
    : input_(path), parser_(std::make_unique<Parser>(input_, std::move(format))) {}

CsvReader::~CsvReader() = default;

void CsvReader::read(CsvSink& sink) {
  parser_->use(sink);
  for (std::string_view text = input_.next(); !text.empty(); text = input_.next()) parser_->parse(text);
  parser_->finish();
}

void CsvReader::fail_at(std::size_t row, std::size_t position, const std::string& cause) const {
  parser_->fail_at(row, position, cause);
}

}  // namespace hvm
