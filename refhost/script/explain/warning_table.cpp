// script/explain/warning_table.cpp: every warning there is: its name, when it comes, what it says, and its page

#include "script/explain/warning_table.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "script/explain/script_words.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

using Found = std::optional<Finding>;

constexpr auto library = "of use \"arrays\"";

// ---- Values and words

bool is_of_kind(const Value& value, std::string_view kind) { return array_kind_of(value) == kind; }

/// Whether the value is a real that an integer cannot hold; NaN is one.
bool has_fraction(const Value& value) {
  if (value.tag() != ValueTag::real) return false;
  HostValue record = value.record();
  const double x = HVM_AsDouble(&record);
  return !(x == std::floor(x));
}

std::int64_t as_int(const Value& value) {
  HostValue record = value.record();
  return HVM_AsInt(&record);
}

std::int64_t as_int64(const Value& value) {
  HostValue record = value.record();
  return HVM_AsInt64(&record);
}

std::string in_parentheses(const Extents& extents) { return fmt::format("({})", fmt::join(extents, ", ")); }

/// An argument in the words of the script; `otherwise` where it is missing or too long for a sentence.
std::string argument_text(const AnsweredCall& call, std::size_t number, std::string_view otherwise) {
  const auto texts = argument_texts(call.text());
  return number < texts.size() ? short_text(texts[number], otherwise) : std::string(otherwise);
}

/// The same for an argument that a sentence names twice: anything but a name is computed once.
std::string argument_name(const AnsweredCall& call, std::size_t number, std::string_view otherwise) {
  const std::string text = argument_text(call, number, otherwise);
  return is_name(text) ? text : std::string(otherwise);
}

std::string article(const std::string& kind) { return fmt::format("{} {}", kind.front() == 'i' ? "an" : "a", kind); }

/// What a list says of a function; empty when it is not in the list.
struct Word {
  std::string_view function;
  std::string_view words;
};
template <std::size_t count>
std::string_view words_for(const Word (&list)[count], std::string_view function) {
  const auto found =
      std::find_if(std::begin(list), std::end(list), [&](const Word& x) { return x.function == function; });
  return found == std::end(list) ? std::string_view{} : found->words;
}

/// The call of a function with another first argument: that one as a real.
std::string call_with_real_start(const AnsweredCall& call) {
  const auto texts = argument_texts(call.text());
  if (texts.empty()) return {};
  std::string start = short_text(texts[0], "");
  if (!start.empty() && start.back() == 'L') start.pop_back();
  const bool is_literal = !start.empty() && start.find_first_not_of("-0123456789") == std::string::npos;
  if (!is_literal && !is_name(start)) return {};
  std::string text = fmt::format("{}({}{}", call.function, start, is_literal ? ".0" : " * 1.0");
  for (std::size_t i = 1; i < texts.size(); ++i) text += fmt::format(", {}", texts[i]);
  return short_text(text + ')', "");
}

// ---- Creation

/// Whether integers between these ends lose a fraction. Wider than 64 bits, so that no difference wraps.
struct IntegerSpacing {
  __extension__ using Wide = __int128;
  Wide start;
  Wide stop;
  std::int64_t count;

  explicit IntegerSpacing(const std::vector<Value>& arguments)
      : count(arguments.size() > 2 ? as_int(arguments[2]) : 50) {
    const bool is_wide = arguments[0].tag() == ValueTag::integer64;
    start = is_wide ? as_int64(arguments[0]) : as_int(arguments[0]);
    stop = is_wide ? as_int64(arguments[1]) : as_int(arguments[1]);
  }
  bool is_cut() const { return count > 1 && (stop - start) % (count - 1) != 0; }
};

bool has_integer_start(const std::vector<Value>& arguments) {
  return arguments.size() > 1 && arguments[0].is_number() && arguments[0].tag() != ValueTag::real &&
         arguments[1].is_number();
}

bool are_cut(const std::vector<Value>& arguments) {
  if (!has_integer_start(arguments)) return false;
  const IntegerSpacing spacing(arguments);
  return spacing.is_cut() || (has_fraction(arguments[1]) && spacing.count > 1);
}

/// Whether one of the powers from 10 to the first argument on is no integer of its kind.
bool are_odd_powers(const std::vector<Value>& arguments) {
  if (!has_integer_start(arguments)) return false;
  const IntegerSpacing spacing(arguments);
  const bool is_wide = arguments[0].tag() == ValueTag::integer64;
  const IntegerSpacing::Wide stop = spacing.count > 1 ? spacing.stop : spacing.start;
  const bool has_odd_ends = std::min(spacing.start, stop) < 0 || std::max(spacing.start, stop) > (is_wide ? 18 : 9);
  return spacing.count > 0 && (has_odd_ends || are_cut(arguments));
}

std::string real_start_remedy(const AnsweredCall& call) {
  const std::string written = call_with_real_start(call);
  return written.empty() ? "give a real as its start" : "write " + written;
}

Found integer_spacing(const AnsweredCall& call) {
  return Finding{fmt::format("{} gives integers, which lose their fractions: the kind is that of its start; {}",
                             short_text(call.text(), call.function), real_start_remedy(call))};
}

Found integer_powers(const AnsweredCall& call) {
  return Finding{fmt::format("{} gives integers, which do not hold these powers: the kind is that of its start; {}",
                             short_text(call.text(), call.function), real_start_remedy(call))};
}

