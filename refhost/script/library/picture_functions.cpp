// script/library/picture_functions.cpp: curves, points, histograms and matrices as pictures

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "script/data/data_error.hpp"
#include "script/data/output_file.hpp"
#include "script/library/arguments.hpp"
#include "script/library/array_cells.hpp"
#include "script/library/options.hpp"
#include "script/picture/drawing.hpp"
#include "script/picture/range.hpp"
#include "script/picture/thinning.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

using Numbers = std::vector<double>;

/// Runs `action`. What a picture or a file throws becomes the failure of the function that is called.
template <class Action>
auto with_picture(const BuiltinCall& call, Action action) {
  try {
    return action();
  } catch (const PictureError& error) {
    call.fail(error.what());
  } catch (const DataError& error) {
    call.fail(error.what());
  }
}

// ---- Data

double number_in(const BuiltinCall& call, const std::string& name, const HostValue& value) {
  HostValue copy = value;
  if (!Value::sharing(value).is_number())
    call.fail(fmt::format("{} holds {} among its numbers", name, kind_in_words(Value::sharing(value))));
  return HVM_AsDouble(&copy);
}

Extents extents_of_array(const BuiltinCall& call, const std::string& name, Value& array, std::size_t axes) {
  call.checks.extents(call.caller, array);
  const auto extents = shape_of(call.caller, array);
  if (!extents || extents->size() != axes)
    call.fail(fmt::format("{} is an array of {}, not {}", name, counted(axes, "axis", "axes"),
                          described(call.caller, array)));
  return *extents;
}

/// The elements of an array of one or two axes, row by row.
Numbers elements_of(const BuiltinCall& call, const std::string& name, Value& array, const Extents& extents) {
  const auto rows = static_cast<std::size_t>(extents.front());
  const std::size_t columns = extents.size() > 1 ? static_cast<std::size_t>(extents.back()) : 1;
  Numbers numbers;
  numbers.reserve(rows * columns);
  ArrayCells cells(call, array, extents.size());
  for (std::size_t row = 0; row < rows; ++row)
    for (std::size_t column = 0; column < columns; ++column)
      numbers.push_back(number_in(call, name, cells.at(row, column)));
  return numbers;
}

/// The numbers of a table, or of an array of one axis.
Numbers numbers_of(const BuiltinCall& call, const std::string& name, Value value) {
  if (value.is_object()) return elements_of(call, name, value, extents_of_array(call, name, value, 1));
  if (!value.is_table())
    call.fail(fmt::format("{} is an array or a table of numbers, not {}", name, kind_in_words(value)));
  Numbers numbers;
  TableWalk walk(table_of(value.record()));
  while (const Entry entry = walk.next()) numbers.push_back(number_in(call, name, *entry.value));
  return numbers;
}

/// A table of curves holds tables or arrays in place of numbers.
bool is_list_of_curves(const Value& value) {
  if (!value.is_table()) return false;
  const HostValue* first = find(table_of(value.record()), 0);
  return first && (first->tag == ValueTag::table || first->tag == ValueTag::object);
}

std::vector<Value> entries_of(const Value& table) {
  std::vector<Value> entries;
  TableWalk walk(table_of(table.record()));
  while (const Entry entry = walk.next()) entries.push_back(Value::sharing(*entry.value));
  return entries;
}

// ---- Options

/// Options are a table with names as its keys.
bool are_options(const Value& value) {
  if (!value.is_table() || entry_count(table_of(value.record())) == 0) return false;
  TableWalk walk(table_of(value.record()));
  return Value::sharing(*walk.next().key).is_string();
}

/// How many arguments of a call are data: all but the options at the end.
std::size_t data_count(const BuiltinCall& call) { return call.count() - (are_options(call.arguments.back()) ? 1 : 0); }

std::string text_option(const BuiltinCall& call, const Options& options, std::string_view name) {
  const auto value = options.find(name);
  if (!value) return {};
  if (!value->is_string())
    call.fail(fmt::format("{} is a string, not {}", string_literal(name), kind_in_words(*value)));
  return std::string(text_of(value->record()));
}

void label(const BuiltinCall& call, const Options& options, Figure& figure) {
  figure.title = text_option(call, options, "title");
  figure.x_label = text_option(call, options, "x");
  figure.y_label = text_option(call, options, "y");
}

