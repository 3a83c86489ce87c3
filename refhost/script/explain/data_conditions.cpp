// script/explain/data_conditions.cpp: what xarray reads in another way than it is written

#include "script/explain/data_conditions.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "script/explain/condition_words.hpp"
#include "script/explain/script_words.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

/// What is odd in the table of data of an array; of form `none` where there is no array.
DataFault data_fault(const AnsweredCall& call) { return call.result.is_object() ? call.data().fault : DataFault{}; }

/// What rows differ in; empty for a fault that is not of rows.
std::string difference(const DataFault& fault) {
  switch (fault.form) {
    case DataFault::Form::row_and_number:
      return "a row and a number";
    case DataFault::Form::row_lengths:
      return fmt::format("rows of {} and {}", fault.count, fault.other_count);
    case DataFault::Form::row_contents:
      return "rows of numbers and of rows";
    default:
      return {};
  }
}

}  // namespace

Found data_that_ends_early(const AnsweredCall& call) {
  const DataFault fault = data_fault(call);
  if (fault.form != DataFault::Form::no_number) return {};
  const bool is_array = kind_of_array(Value::sharing(*fault.culprit)).has_value();
  const std::string remedy = is_array ? fmt::format("stack(rows) {} makes a matrix of arrays", library)
                                      : std::string("make numbers of all entries first");
  return Finding{fmt::format("xarray stops reading its data at {}; {}", in_words(*fault.culprit), remedy)};
}

Found ragged_rows(const AnsweredCall& call) {
  const std::string different = difference(data_fault(call));
  if (different.empty()) return {};
  return Finding{
      fmt::format("the data have {}: xarray takes the shape of the last ones, cuts elements off or adds "
                  "zeros; make all rows of one length",
                  different)};
}

namespace {

Finding misread_entry(const AnsweredCall& call, const Value& number, Kept kept) {
  const bool is_narrow = call.elements == DataElements::narrow_integers;
  return {fmt::format("{} array stores {} as {}{}; write {}", with_article(*kind_of_array(call.result)),
                      number_text(number), is_narrow ? as_int(number) : as_int64(number), stored(kept, is_narrow),
                      number.tag() == ValueTag::integer64 ? "@int64" : "@double")};
}

/// The first fraction that is written in the brackets of a table.
std::optional<double> written_fraction(const Expression& data) {
  if (const auto* literal = std::get_if<RealLiteral>(&data.form))
    return has_fraction(Value(literal->value)) ? std::optional(literal->value) : std::nullopt;
  const auto* table = std::get_if<TableLiteral>(&data.form);
  if (!table) return {};
  for (const TableEntry& entry : table->entries) {
    const bool has_name = entry.key && std::holds_alternative<StringLiteral>(entry.key->form);
    if (const auto found = has_name ? std::nullopt : written_fraction(*entry.value)) return found;
  }
  return {};
}

}  // namespace

Found fraction_of_an_entry(const AnsweredCall& call) {
  // A fraction that is computed may be cut on purpose: xarray(@int, [x + 0.5]) rounds.
  if (data_fault(call).form != DataFault::Form::fraction || !call.written || call.written->size() < 2) return {};
  const auto fraction = written_fraction(*(*call.written)[1]);
  return fraction ? Found(misread_entry(call, Value(*fraction), Kept::whole_part)) : Found();
}

Found range_of_an_entry(const AnsweredCall& call) {
  const DataFault fault = data_fault(call);
  if (fault.form != DataFault::Form::another_number) return {};
  return misread_entry(call, Value::sharing(*fault.culprit), Kept::another);
}

Found named_entries(const AnsweredCall& call) {
  const DataFault fault = data_fault(call);
  if (fault.form != DataFault::Form::named) return {};
  return Finding{
      fmt::format("xarray skips entries under names, and there are no others: the first is under {:?}; "
                  "give entries without names",
                  short_text(text_of(*fault.culprit), "..."))};
}

namespace {

std::string dtype_name(const AnsweredCall& call) {
  const Quotation* dtype = call.quoted.dtype;
  if (!dtype || dtype->form == Quotation::Form::data) return {};
  const auto* name = std::get_if<Variable>(&dtype->subject->form);
  return name ? name->name : std::string();
}

bool gave_no_array(const AnsweredCall& call) { return call.result.is_nil() && !dtype_name(call).empty(); }

}  // namespace