Found integer_range(const AnsweredCall& call) {
  for (const Value& argument : call.arguments)
    if (has_fraction(argument))
      return Finding{
          fmt::format("xarange reads {} as {}: it counts in integers; for fractions use "
                      "xlinspace(start, stop, count)",
                      number_text(argument), as_int(argument))};
  return {};
}

Found empty_range(const AnsweredCall& call) {
  if (call.arguments.size() != 3) return {};
  const std::int64_t start = as_int(call.arguments[0]);
  const std::int64_t range = as_int(call.arguments[1]) - start;
  const std::int64_t step = as_int(call.arguments[2]);
  const bool is_beyond = range > 0 ? step > range : range < 0 && step < range;
  if (!is_beyond) return {};
  return Finding{
      fmt::format("{} has no elements: with a step beyond the whole range even the start is left out; give "
                  "a step of {}",
                  short_text(call.text(), call.function), range)};
}

Found fraction_of_an_argument(const AnsweredCall& call) {
  for (const Value& argument : call.arguments)
    if (has_fraction(argument))
      return Finding{fmt::format("{} reads {} as {}: it takes an integer here; give one", call.function,
                                 number_text(argument), as_int64(argument))};
  return {};
}

// ---- Data of xarray

std::string in_words(const HostValue& record) {
  const Value value = Value::sharing(record);
  if (value.is_nil()) return "nil";
  if (const auto kind = kind_of_array(value)) return article(*kind) + " array";
  if (value.is_string()) return fmt::format("the string {:?}", short_text(text_of(record), "..."));
  return kind_in_words(value);
}

bool is_number(const HostValue& record) {
  return record.tag == ValueTag::integer || record.tag == ValueTag::real || record.tag == ValueTag::integer64;
}

/// Walks a table of data as the module does, without recursion. Tables may be shared, so that there is a limit on the
/// entries that are looked at.
class DataWalk {
 public:
  DataFault fault_of(const HostHash* data) {
    open(data);
    while (!levels_.empty() && left_ > 0) {
      --left_;
      Level& level = levels_.back();
      const Entry entry = level.walk.next();
      if (!entry) {
        if (!close()) return fault_;
        continue;
      }
      if (!is_number(*entry.key)) {
        level.first_name = level.first_name ? level.first_name : entry.key;
        continue;
      }
      ++level.count;
      const HostHash* row = table_of(*entry.value);
      if (!row && !is_number(*entry.value)) return {DataFault::Form::no_number, in_words(*entry.value)};
      if (level.count > 1 && level.has_rows != (row != nullptr)) return {DataFault::Form::ragged, "a row and a number"};
      level.has_rows = row != nullptr;
      if (row) open(row);
    }
    return {};
  }

 private:
  struct Level {
    TableWalk walk;
    std::int64_t count = 0;
    bool has_rows = false;
    const HostValue* first_name = nullptr;  // the key of an entry that the module passes over
    explicit Level(const HostHash* table) : walk(table) {}
  };

  void open(const HostHash* table) { levels_.emplace_back(table); }

  /// Ends a row; false when it differs from another one of its depth.
  bool close() {
    const Level row = levels_.back();
    levels_.pop_back();
    if (row.count == 0 && row.first_name) {
      fault_ = {DataFault::Form::named, fmt::format("{:?}", short_text(text_of(*row.first_name), "..."))};
      return false;
    }
    const std::size_t depth = levels_.size();
    if (lengths_.size() <= depth) lengths_.resize(depth + 1, Length{-1, false});
    Length& length = lengths_[depth];
    const bool is_first = length.count < 0;
    if (is_first) length = {row.count, row.has_rows};
    if (length.count != row.count)
      fault_ = {DataFault::Form::ragged, fmt::format("rows of {} and {}", length.count, row.count)};
    else if (length.has_rows != row.has_rows)
      fault_ = {DataFault::Form::ragged, "rows of numbers and of rows"};
    else
      return true;
    return false;
  }

  struct Length {
    std::int64_t count;
    bool has_rows;
  };
  std::vector<Level> levels_;
  std::vector<Length> lengths_;
  DataFault fault_;
  std::int64_t left_ = std::int64_t{1} << 24;
};

/// Whether data are numbers in rows of one length, found without memory and in few levels.
class RegularData {
 public:
  bool holds(const HostHash* table, std::size_t depth = 0) {
    if (depth == most_levels) return false;
    std::int32_t count = 0;
    bool has_rows = false;
    TableWalk walk(table);
    for (Entry entry = walk.next(); entry; entry = walk.next(), ++count) {
      if (--left_ < 0) return true;
      const HostHash* row = entry.value->tag == ValueTag::table ? table_of(*entry.value) : nullptr;
      if (!is_number(*entry.key) || !(row || is_number(*entry.value))) return false;
      if (count > 0 && has_rows != (row != nullptr)) return false;
      has_rows = row != nullptr;
      if (row && !holds(row, depth + 1)) return false;
    }
    Level& level = levels_[depth];
    if (level.count < 0) level = {count, has_rows};
    return level.count == count && level.has_rows == has_rows;
  }

 private:
  static constexpr std::size_t most_levels = 8;
  struct Level {
    std::int32_t count = -1;
    bool has_rows = false;
  };
  Level levels_[most_levels];
  std::int64_t left_ = std::int64_t{1} << 24;

 public:
  /// Whether rows have one element, so that the array is a column.
  bool has_rows_of_one() const {
    std::size_t depth = 0;
    while (depth + 1 < most_levels && levels_[depth].has_rows) ++depth;
    return depth > 0 && levels_[depth].count == 1;
  }
};

