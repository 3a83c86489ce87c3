// script/library/file_functions.cpp: texts, CSV and JSON

#include <fmt/format.h>

#include <algorithm>

#include "script/data/csv_columns.hpp"
#include "script/data/csv_writer.hpp"
#include "script/data/data_error.hpp"
#include "script/data/json_text.hpp"
#include "script/data/json_values.hpp"
#include "script/data/output_file.hpp"
#include "script/data/text_input.hpp"
#include "script/library/arguments.hpp"
#include "script/library/array_cells.hpp"
#include "script/library/options.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/text/integer_value.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

/// Runs `action`. A `DataError` becomes the failure of the function that is called.
template <class Action>
auto with_data(const BuiltinCall& call, Action action) {
  try {
    return action();
  } catch (const DataError& error) {
    call.fail(error.what());
  }
}

std::string input_path(const BuiltinCall& call) {
  std::string path = path_argument(call);
  if (is_standard_input(path) && call.files == FileAccess::without_standard_input)
    call.fail("the standard input holds the script, so it holds no data");
  return path;
}

// ---- Texts

Value read_text(const BuiltinCall& call) {
  const std::string path = input_path(call);
  return with_data(call, [&] {
    TextInput input(path);
    std::string text;
    for (std::string_view part = input.next(); !part.empty(); part = input.next()) text += part;
    return Value(text);
  });
}

/// `line` without the carriage return of its end.
std::string_view without_return(std::string_view line) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

Value read_lines(const BuiltinCall& call) {
  const std::string path = input_path(call);
  return with_data(call, [&] {
    TextInput input(path);
    Value lines = Value::table();
    HostHash* table = table_of(lines.record());
    std::string begun;  // a line that goes on in the next part
    for (std::string_view part = input.next(); !part.empty(); part = input.next()) {
      for (std::size_t end = part.find('\n'); end != std::string_view::npos; end = part.find('\n')) {
        const std::string_view rest = part.substr(0, end);
        part.remove_prefix(end + 1);
        if (!begun.empty()) begun += rest;
        append_entry(table, Value(without_return(begun.empty() ? rest : begun)).record());
        begun.clear();
      }
      begun += part;
    }
    if (!begun.empty()) append_entry(table, Value(without_return(begun)).record());
    return lines;
  });
}

// ---- CSV

std::vector<ColumnChoice> column_choices(const BuiltinCall& call, const Value& list) {
  if (!list.is_table())
    call.fail(fmt::format("\"columns\" is a table of names or positions, not {}", kind_in_words(list)));
  std::vector<ColumnChoice> choices;
  TableWalk walk(table_of(list.record()));
  while (const Entry entry = walk.next()) {
    Value choice = Value::sharing(*entry.value);
    if (choice.is_string())
      choices.emplace_back(std::string(text_of(choice.record())));
    else if (is_integer(choice))
      choices.emplace_back(HVM_AsInt64(choice.address()));
    else
      call.fail(fmt::format("\"columns\" has names and positions, not {}", kind_in_words(choice)));
  }
  if (choices.empty()) call.fail("\"columns\" is empty");
  return choices;
}

/// The texts that stand for a missing cell: one, or a table of them.
std::vector<std::string> missing_words(const BuiltinCall& call, const Value& words) {
  if (words.is_string()) return {std::string(text_of(words.record()))};
  if (!words.is_table()) call.fail(fmt::format("\"missing\" is a table of strings, not {}", kind_in_words(words)));
  std::vector<std::string> texts;
  TableWalk walk(table_of(words.record()));
  while (const Entry entry = walk.next()) {
    const Value word = Value::sharing(*entry.value);
    if (!word.is_string()) call.fail(fmt::format("\"missing\" has strings, not {}", kind_in_words(word)));
    texts.emplace_back(text_of(word.record()));
  }
  return texts;
}