Found dtype_that_is_a_variable(const AnsweredCall& call) {
  const std::string name = dtype_name(call);
  if (!gave_no_array(call) || !call.quoted.is_dtype_variable || !names_kind(name)) return {};
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
  if (!gave_no_array(call) || names_kind(name)) return {};
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

namespace {

/// Whether a data literal of the dtype takes what it holds, which is a literal or a variable, with its value.
bool is_taken(const Expression& element, const std::string& dtype, const ReadVariable& read) {
  const auto* variable = std::get_if<Variable>(&element.form);
  const auto is_of = [&](ValueTag tag, bool is_such_literal) {
    return variable ? read(*variable).tag() == tag : is_such_literal;
  };
  if (dtype == "int") return is_of(ValueTag::integer, std::holds_alternative<IntegerLiteral>(element.form));
  if (dtype == "int64") return is_of(ValueTag::integer64, false);
  if (dtype == "bool") return false;
  return is_of(ValueTag::real, std::holds_alternative<RealLiteral>(element.form));
}

const Expression* first_dropped(const Expression& data, const std::string& dtype, const ReadVariable& read) {
  const auto* row = std::get_if<TableLiteral>(&data.form);
  if (!row) return is_taken(data, dtype, read) ? nullptr : &data;
  for (const TableEntry& entry : row->entries)
    if (const Expression* found = first_dropped(*entry.value, dtype, read)) return found;
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

}  // namespace

Found dropped_element(const AnsweredCall& call) {
  const std::string dtype = dtype_name(call);
  const Quotation* data = call.quoted.data;
  if (!data || data->form != Quotation::Form::data || !names_kind(dtype)) return {};
  const Expression* dropped = first_dropped(*data->subject, dtype, call.quoted.read_in_data);
  if (!dropped) return ragged_literal(*data->subject);
  Finding finding;
  finding.span = dropped->span;
  finding.source = call.quoted.data_source;
  const auto* narrow = std::get_if<IntegerLiteral>(&dropped->form);
  const auto* wide = std::get_if<Integer64Literal>(&dropped->form);
  if ((narrow || wide) && (dtype == "double" || dtype == "float"))
    finding.message = fmt::format("a data literal of reals drops the integer {0}; write {0}.0 or use a table",
                                  narrow ? narrow->value : wide->value);
  else if (const auto* variable = std::get_if<Variable>(&dropped->form))
    finding.message =
        fmt::format("a data literal of the kind {} drops {}, which holds {}; use a table", dtype,
                    short_text(variable->name, "a variable"), in_words(call.quoted.read_in_data(*variable).record()));
  else
    finding.message = fmt::format("a data literal of the kind {} drops {}; use a table", dtype,
                                  short_text(finding.source->text(dropped->span), "an element"));
  return finding;
}

namespace {

/// The extent that an expression is, where it is known without computing it.
std::optional<std::int64_t> known_extent(const Expression& extent, const ReadVariable& read) {
  if (const auto* literal = std::get_if<IntegerLiteral>(&extent.form)) return literal->value;
  const auto* variable = std::get_if<Variable>(&extent.form);
  const Value value = variable ? read(*variable) : Value();
  return value.tag() == ValueTag::integer ? std::optional<std::int64_t>(as_int(value)) : std::nullopt;
}

struct ExtentsLook {
  bool differ = false;     // from the shape, as far as they are known
  std::int64_t count = 1;  // of the elements; -1 where an extent is not known
};

ExtentsLook look_at_extents(const Quotation& dtype, const ReadVariable& read, const Extents& shape) {
  ExtentsLook look;
  look.differ = shape.size() != dtype.arguments.size();
  for (std::size_t axis = 0; axis < dtype.arguments.size(); ++axis) {
    const auto extent = known_extent(*dtype.arguments[axis], read);
    if (extent && axis < shape.size() && *extent != shape[axis]) look.differ = true;
    const bool is_count_known = extent && look.count >= 0 && !__builtin_mul_overflow(look.count, *extent, &look.count);
    if (!is_count_known) look.count = -1;
  }
  return look;
}

/// The method that gives an array the quoted extents.
std::string reshape_to(const AnsweredCall& call) {
  std::string_view dtype = argument_texts(call.text()).front();
  dtype.remove_prefix(std::min(dtype.find('('), dtype.size()));
  return "a.reshape" + short_text(dtype, "(...)");
}

}  // namespace

Found extents_beside_data(const AnsweredCall& call) {
  const Quotation* dtype = call.quoted.dtype;
  if (!dtype || dtype->arguments.empty()) return {};
  const auto shape = call.result.is_object() ? shape_of(call.caller, call.result) : std::nullopt;
  if (!shape) return {};
  const ExtentsLook look = look_at_extents(*dtype, call.quoted.read_in_dtype, *shape);
  if (!look.differ) return {};
  const bool is_reshaped = look.count == element_count(*shape) && !argument_texts(call.text()).empty();
  return Finding{fmt::format(
      "xarray ignores the extents of {} beside data, which make the shape {}; {}", argument_text(call, 0, "the kind"),
      in_parentheses(*shape),
      is_reshaped ? fmt::format("write {} on the next line", reshape_to(call)) : std::string("leave them out"))};
}

}  // namespace hvm