bool are_odd(const HostHash* data) {
  RegularData regular;
  return !regular.holds(data) || regular.has_rows_of_one();
}

const DataFault& data_fault(const AnsweredCall& call) {
  if (!call.data_fault) {
    const bool has_table = call.arguments.size() > 1 && call.arguments[1].is_table() && call.result.is_object();
    call.data_fault = has_table ? DataWalk().fault_of(table_of(call.arguments[1].record())) : DataFault{};
  }
  return *call.data_fault;
}

Found data_that_ends_early(const AnsweredCall& call) {
  const DataFault& fault = data_fault(call);
  if (fault.form != DataFault::Form::no_number) return {};
  const bool is_array = fault.what.find(" array") != std::string::npos;
  const std::string remedy = is_array ? fmt::format("stack(rows) {} makes a matrix of arrays", library)
                                      : std::string("make numbers of all entries first");
  return Finding{fmt::format("xarray stops reading its data at {}; {}", fault.what, remedy)};
}

Found ragged_rows(const AnsweredCall& call) {
  const DataFault& fault = data_fault(call);
  if (fault.form != DataFault::Form::ragged) return {};
  return Finding{
      fmt::format("the data have {}: xarray takes the shape of the last ones, cuts elements off or adds "
                  "zeros; make all rows of one length",
                  fault.what)};
}

Found named_entries(const AnsweredCall& call) {
  const DataFault& fault = data_fault(call);
  if (fault.form != DataFault::Form::named) return {};
  return Finding{
      fmt::format("xarray passes over entries under names, and there are no others: the first is under {}; "
                  "give entries without names",
                  fault.what)};
}

std::string dtype_name(const AnsweredCall& call) {
  const Quotation* dtype = call.quoted.dtype;
  if (!dtype || dtype->form == Quotation::Form::data) return {};
  const auto* name = std::get_if<Variable>(&dtype->subject->form);
  return name ? name->name : std::string();
}

bool is_dtype(std::string_view name) { return name == "bool" || name == "int" || name == "int64" || name == "double"; }

bool gave_no_array(const AnsweredCall& call) { return call.result.is_nil() && !dtype_name(call).empty(); }

Found dtype_that_is_a_variable(const AnsweredCall& call) {
  const std::string name = dtype_name(call);
  if (!gave_no_array(call) || !call.quoted.is_dtype_variable || !(is_dtype(name) || name == "float")) return {};
  return Finding{
      fmt::format("'{0}' is a variable here, and @{0} its value instead of a kind: xarray gives nothing; "
                  "give the variable another name",
                  name)};
}

Found float_dtype(const AnsweredCall& call) {
  if (!gave_no_array(call) || dtype_name(call) != "float") return {};
  return Finding{"xarray gives nothing for the kind float, of which there are no arrays; write @double"};
}

Found unknown_dtype(const AnsweredCall& call) {
  const std::string name = dtype_name(call);
  if (!gave_no_array(call) || is_dtype(name)) return {};
  return Finding{
      fmt::format("xarray gives nothing, since '{}' is no kind of array; write @int, @int64, @double or @bool",
                  short_text(name, "..."))};
}

Found data_that_are_no_table(const AnsweredCall& call) {
  if (!gave_no_array(call) || call.arguments.size() < 2) return {};
  const Value& data = call.arguments[1];
  if (data.is_table() || data.tag() == ValueTag::code) return {};
  const std::string name = argument_name(call, 1, "a");
  const std::string remedy = is_of_kind(data, "bool") ? fmt::format("as_int({}) {} makes integers of it", name, library)
                             : is_integer_array(data) ? fmt::format("xminimum({0}, {0}) makes doubles of it", name)
                             : kind_of_array(data)    ? fmt::format("{} + 0 copies it", name)
                                                      : std::string("write a table of numbers");
  return Finding{fmt::format("xarray gives nothing for {}, since its data are a table or a data literal; {}",
                             in_words(data.record()), remedy)};
}

/// Whether a data literal of the dtype takes a literal as an element with its value.
bool is_taken(const Expression& literal, const std::string& dtype) {
  if (std::holds_alternative<RealLiteral>(literal.form)) return dtype == "double" || dtype == "float";
  if (std::holds_alternative<IntegerLiteral>(literal.form)) return dtype == "int";
  return !is_literal(literal);
}

const Expression* first_dropped(const Expression& data, const std::string& dtype) {
  const auto* row = std::get_if<TableLiteral>(&data.form);
  if (!row) return is_taken(data, dtype) ? nullptr : &data;
  for (const TableEntry& entry : row->entries)
    if (const Expression* found = first_dropped(*entry.value, dtype)) return found;
  return nullptr;
}

/// Two rows of one table whose lengths differ.
std::optional<std::pair<std::size_t, std::size_t>> differing_rows(const TableLiteral& table) {
  const TableLiteral* first = nullptr;
  for (const TableEntry& entry : table.entries) {
    const auto* row = std::get_if<TableLiteral>(&entry.value->form);
    if (!row) continue;
    if (first && first->entries.size() != row->entries.size())
      return std::pair(first->entries.size(), row->entries.size());
    if (auto found = differing_rows(*row)) return found;
    first = first ? first : row;
  }
  return {};
}