void name_curves(const BuiltinCall& call, const Options& options, Figure& figure) {
  const auto list = options.find("names");
  if (!list) return;
  if (!list->is_table()) call.fail(fmt::format("\"names\" is a table of strings, not {}", kind_in_words(*list)));
  const std::vector<Value> names = entries_of(*list);
  if (names.size() != figure.curves.size())
    call.fail(fmt::format("\"names\" has {} for {}", counted(names.size(), "name", "names"),
                          counted(figure.curves.size(), "curve", "curves")));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!names[i].is_string())
      call.fail(fmt::format("the name of a curve is a string, not {}", kind_in_words(names[i])));
    figure.curves[i].name = std::string(text_of(names[i].record()));
  }
}

// ---- Pictures

/// Prints the figure as text, unless the options say otherwise, and keeps it for `save_plot`.
Value shown(const BuiltinCall& call, const Options& options, Figure figure) {
  const auto is_shown = options.find("show");
  if (!is_shown || options.truth_of("show", *is_shown)) {
    const TextSize size = call.pictures.text_size ? call.pictures.text_size() : TextSize();
    call.print_lines(with_picture(call, [&] { return drawn_as_text(figure, size); }));
  }
  call.pictures.last = std::move(figure);
  return {};
}

/// The numbers 0, 1, 2, ...
Numbers positions(std::size_t count) {
  Numbers numbers(count);
  for (std::size_t i = 0; i < count; ++i) numbers[i] = static_cast<double>(i);
  return numbers;
}

void require_files(const BuiltinCall& call) {
  if (call.files == FileAccess::none) call.fail("other programs are switched off");
}

Value draw_curves(const BuiltinCall& call, Figure::Form form) {
  require_files(call);
  const std::size_t data = data_count(call);
  if (data < 1 || data > 2)
    call.fail(fmt::format("it takes y, or x and y, and options, not {}", counted(data, "value", "values")));
  const Options options(call, data, {"title", "x", "y", "names", "show"});
  Figure figure;
  figure.form = form;
  label(call, options, figure);
  const Value& ys = call.arguments[data - 1];
  const bool has_list = is_list_of_curves(ys);
  const bool has_x = data == 2;
  const Numbers x = has_x ? numbers_of(call, "x", call.arguments[0]) : Numbers();
  std::size_t number = 0;
  for (Value& values : has_list ? entries_of(ys) : std::vector<Value>{ys}) {
    const std::string name = has_list ? fmt::format("y[{}]", number++) : "y";
    Curve curve;
    curve.y = numbers_of(call, name, values);
    curve.x = has_x ? x : positions(curve.y.size());
    if (curve.x.size() != curve.y.size())
      call.fail(fmt::format("{} has {}, x has {}", name, counted(curve.y.size(), "number", "numbers"), curve.x.size()));
    figure.curves.push_back(form == Figure::Form::points ? thinned_points(curve) : thinned_line(curve));
  }
  name_curves(call, options, figure);
  return shown(call, options, std::move(figure));
}

Value plot(const BuiltinCall& call) { return draw_curves(call, Figure::Form::lines); }
Value plot_points(const BuiltinCall& call) { return draw_curves(call, Figure::Form::points); }

/// How many of `numbers` fall into each of equal bins over `range`; the last bin has its right edge.
Numbers counts_in(const Numbers& numbers, const PictureRange& range, std::size_t bins) {
  Numbers counts(bins);
  const double width = (range.high - range.low) / static_cast<double>(bins);
  for (const double x : numbers)
    if (std::isfinite(x)) ++counts[std::min(bins - 1, static_cast<std::size_t>((x - range.low) / width))];
  return counts;
}

Value plot_histogram(const BuiltinCall& call) {
  constexpr std::int64_t most_bins = 10000;
  constexpr std::int64_t usual_bins = 10;
  require_files(call);
  const std::size_t data = data_count(call);
  if (data < 1 || data > 2)
    call.fail(fmt::format("it takes numbers, bins and options, not {}", counted(data, "value", "values")));
  const Options options(call, data, {"title", "x", "y", "show"});
  const std::int64_t bins = data == 2 ? integer_argument(call, 1) : usual_bins;
  if (bins < 1 || bins > most_bins) call.fail(fmt::format("the bins are from 1 to {}, not {}", most_bins, bins));
  const Numbers numbers = numbers_of(call, "a", call.arguments[0]);
  Figure figure;
  figure.form = Figure::Form::bars;
  label(call, options, figure);
  PictureRange range;
  for (const double x : numbers) range.take(x);
  with_picture(call, [&] { range.require_drawable(); });
  range.widen();
  Curve bars;
  bars.y = counts_in(numbers, range, static_cast<std::size_t>(bins));
  figure.bar_width = (range.high - range.low) / static_cast<double>(bins);
  for (std::size_t i = 0; i < bars.y.size(); ++i)
    bars.x.push_back(range.low + (static_cast<double>(i) + 0.5) * figure.bar_width);
  figure.curves.push_back(std::move(bars));
  return shown(call, options, std::move(figure));
}