/// The character between two cells.
char separator_in(const BuiltinCall& call, const Options& options) {
  const auto separator = options.find("separator");
  if (!separator) return ',';
  const char c = options.character_of("separator", *separator);
  constexpr std::string_view impossible("\"\n\r\0", 4);
  if (impossible.find(c) != std::string_view::npos)
    call.fail("\"separator\" cannot be a quotation mark, the end of a line or a zero byte");
  return c;
}

CsvFormat csv_format(const BuiltinCall& call) {
  CsvFormat format;
  const Options options(call, 1, {"header", "separator", "columns", "missing"});
  if (const auto header = options.find("header")) format.has_header = options.truth_of("header", *header);
  format.separator = separator_in(call, options);
  if (const auto columns = options.find("columns")) format.chosen = column_choices(call, *columns);
  if (const auto missing = options.find("missing")) format.missing = missing_words(call, *missing);
  return format;
}

Value read_csv(const BuiltinCall& call) {
  const std::string path = input_path(call);
  return with_data(call, [&] { return columns_of_csv(path, csv_format(call)); });
}

Value read_csv_array(const BuiltinCall& call) {
  const std::string path = input_path(call);
  const CsvNumbers numbers = with_data(call, [&] { return numbers_of_csv(path, csv_format(call)); });
  try {
    auto next = numbers.elements.begin();
    return double_matrix(call.caller, call.module, numbers.rows, numbers.columns, [&] { return *next++; });
  } catch (const Failure& failure) {
    call.fail(failure.message());
  }
}

Value write_text(const BuiltinCall& call) {
  const std::string path = output_path(call);
  const std::string_view text = text_argument(call, 1);
  with_data(call, [&] {
    OutputFile file(path);
    file.write(text);
    file.finish();
  });
  return {};
}

// ---- Writing CSV

std::string name_of_column(const BuiltinCall& call, const HostValue& name) {
  const Value shared = Value::sharing(name);
  const std::string_view text = shared.is_string() ? text_of(name) : std::string_view();
  if (!shared.is_string()) call.fail(fmt::format("a column has a name, not {}", kind_in_words(shared)));
  if (text.empty()) call.fail("the name of a column is empty");
  return std::string(text);
}

std::vector<std::string> names_in_option(const BuiltinCall& call, const Value& list) {
  std::vector<std::string> names;
  TableWalk walk(table_of(list.record()));
  while (const Entry entry = walk.next()) names.push_back(name_of_column(call, *entry.value));
  return names;
}

/// The names under which the columns of a table stand; none when they stand under 0, 1, 2, ...
std::vector<std::string> names_in_table(const BuiltinCall& call, const HostHash* columns) {
  std::vector<std::string> names;
  if (columns->index_count == entry_count(columns)) return names;
  TableWalk walk(columns);
  while (const Entry entry = walk.next()) names.push_back(name_of_column(call, *entry.key));
  return names;
}

/// The first line of the file: what the option says, otherwise the names that the columns have.
void choose_names(const BuiltinCall& call, const Options& options, CsvContent& content) {
  if (const auto header = options.find("header")) {
    if (header->is_table()) {
      content.names = names_in_option(call, *header);
      if (content.names.size() != content.columns)
        call.fail(fmt::format("\"header\" has {} for {}", counted(content.names.size(), "name", "names"),
                              counted(content.columns, "column", "columns")));
    } else if (!options.truth_of("header", *header)) {
      content.names.clear();
    } else if (content.names.empty()) {
      call.fail("the columns have no names; \"header\" can be a table of them");
    }
  }
  std::vector<std::string> sorted = content.names;
  std::sort(sorted.begin(), sorted.end());
  const auto twin = std::adjacent_find(sorted.begin(), sorted.end());
  if (twin != sorted.end()) call.fail(fmt::format("two columns have the name {}", string_literal(*twin)));
}

/// One of the columns that are written: a table, or an array of one axis.
struct WrittenColumn {
  std::size_t rows;
  std::variant<const HostHash*, ArrayCells> cells;