Found ragged_literal(const Expression& data) {
  const auto* table = std::get_if<TableLiteral>(&data.form);
  const auto lengths = table ? differing_rows(*table) : std::nullopt;
  if (!lengths) return {};
  return Finding{
      fmt::format("the data literal has rows of {} and {}: xarray drops elements or adds zeros; make all rows of one "
                  "length",
                  lengths->first, lengths->second)};
}

Found dropped_element(const AnsweredCall& call) {
  const std::string dtype = dtype_name(call);
  const Quotation* data = call.quoted.data;
  if (!data || data->form != Quotation::Form::data || !(is_dtype(dtype) || dtype == "float")) return {};
  const Expression* dropped = first_dropped(*data->subject, dtype);
  if (!dropped) return ragged_literal(*data->subject);
  Finding finding;
  finding.span = dropped->span;
  finding.source = call.quoted.data_source;
  const auto* narrow = std::get_if<IntegerLiteral>(&dropped->form);
  const auto* wide = std::get_if<Integer64Literal>(&dropped->form);
  if ((narrow || wide) && (dtype == "double" || dtype == "float"))
    finding.message = fmt::format("a data literal of reals drops the integer {0}; write {0}.0 or use a table",
                                  narrow ? narrow->value : wide->value);
  else
    finding.message = fmt::format("a data literal of the kind {} drops {}; use a table", dtype,
                                  short_text(finding.source->text(dropped->span), "an element"));
  return finding;
}

// ---- Reductions

Found largest_of_doubles(const AnsweredCall& call) {
  if (call.result.tag() != ValueTag::real) return {};
  const auto extents = shape_of(call.caller, call.arguments[0]);
  if (extents && std::find(extents->begin(), extents->end(), 0) != extents->end())
    return Finding{fmt::format("xamax gives 2.2250738585072014e-308 of no elements; look at len({}) first",
                               argument_name(call, 0, "a"))};
  return Finding{
      fmt::format("xamax gives 2.2250738585072014e-308 of doubles without an element above it; write "
                  "-xamin(-{})",
                  argument_name(call, 0, "a"))};
}

std::int64_t element_count(const Extents& extents) {
  std::int64_t count = 1;
  for (const std::int64_t extent : extents)
    if (extent < 0 || __builtin_mul_overflow(count, extent, &count)) return 0;
  return count;
}

Found largest_of_int64(const AnsweredCall& call) {
  if (call.result.tag() != ValueTag::integer64) return {};
  const auto extents = shape_of(call.caller, call.arguments[0]);
  if (!extents || element_count(*extents) < 2) return {};
  return Finding{fmt::format("xamax gives the smallest element of an int64 array; write -xamin(-{})",
                             argument_name(call, 0, "a"))};
}

// The elements behind the last whole block may all equal the first one, or may not matter to an extreme. The answer is
// then right by chance, and the warning comes all the same.
constexpr std::string_view of_last_elements = "counts the first element in place of the last {} of {}";

constexpr Word on_columns[] = {
    {"xsum", of_last_elements},
    {"xamin", of_last_elements},
    {"xamax", of_last_elements},
    {"xsort", "sorts nothing, since each row has one element"},
    {"xargsort", "gives zeros, since each row has one element"},
    {"xpartition", "orders nothing, since each row has one element"},
    {"xdiff", "gives no elements, since each row has one"},
    {"xtrapz", "gives 0.0, since only the first row counts"},
    {"xhistogram", "counts the first element alone, {} times"},
    {"xbincount", "counts the first element alone, {} times"},
    {"xdigitize", "looks up the first element alone and gives 0.0 for all others"},
};

Found column(const AnsweredCall& call) {
  if (call.arguments.empty() || !call.columns.has(call.arguments[0])) return {};
  Value& array = call.arguments[0];
  const auto extents = shape_of(call.caller, array);
  if (!extents || extents->size() < 2 || extents->back() != 1) {
    call.columns.forget(object_of(array.record()));
    return {};
  }
  std::int64_t count = element_count(*extents);
  if (count < 2) return {};
  const std::string_view words = words_for(on_columns, call.function);
  const std::int64_t whole = count;
  if (words == of_last_elements) count %= is_of_kind(array, "int") ? 8 : 4;
  if (count == 0) return {};
  return Finding{fmt::format("{} of a column {} {}; give it one dimension first: {}.reshape({})", call.function,
                             in_parentheses(*extents), fmt::format(fmt::runtime(words), count, whole),
                             argument_name(call, 0, "a"), whole)};
}

Found kind_of_product(const AnsweredCall& call) {
  if (call.arguments.size() < 2 || !is_integer_array(call.arguments[0])) return {};
  if (!is_of_kind(call.arguments[1], "double")) return {};
  const std::string a = argument_name(call, 0, "i");
  return Finding{
      fmt::format("{0} gives {1} array, the kind of its first argument, and drops all fractions; write "
                  "{0}(xminimum({2}, {2}), {3})",
                  call.function, article(*kind_of_array(call.arguments[0])), a, argument_text(call, 1, "d"))};
}

// ---- Nothing

constexpr Word instead[] = {
    {"xpow", "power(a, p) of use \"arrays\" raises elements to a power"},
    {"xclip", "clip(a, low, high) of use \"arrays\" does what its name says"},
    {"xfma", "write a * b + c"},
    {"xinterp", "interpolate(x, xp, fp) of use \"arrays\" does what its name says"},
    {"xchoice", "choice(a, n) of use \"arrays\" does what its name says"},
    {"xrandint", "as_int(xrand(n) * k) of use \"arrays\" draws integers below k"},
    {"xsearchsorted", "write xdigitize(values, a)"},
    {"xmatrix_power", "multiply with xdot as often as it takes"},
    {"xremainder", "write a % b with integer arrays"},
    {"xeig", "for a symmetric matrix write xeigh(a)"},
    {"xeigvals", "for a symmetric matrix write xeigvalsh(a)"},
    {"xpermutation", "write c = a + 0 and then xshuffle(c), or permutation(n) of use \"arrays\""},
};