Value plot_matrix(const BuiltinCall& call) {
  constexpr std::size_t most_kept = 1500;  // rows and columns
  require_files(call);
  const Options options(call, 1, {"title", "x", "y", "show"});
  Value& array = call.arguments[0];
  if (!array.is_object()) call.fail(fmt::format("it takes an array, not {}", kind_in_words(array)));
  const Extents extents = extents_of_array(call, "a", array, 2);
  Figure figure;
  figure.form = Figure::Form::matrix;
  label(call, options, figure);
  figure.rows = static_cast<std::size_t>(extents.front());
  figure.columns = static_cast<std::size_t>(extents.back());
  const Cells whole{figure.rows, figure.columns, elements_of(call, "a", array, extents)};
  figure.cells = thinned_cells(whole, most_kept, most_kept);
  return shown(call, options, std::move(figure));
}

// ---- Files

Canvas::Form form_of(const BuiltinCall& call, const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  if (ending == ".svg") return Canvas::Form::svg;
  if (ending == ".png") return Canvas::Form::png;
  if (ending == ".pdf") return Canvas::Form::pdf;
  call.fail(fmt::format("a picture is a file that ends in .svg, .png or .pdf, and {} does not", string_literal(path)));
}

int pixels(const BuiltinCall& call, const Options& options, std::string_view name, int usual) {
  constexpr std::int64_t fewest = 100;
  constexpr std::int64_t most = 10000;
  const auto value = options.find(name);
  if (!value) return usual;
  const std::int64_t number = is_integer(*value) ? number_of(*value).whole : 0;
  if (number < fewest || number > most)
    call.fail(fmt::format("{} is an integer from {} to {}", string_literal(name), fewest, most));
  return static_cast<int>(number);
}

Value save_plot(const BuiltinCall& call) {
  const std::string path = output_path(call);
  const Options options(call, 1, {"width", "height"});
  const Canvas canvas{form_of(call, path), pixels(call, options, "width", 800), pixels(call, options, "height", 500)};
  if (!call.pictures.last) call.fail("nothing has been drawn yet");
  with_picture(call, [&] {
    const std::string content = drawn_for_file(*call.pictures.last, canvas);
    OutputFile file(path);
    file.write(content);
    file.finish();
  });
  return {};
}

// clang-format off
constexpr std::string_view picture_options =
    "\"title\": a text above the picture\n"
    "\"x\", \"y\": the labels of the axes\n"
    "\"show\": false keeps the picture for save_plot, without printing it";
constexpr std::string_view curve_options =
    "\"title\": a text above the picture\n"
    "\"x\", \"y\": the labels of the axes\n"
    "\"names\": a table with the name of each curve\n"
    "\"show\": false keeps the picture for save_plot, without printing it";

constexpr Builtin picture_rows[] = {
    {"plot", 1, 3, plot, "plot(y)\nplot(x, y)\nplot(x, y, options)", "Draws a curve as text.",
     "plot([0, 1, 2], [[0, 1, 4], [0, 2, 4]], [\"names\": [\"squares\", \"doubles\"]])",
     Gives::nothing, curve_options},
    {"plot_histogram", 1, 3, plot_histogram,
     "plot_histogram(a)\nplot_histogram(a, bins)\nplot_histogram(a, bins, options)",
     "Draws how often values occur.",
     "plot_histogram([1, 2, 2, 3, 3, 3], 3, [\"x\": \"value\"])",
     Gives::nothing, picture_options},
    {"plot_matrix", 1, 2, plot_matrix, "plot_matrix(a)\nplot_matrix(a, options)",
     "Draws an array of two axes, a cell for each element.",
     "plot_matrix(xones(4, 8), [\"title\": \"ones\"])",
     Gives::nothing, picture_options},
    {"plot_points", 1, 3, plot_points, "plot_points(y)\nplot_points(x, y)\nplot_points(x, y, options)",
     "Draws points as text.",
     "plot_points([1, 2, 4], [3, 1, 2], [\"x\": \"time\", \"y\": \"size\"])",
     Gives::nothing, curve_options},
    {"save_plot", 1, 2, save_plot, "save_plot(path)\nsave_plot(path, options)",
     "Writes the last picture into a file.",
     "plot([1, 4, 9], [\"show\": false])\n"
     "save_plot(\"squares.svg\", [\"width\": 600])", Gives::nothing,
     "\"width\", \"height\": in pixels, from 100 to 10000; 800 and 500 by default"},
};
// clang-format on

}  // namespace

BuiltinFamily picture_functions() { return family_of(picture_rows); }

}  // namespace hvm