  /// A value that lasts until the next call.
  const HostValue& cell(std::size_t row) {
    if (auto* array = std::get_if<ArrayCells>(&cells)) return array->at(row, 0);
    return *find(std::get<const HostHash*>(cells), static_cast<int>(row));
  }
};

WrittenColumn column_of_table(const BuiltinCall& call, const std::string& name, const HostHash* table) {
  if (table->index_count != entry_count(table))
    call.fail(fmt::format("column {} has keys other than 0, 1, 2, ...", name));
  return {static_cast<std::size_t>(table->index_count), table};
}

WrittenColumn column_of_array(const BuiltinCall& call, const std::string& name, Value array) {
  call.checks.extents(call.caller, array);
  const auto extents = shape_of(call.caller, array);
  if (!extents || extents->size() != 1)
    call.fail(fmt::format("column {} is {}, not an array of one axis", name, described(call.caller, array)));
  return {static_cast<std::size_t>(extents->front()), ArrayCells(call, std::move(array), 1)};
}

/// The columns of a table, which have one length.
std::vector<WrittenColumn> columns_in(const BuiltinCall& call, const HostHash* table) {
  std::vector<WrittenColumn> columns;
  TableWalk walk(table);
  while (const Entry entry = walk.next()) {
    const Value value = Value::sharing(*entry.value);
    const std::string name = printed(*entry.key);
    if (!value.is_table() && !value.is_object())
      call.fail(fmt::format("column {} is {}, not a table or an array", name, kind_in_words(value)));
    columns.push_back(value.is_table() ? column_of_table(call, name, table_of(value.record()))
                                       : column_of_array(call, name, value));
    if (columns.back().rows != columns.front().rows)
      call.fail(fmt::format("column {} has {}, the first column has {}", name,
                            counted(columns.back().rows, "value", "values"), columns.front().rows));
  }
  if (columns.empty()) call.fail("there are no columns");
  return columns;
}

CsvContent content_of_columns(const BuiltinCall& call, const HostHash* table) {
  CsvContent content;
  content.names = names_in_table(call, table);
  std::vector<WrittenColumn> columns = columns_in(call, table);
  content.columns = columns.size();
  content.rows = columns.front().rows;
  content.cell = [columns = std::move(columns)](std::size_t row, std::size_t column) mutable -> const HostValue& {
    return columns[column].cell(row);
  };
  return content;
}

/// An array of one axis is a column.
CsvContent content_of_array(const BuiltinCall& call, Value& array) {
  call.checks.extents(call.caller, array);
  const auto extents = shape_of(call.caller, array);
  if (!extents || extents->empty() || extents->size() > 2)
    call.fail(fmt::format("it takes columns or an array of one or two axes, not {}", described(call.caller, array)));
  CsvContent content;
  content.rows = static_cast<std::size_t>(extents->front());
  content.columns = extents->size() == 2 ? static_cast<std::size_t>(extents->back()) : 1;
  if (content.columns == 0) call.fail("there are no columns");
  content.cell = [cells = ArrayCells(call, array, extents->size())](
                     std::size_t row, std::size_t column) mutable -> const HostValue& { return cells.at(row, column); };
  return content;
}

Value write_csv(const BuiltinCall& call) {
  const std::string path = output_path(call);
  const Options options(call, 2, {"header", "separator"});
  const char separator = separator_in(call, options);
  Value& data = call.arguments[1];
  if (!data.is_object() && !data.is_table())
    call.fail(fmt::format("it takes a table of columns or an array, not {}", kind_in_words(data)));
  CsvContent content =
      data.is_object() ? content_of_array(call, data) : content_of_columns(call, table_argument(call, 1));
  choose_names(call, options, content);
  with_data(call, [&] { write_csv_file(path, content, separator); });
  return {};
}

// ---- JSON

constexpr std::int64_t widest_indent = 32;

Value parse_json(const BuiltinCall& call) {
  const std::string_view text = text_argument(call, 0);
  return with_data(call, [&] { return json_value(text); });
}