Found nothing_computed(const AnsweredCall& call) {
  const std::string_view gives = call.function == "xpermutation" ? "0 and no permuted array"
                                 : call.function == "xeig"       ? "an empty table"
                                                                 : "nothing";
  return Finding{fmt::format("{} gives {}, whatever its arguments are; {}", call.function, gives,
                             words_for(instead, call.function))};
}

Found values_for_positions(const AnsweredCall&) {
  return Finding{
      fmt::format("xargpartition gives values, not positions; argpartition(a, k) {} and xargsort(a) give "
                  "positions",
                  library)};
}

Found bool_array(const AnsweredCall& call) {
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    if (!is_of_kind(call.arguments[i], "bool")) continue;
    const std::string text = argument_text(call, i, "m");
    const bool counts = call.function == "xsum" || call.function == "xcount_nonzero";
    return Finding{counts ? fmt::format("{} gives nothing for a bool array; count({}) {} counts its true elements",
                                        call.function, text, library)
                          : fmt::format("{} gives nothing for a bool array; as_double({}) {} makes 0.0 and 1.0 of its "
                                        "elements",
                                        call.function, text, library)};
  }
  return {};
}

Found two_kinds(const AnsweredCall& call) {
  if (call.arguments.size() < 2) return {};
  const auto first = kind_of_array(call.arguments[0]);
  const auto second = kind_of_array(call.arguments[1]);
  if (!first || !second || first == second) return {};
  const std::string name = argument_name(call, *first == "double" ? 1 : 0, "i");
  return Finding{
      fmt::format("{0} gives nothing for arrays of two kinds, {1} and {2}; make one kind of them: "
                  "xminimum({3}, {3}) has the elements of {3} as doubles",
                  call.function, *first, *second, name)};
}

Found integers_without_result(const AnsweredCall& call) {
  if (call.arguments.empty() || !is_integer_array(call.arguments[0])) return {};
  return Finding{fmt::format("{0} gives nothing for {1} array; write {0}(xminimum({2}, {2}))", call.function,
                             article(*kind_of_array(call.arguments[0])), argument_name(call, 0, "i"))};
}

Found no_diagonal(const AnsweredCall&) {
  return Finding{
      "xtrace gives nothing for an array of fewer than two dimensions, which has no diagonal; give a matrix"};
}

Found value_of_shuffle(const AnsweredCall& call) {
  if (!call.is_used || !call.result.is_number()) return {};
  const std::string name = argument_name(call, 0, "a");
  return Finding{
      fmt::format("xshuffle changes {0} itself and gives 0; write xshuffle({0}) on a line of its own and "
                  "then use {0}",
                  name)};
}

// ---- Arguments that are not looked at

constexpr std::string_view no_axis = "there is no axis; row({0}, i) of use \"arrays\" gives each row of a matrix";
constexpr std::string_view sorts_rows =
    "there is no axis, and each row is sorted; transpose({0}) of use \"arrays\" makes rows of columns";

constexpr Word without_more[] = {
    {"xsum", "there is no axis; sum_rows({0}) and sum_columns({0}) of use \"arrays\" sum rows and columns"},
    {"xmean", "there is no axis; mean_columns({0}) of use \"arrays\" gives the means of columns"},
    {"xstddev", "there is no axis and no degree of freedom; for a sample of n multiply by sqrt(n / (n - 1.0))"},
    {"xvariance", "there is no axis and no degree of freedom; for a sample of n multiply by n / (n - 1.0)"},
    {"xprod", no_axis},
    {"xamin", no_axis},
    {"xamax", no_axis},
    {"xmedian", no_axis},
    {"xcount_nonzero", no_axis},
    {"xargmin", no_axis},
    {"xargmax", no_axis},
    {"xsort", sorts_rows},
    {"xargsort", sorts_rows},
    {"xdiff", "there is no axis and no order; write xdiff(xdiff({0})) for the second differences"},
    {"xtrapz", "there is no spacing; multiply the result by it"},
    {"xnorm", "there is one norm, the root of the sum of the squares"},
    {"xhistogram_bin_edges", "there are always ten bins; xlinspace(low, high, n + 1) gives other edges"},
    {"xlogspace", "the base is always 10"},
};

Found unused_argument(const AnsweredCall& call) {
  const auto most = static_cast<std::size_t>(*call.entry->most_arguments);
  const std::string_view words = words_for(without_more, call.function);
  const std::string hint =
      words.empty() ? "leave it out" : fmt::format(fmt::runtime(words), argument_name(call, 0, "a"));
  const std::string given = argument_text(call, most, "");
  return Finding{fmt::format("{} takes {} and does not look at {}: {}", call.function,
                             counted(most, "argument", "arguments"), given.empty() ? "what follows" : given, hint)};
}

// ---- Operators

bool is_comparison(BinaryOperator op) {
  return op == BinaryOperator::less || op == BinaryOperator::less_equal || op == BinaryOperator::greater ||
         op == BinaryOperator::greater_equal;
}