Value to_json(const BuiltinCall& call) {
  std::optional<std::size_t> indent;
  if (has_argument(call, 1)) {
    const std::int64_t blanks = integer_argument(call, 1);
    if (blanks < 0 || blanks > widest_indent)
      call.fail(fmt::format("the indent is from 0 to {}, not {}", widest_indent, blanks));
    indent = static_cast<std::size_t>(blanks);
  }
  const auto append_object = [&](std::string& out, const HostValue& record) {
    Value object = Value::sharing(record);
    call.checks.extents(call.caller, object);
    const auto text = dump_of(call.caller, object);
    if (!text) call.fail(fmt::format("{} has no form in JSON", kind_in_words(object)));
    out += *text;
  };
  return with_data(call, [&] { return Value(json_text(call.arguments[0], indent, append_object)); });
}

// clang-format off
constexpr std::string_view reading_options =
    "\"header\": false when the first row holds data; the columns then have the keys 0, 1, 2, ...\n"
    "\"separator\": one character, \",\" by default\n"
    "\"columns\": a table of the columns to read, by name or position\n"
    "\"missing\": a table of the texts that stand for a missing cell, such as [\"NA\", \"-\"]";

constexpr Builtin file_rows[] = {
    {"parse_json", 1, 1, parse_json, "parse_json(text)", "Reads JSON: objects and arrays become tables.",
     "v = parse_json(\"{\\\"a\\\": [1, 2.5]}\")\n"
     "print(v[\"a\"][1])  # expect: 2.5"},
    {"read_csv", 1, 2, read_csv, "read_csv(path)\nread_csv(path, options)",
     "Reads a CSV file into a table of its columns.",
     "write_text(\"people.csv\", \"name;age\\nAl;25\\n\")\n"
     "print(read_csv(\"people.csv\", [\"separator\": \";\"]))  # expect: [\"name\": [\"Al\"], \"age\": [25]]",
     Gives::value, reading_options},
    {"read_csv_array", 1, 2, read_csv_array, "read_csv_array(path)\nread_csv_array(path, options)",
     "Reads the numbers of a CSV file into an array.",
     "write_text(\"xy.csv\", \"x,y\\n1,2\\n3,4\\n\")\n"
     "print(read_csv_array(\"xy.csv\", [\"columns\": [\"y\"]]))  # expect: double(2, 1) [[2.0], [4.0]]",
     Gives::value, reading_options},
    {"read_lines", 1, 1, read_lines, "read_lines(path)", "Gives the lines of a file as a table of strings.",
     "write_text(\"lines.txt\", \"one\\ntwo\\n\")\n"
     "print(read_lines(\"lines.txt\"))  # expect: [\"one\", \"two\"]"},
    {"read_text", 1, 1, read_text, "read_text(path)", "Gives a whole file as a string.",
     "write_text(\"text.txt\", \"one\\n\")\n"
     "print(len(read_text(\"text.txt\")))  # expect: 4"},
    {"to_json", 1, 2, to_json, "to_json(value)\nto_json(value, indent)", "Gives a value as JSON.",
     "print(to_json([\"a\": [1, nil]]))  # expect: {\"a\":[1,null]}"},
    {"write_csv", 2, 3, write_csv, "write_csv(path, data)\nwrite_csv(path, data, options)",
     "Writes a table of columns, or an array, as a CSV file. A column is a table or an array of one axis.",
     "write_csv(\"table.csv\", [\"x\": [1, 2], \"y\": [3, 4]], [\"header\": false])\n"
     "print(read_text(\"table.csv\"))  # expect: 1,3 2,4", Gives::nothing,
     "\"header\": a table of names, or false for no header\n"
     "\"separator\": one character, \",\" by default"},
    {"write_text", 2, 2, write_text, "write_text(path, text)", "Writes a string into a file.",
     "write_text(\"note.txt\", \"one\\n\")\n"
     "print(read_lines(\"note.txt\"))  # expect: [\"one\"]", Gives::nothing},
};
// clang-format on

}  // namespace

BuiltinFamily file_functions() { return family_of(file_rows); }

}  // namespace hvm