/// The comparison with its operands exchanged.
BinaryOperator turned(BinaryOperator op) {
  switch (op) {
    case BinaryOperator::less:
      return BinaryOperator::greater;
    case BinaryOperator::less_equal:
      return BinaryOperator::greater_equal;
    case BinaryOperator::greater:
      return BinaryOperator::less;
    default:
      return BinaryOperator::less_equal;
  }
}

std::string page_of(BinaryOperator op) {
  const char* name = op == BinaryOperator::add         ? "add"
                     : op == BinaryOperator::subtract  ? "subtract"
                     : op == BinaryOperator::multiply  ? "multiply"
                     : op == BinaryOperator::divide    ? "divide"
                     : op == BinaryOperator::remainder ? "remainder"
                                                       : "less";
  return fmt::format("docs/functions/operator-{}.md#result", name);
}

bool is_turned_silently(BinaryOperator op) {
  return op == BinaryOperator::subtract || op == BinaryOperator::divide || op == BinaryOperator::remainder ||
         is_comparison(op);
}

/// What gives the number on the left of the array.
std::string number_first(const ArrayOperation& operation, const std::string& n, const std::string& a) {
  const BinaryOperator op = operation.op;
  const auto extents = shape_of(operation.caller, operation.right);
  if (extents && extents->empty()) return fmt::format("{} {} {}[0]", n, spelling(op), a);
  if (is_comparison(op)) return fmt::format("{} {} {}", a, spelling(turned(op)), n);
  if (op == BinaryOperator::subtract) return fmt::format("{} * -1 + {}", a, n);
  const bool has_ones = op == BinaryOperator::divide && is_of_kind(operation.right, "double") && extents;
  if (has_ones) return fmt::format("xones({}) * {} / {}", fmt::join(*extents, ", "), n, a);
  return fmt::format("({0} * 0 + {1}) {2} {0}", a, n, spelling(op));
}

Found number_on_the_left(const ArrayOperation& operation) {
  if (!operation.left.is_number() || !is_turned_silently(operation.op)) return {};
  const std::string_view kind = array_kind_of(operation.right);
  const bool fails = operation.op == BinaryOperator::remainder && kind == "double";  // and the error says so
  if (kind.empty() || kind == "bool" || fails) return {};
  const std::string n = operation.left_text("n");
  const std::string a = operation.right_text("a");
  const std::string bare = n.front() == '(' && operation.chain ? n.substr(1, n.size() - 2) : n;
  const std::string sign = spelling(operation.op);
  const std::string written =
      operation.is_compound() ? fmt::format("{} {}= {}", n, sign, a) : fmt::format("{} {} {}", bare, sign, a);
  const std::string front = operation.is_compound() ? n + " = " : "";
  return Finding{fmt::format("{} computes {} {} {}: with a number the array stands on the left; write {}{}", written, a,
                             sign, n, front, number_first(operation, n, a)),
                 page_of(operation.op)};
}

Found fraction_of_a_number(const ArrayOperation& operation) {
  const bool is_left = has_fraction(operation.left);
  const bool is_right = has_fraction(operation.right);
  if (!is_left && !is_right) return {};
  const Value& number = is_left ? operation.left : operation.right;
  const Value& array = is_left ? operation.right : operation.left;
  const bool is_equality = operation.op == BinaryOperator::equal || operation.op == BinaryOperator::not_equal;
  if (!is_integer_array(array) || is_equality) return {};
  const std::int64_t read = is_of_kind(array, "int") ? as_int(number) : as_int64(number);
  const std::string name = is_left ? operation.right_text("") : operation.left_text("");
  const std::string remedy = is_name(name) ? fmt::format("xminimum({0}, {0}) makes doubles of it", name)
                                           : fmt::format("as_double(a) {} makes doubles of it", library);
  return Finding{fmt::format("{} array reads {} as {}, an integer; {}", article(*kind_of_array(array)),
                             number_text(number), read, remedy),
                 page_of(operation.op)};
}

Found remainder_of_doubles(const ArrayOperation& operation) {
  if (operation.op != BinaryOperator::remainder || !is_of_kind(operation.left, "double")) return {};
  if (!is_of_kind(operation.right, "double") && !is_integer_array(operation.right)) return {};
  const std::string a = operation.left_text("a");
  const std::string b = operation.right_text("b");
  const std::string gives = operation.is_compound() ? "changes nothing" : "gives nothing";
  const std::string sign = operation.is_compound() ? "%=" : "%";
  return Finding{fmt::format("{} {} {} {}: doubles have no remainder; make integers of them with as_int(a) {}", a, sign,
                             b, gives, library)};
}

Found bool_product(const ArrayOperation& operation) {
  if (operation.op != BinaryOperator::multiply || operation.is_compound()) return {};
  const bool is_left = is_of_kind(operation.left, "bool");
  if (!is_left && !is_of_kind(operation.right, "bool")) return {};
  return Finding{fmt::format("a bool array times a number gives nothing; as_int({}) {} makes integers of it",
                             is_left ? operation.left_text("m") : operation.right_text("m"), library)};
}

// ---- Elements and methods

Found fraction_of_an_element(const ElementAccess& access) {
  if (!access.written || !has_fraction(*access.written) || !is_integer_array(access.object)) return {};
  const bool is_narrow = is_of_kind(access.object, "int");
  return Finding{fmt::format("{} array stores {} as {}; make doubles of it first: a = xminimum(a, a)",
                             article(*kind_of_array(access.object)), number_text(*access.written),
                             is_narrow ? as_int(*access.written) : as_int64(*access.written))};
}

Found fewer_indices(const ElementAccess& access) {
  const auto extents = shape_of(access.caller, access.object);
  const std::size_t given = access.indices.size();
  if (!extents || !kind_of_array(access.object) || given >= extents->size()) return {};
  const auto missing = static_cast<std::ptrdiff_t>(extents->size() - given);
  const bool has_one =
      std::all_of(extents->begin(), extents->begin() + missing, [](auto extent) { return extent == 1; });
  if (has_one) return {};
  std::string present;
  for (const Value& index : access.indices) present += (present.empty() ? "" : ", ") + number_text(index);
  std::string zeros;
  for (std::ptrdiff_t i = 0; i < missing; ++i) zeros += "0, ";
  return Finding{
      fmt::format("[{0}] of an array of the shape {1} is [{2}{0}]: indices count from the last dimension, "
                  "and missing ones are 0; row(a, i) {3} gives a row",
                  present, in_parentheses(*extents), zeros, library)};
}

Found value_of_reshape(const AnsweredMethod& call) {
  if (!call.is_used || call.method != "reshape") return {};
  return Finding{
      "reshape changes the array itself and gives nothing; write a.reshape(...) on a line of its own and "
      "then use a"};
}

std::vector<std::string_view> functions_of(const Word* first, const Word* last) {
  std::vector<std::string_view> names;
  for (; first != last; ++first) names.push_back(first->function);
  return names;
}

constexpr std::string_view result_section = "docs/functions/NAME.md#result";
constexpr std::string_view arguments_section = "docs/functions/NAME.md#arguments";

}  // namespace

std::string ArrayOperation::left_text(std::string_view otherwise) const {
  std::string text;
  if (assignment) text = operand_text(*assignment->variable, *caller.source);
  if (chain) text = chain_text(*chain, link, *caller.source);
  if (chain && !text.empty() && link != chain->links.data()) text = '(' + text + ')';
  return text.empty() ? std::string(otherwise) : text;
}

std::string ArrayOperation::right_text(std::string_view otherwise) const {
  std::string text;
  if (assignment) text = operand_text(*assignment->value, *caller.source);
  if (link) text = operand_text(*link->operand, *caller.source);
  return text.empty() ? std::string(otherwise) : text;
}

bool bears(Sign sign, const std::vector<Value>& arguments, const Value& result, bool is_used) noexcept {
  switch (sign) {
    case Sign::used_value:
      return is_used;
    case Sign::real_argument:
      for (const Value& argument : arguments)
        if (argument.tag() == ValueTag::real) return true;
      return false;
    case Sign::three_arguments:
      return arguments.size() == 3;
    case Sign::cut_integers:
      return are_cut(arguments);
    case Sign::odd_powers:
      return are_odd_powers(arguments);
    case Sign::integer_array:
      return !arguments.empty() && is_integer_array(arguments[0]);
    case Sign::odd_extreme: {
      if (result.tag() != ValueTag::real) return result.tag() == ValueTag::integer64;
      return arrayfold::load<double>(result.record().payload) == std::numeric_limits<double>::min();
    }
    case Sign::odd_data:
      return arguments.size() > 1 && arguments[1].is_table() && are_odd(table_of(arguments[1].record()));
    case Sign::quoted_data:
      return arguments.size() > 1 && arguments[1].tag() == ValueTag::code;
    default:
      return true;
  }
}

const std::vector<WarningRow>& warning_table() {
  static const std::vector<WarningRow> rows = {
      {"number-on-the-left", "n - a computes a - n: with a number the array stands on the left; write a * -1 + n",
       "docs/functions/operator-subtract.md#result", OperationCondition{number_on_the_left}},
      {"fraction-of-a-number", "a * 0.5 computes a * 0 where a has integers; xminimum(a, a) makes doubles of them",
       "docs/functions/operator-multiply.md#result", OperationCondition{fraction_of_a_number}},
      {"remainder-of-doubles", "a % b of doubles gives nothing; as_int(a) of use \"arrays\" makes integers of them",
       "docs/functions/operator-remainder.md#result", OperationCondition{remainder_of_doubles}},
      {"bool-product", "m * 2 of a bool array gives nothing; as_int(m) of use \"arrays\" makes integers of it",
       "docs/functions/operator-multiply.md#result", OperationCondition{bool_product}},
      {"fraction-of-an-element", "a[i] = 2.5 stores 2 where a has integers; a = xminimum(a, a) makes doubles of them",
       "docs/functions/element-access.md#result", ElementCondition{fraction_of_an_element}},
      {"fewer-indices", "m[i] of a matrix is m[0, i]; row(m, i) of use \"arrays\" gives a row",
       "docs/functions/element-access.md#arguments", ElementCondition{fewer_indices}},
      {"value-of-reshape", "a.reshape(...) changes a itself and gives nothing; write it on a line of its own",
       "docs/functions/method-reshape.md#result", MethodCondition{value_of_reshape}},
      {"value-of-shuffle", "xshuffle(a) changes a itself and gives 0; write it on a line of its own",
       "docs/functions/xshuffle.md#result", CallCondition{Sign::used_value, {"xshuffle"}, value_of_shuffle}},
      {"integer-spacing", "xlinspace(0, 1, 5) gives integers, which lose their fractions; write xlinspace(0.0, 1, 5)",
       "docs/functions/xlinspace.md#result", CallCondition{Sign::cut_integers, {"xlinspace"}, integer_spacing}},
      {"integer-powers",
       "xlogspace(-2, 2, 5) gives integers, which do not hold the powers; write xlogspace(-2.0, 2, 5)",
       "docs/functions/xlogspace.md#result", CallCondition{Sign::odd_powers, {"xlogspace"}, integer_powers}},
      {"integer-range", "xarange(0, 1.5) counts in integers; for fractions write xlinspace(start, stop, count)",
       "docs/functions/xarange.md#arguments", CallCondition{Sign::real_argument, {"xarange"}, integer_range}},
      {"empty-range", "xarange(0, 2, 3) has no elements; give a step that is not beyond the range",
       "docs/functions/xarange.md#result", CallCondition{Sign::three_arguments, {"xarange"}, empty_range}},
      {"fraction-of-an-argument", "xzeros(2.5) reads 2; give an integer", arguments_section,
       CallCondition{Sign::real_argument,
                     {"xzeros", "xones", "xempty", "xrand", "xrandn", "xeye", "xhistogram", "xpartition"},
                     fraction_of_an_argument}},
      {"largest-of-doubles", "xamax(a) gives 2.2250738585072014e-308 without an element above it; write -xamin(-a)",
       "docs/functions/xamax.md#result", CallCondition{Sign::odd_extreme, {"xamax"}, largest_of_doubles}},
      {"largest-of-int64", "xamax(a) of int64 gives the smallest element; write -xamin(-a)",
       "docs/functions/xamax.md#result", CallCondition{Sign::odd_extreme, {"xamax"}, largest_of_int64}},
      {"kind-of-product", "xdot(i, d) of integers with doubles drops all fractions; write xdot(xminimum(i, i), d)",
       result_section, CallCondition{Sign::integer_array, {"xdot", "xvdot", "xouter", "xkron"}, kind_of_product}},
      {"column", "xsum(c) of a column counts the first element in place of the last ones; write c.reshape(n) first",
       result_section, CallCondition{Sign::column, functions_of(std::begin(on_columns), std::end(on_columns)), column}},
      {"computes-nothing", "xpow and others give nothing, whatever their arguments are; the page names what does",
       result_section,
       CallCondition{Sign::call, functions_of(std::begin(instead), std::end(instead)), nothing_computed}},
      {"values-for-positions", "xargpartition(a, k) gives values, not positions; write xargsort(a)",
       "docs/functions/xargpartition.md#result", CallCondition{Sign::call, {"xargpartition"}, values_for_positions}},
      {"unused-argument", "xsum(a, 0) does not look at 0: there is no axis; sum_rows(a) of use \"arrays\" sums rows",
       arguments_section, CallCondition{Sign::more_arguments, {}, unused_argument}},
      {"data-that-end-early",
       "xarray(@double, [1, \"x\"]) stops at what is no number; stack(rows) of use \"arrays\" "
       "joins arrays",
       "docs/functions/xarray.md#result", CallCondition{Sign::odd_data, {"xarray"}, data_that_ends_early}},
      {"ragged-rows", "xarray(@int, [[1, 2], [3]]) cuts elements off; make all rows of one length",
       "docs/functions/xarray.md#result", CallCondition{Sign::odd_data, {"xarray"}, ragged_rows}},
      {"named-entries",
       "xarray(@int, [\"a\": 1]) passes over entries under names, so that it is empty; give entries without names",
       "docs/functions/xarray.md#result", CallCondition{Sign::odd_data, {"xarray"}, named_entries}},
      {"dropped-element", "xarray(@double, @[1, 2.5]) drops the integer; write 1.0 or use a table",
       "docs/functions/xarray.md#result", CallCondition{Sign::quoted_data, {"xarray"}, dropped_element}},
      {"dtype-that-is-a-variable", "with a variable double, xarray(@double, t) gives nothing; rename the variable",
       "docs/functions/xarray.md#result", CallCondition{Sign::nothing, {"xarray"}, dtype_that_is_a_variable}},
      {"float-dtype", "xarray(@float, t) gives nothing; write @double", "docs/functions/xarray.md#result",
       CallCondition{Sign::nothing, {"xarray"}, float_dtype}},
      {"unknown-dtype", "xarray(@real, t) gives nothing; write @int, @int64, @double or @bool",
       "docs/functions/xarray.md#result", CallCondition{Sign::nothing, {"xarray"}, unknown_dtype}},
      {"data-that-are-no-table", "xarray(@double, a) of an array gives nothing; a + 0 copies it",
       "docs/functions/xarray.md#result", CallCondition{Sign::nothing, {"xarray"}, data_that_are_no_table}},
      {"bool-array", "xsum(a > 3) of a bool array gives nothing; count(a > 3) of use \"arrays\" counts", result_section,
       CallCondition{Sign::nothing, {}, bool_array}},
      {"two-kinds", "xmaximum(i, d) of two kinds gives nothing; xminimum(i, i) makes doubles of integers",
       result_section, CallCondition{Sign::nothing, {"xmaximum", "xminimum"}, two_kinds}},
      {"integers-without-result", "xsign(i) of integers gives nothing; write xsign(xminimum(i, i))", result_section,
       CallCondition{Sign::nothing, {"xsign", "xcond"}, integers_without_result}},
      {"no-diagonal", "xtrace(v) of fewer than two dimensions gives nothing; give a matrix",
       "docs/functions/xtrace.md#result", CallCondition{Sign::nothing, {"xtrace"}, no_diagonal}},
  };
  return rows;
}

}  // namespace hvm
