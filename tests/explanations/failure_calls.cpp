// explanations/failure_calls.cpp: for each row of a table of failures, scripts that make it happen

#include "failure_calls.hpp"

#include <algorithm>
#include <map>

namespace hvm::testing {
namespace {

using Form = Condition::Form;

/// The expressions of the arguments of a call, and of the object whose method is called.
using Values = std::vector<std::string>;

const char* const double_matrix = "xarray(@double, [[4.0, 2.0], [2.0, 3.0]])";

bool has(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// ---- Values

std::string value_of_kind(const std::string& kind) {
  static const std::map<std::string, std::string> values = {
      {"int", "3"},
      {"int64", "3L"},
      {"real", "2.5"},
      {"string", "\"text\""},
      {"table", "[1, 2]"},
      {"nil", "nil"},
      {"quotation", "@double"},
      {"quoted call", "@double(2, 3)"},
      {"data literal", "@[1.0, 2.0]"},
      {"int array", "xarray(@int, [[4, 2], [2, 3]])"},
      {"int64 array", "xarray(@int64, [[4, 2], [2, 3]])"},
      {"double array", double_matrix},
      {"bool array", "xarray(@bool, [[1, 0], [0, 1]])"},
  };
  const auto value = values.find(kind);
  return value == values.end() ? std::string() : value->second;
}

const std::vector<std::string> every_kind = {"string",      "table",        "nil",         "int",
                                             "int64",       "real",         "quoted call", "int array",
                                             "int64 array", "double array", "bool array"};

/// Whether `kind` is one of `kinds`, which may name groups.
bool is_among(const std::string& kind, const std::vector<std::string>& kinds) {
  const bool is_array = kind.size() > 6 && kind.substr(kind.size() - 6) == " array";
  const bool is_quotation = kind == "quoted call" || kind == "data literal" || kind == "quotation";
  return has(kinds, kind) || has(kinds, "any") || (is_array && has(kinds, "object")) ||
         (is_quotation && has(kinds, "quotation"));
}

std::string accepted_value(const ArgumentEntry& argument) {
  if (has(argument.kinds, "quotation") || has(argument.kinds, "quoted call")) return value_of_kind("quoted call");
  const bool is_vector = argument.most_dimensions && *argument.most_dimensions < 2;
  for (const char* kind : {"double array", "int array", "int64 array", "bool array", "int", "int64", "real", "table"})
    if (has(argument.kinds, kind)) return is_vector ? "xarray(@double, [1.0, 2.0, 3.0])" : value_of_kind(kind);
  return has(argument.kinds, "any") || has(argument.kinds, "object") ? double_matrix : "3";
}

/// An array of doubles with this many dimensions.
std::string array_of_dimensions(std::int64_t dimensions) {
  if (dimensions == 0) return "xtrace(xeye(2))";
  std::string extents = "2";
  for (std::int64_t i = 1; i < dimensions; ++i) extents += ", 2";
  return "xones(" + extents + ")";
}

// ---- Calls

std::string name_of(const FunctionEntry& entry, std::size_t i) {
  if (i < entry.arguments.size()) return entry.arguments[i].name;
  return entry.arguments.empty() ? "extra" : entry.arguments.back().name + "_" + std::to_string(i);
}

FailureCall call_of(const FunctionEntry& entry, const Values& values, const std::string& receiver = double_matrix) {
  FailureCall made;
  std::string arguments;
  for (std::size_t i = 0; i < values.size(); ++i) {
    made.preparation += name_of(entry, i) + " = " + values[i] + "\n";
    arguments += (i > 0 ? ", " : "") + name_of(entry, i);
  }
  if (entry.receiver) made.preparation += entry.receiver->name + " = " + receiver + "\n";
  made.call = (entry.receiver ? entry.receiver->name + "." : "") + entry.name + "(" + arguments + ")";
  return made;
}

/// As many arguments as the page has, or as must be given, all of them accepted.
Values accepted_values(const FunctionEntry& entry) {
  Values values;
  for (const ArgumentEntry& argument : entry.arguments) values.push_back(accepted_value(argument));
  return values;
}

std::vector<std::size_t> places_of(const FunctionEntry& entry, const Condition& condition) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < entry.arguments.size(); ++i)
    if (condition.is_of_any || has(condition.of, entry.arguments[i].name)) places.push_back(i);
  return places;
}

/// Other values for one argument so that the condition holds.
std::vector<std::string> values_for(const Condition& condition) {
  std::vector<std::string> values;
  const std::int64_t n = condition.number;
  switch (condition.form) {
    case Form::kind_in:
      for (const std::string& kind : condition.kinds) values.push_back(value_of_kind(kind));
      if (has(condition.kinds, "object")) values.emplace_back(double_matrix);
      return values;
    case Form::kind_not_in:
      for (const std::string& kind : every_kind)
        if (!is_among(kind, condition.kinds)) values.push_back(value_of_kind(kind));
      return values;
    case Form::dimensions_below:
      for (std::int64_t i = n - 1; i >= 0; --i) values.push_back(array_of_dimensions(i));
      return values;
    case Form::dimensions_above:
      return {array_of_dimensions(n + 1)};
    case Form::dimensions_not:
      return {array_of_dimensions(n + 1), array_of_dimensions(std::max<std::int64_t>(n - 1, 0))};
    case Form::not_square:
      return {"xones(2, 3)"};
    case Form::empty:
      return {"xzeros(0)", "xarray(@int, [])"};
    case Form::empty_rows:
      return {"xzeros(2, 0)", "xzeros(1, 3, 0)"};
    case Form::below:
      return {std::to_string(n - 1)};
    case Form::equals:
      return {std::to_string(n)};
    case Form::beyond_32_bits:
      return {"4294967298L", "1e10", "-4294967298L"};
    default:
      return values;
  }
}

/// Values of two arguments so that the condition holds for both together.
std::vector<Values> pairs_for(const Condition& condition) {
  switch (condition.form) {
    case Form::kinds_differ:
      return {{value_of_kind("double array"), value_of_kind("int array")},
              {value_of_kind("int array"), value_of_kind("int64 array")}};
    case Form::no_broadcast:
      return {{"xones(2, 3)", "xones(2)"}};
    case Form::first_extents_differ:
      return {{"xones(2, 2)", "xones(3)"}, {"xones(2, 2)", "xones(3, 2)"}};
    case Form::summed_extents_differ:
      return {{"xones(2, 3)", "xones(2, 3)"}};
    case Form::fewer_rows:
      return {{"xones(1)", double_matrix}};
    case Form::shorter:
      return {{"xones(2)", "xones(3)"}, {"xones(1, 3)", "xones(4)"}, {"xnorm(xones(2))", "xones(2)"}};
    default:
      return {};
  }
}

/// The argument lists into which a condition turns `values`.
std::vector<Values> changed(const FunctionEntry& entry, const Condition& condition, const Values& values) {
  std::vector<Values> lists;
  const auto number = static_cast<std::size_t>(std::max<std::int64_t>(condition.number, 0));
  if (condition.form == Form::arguments_below && number > 0) {
    for (std::size_t count = number; count-- > 0;)
      lists.emplace_back(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(std::min(count, values.size())));
    return lists;
  }
  if (condition.form == Form::arguments_above) {
    lists.push_back(values);
    lists.back().resize(number + 1, "3");
    return lists;
  }
  if (condition.form == Form::always) return {values};
  if (condition.form == Form::all) {
    lists = {values};
    for (const Condition& part : condition.parts) {
      std::vector<Values> next;
      for (const Values& list : lists)
        for (Values& more : changed(entry, part, list)) next.push_back(std::move(more));
      lists = std::move(next);
    }
    return lists;
  }
  const std::vector<std::size_t> places = places_of(entry, condition);
  for (const std::size_t place : places)
    for (const std::string& value : values_for(condition)) {
      if (value.empty()) continue;
      lists.push_back(values);
      if (place >= lists.back().size()) lists.back().resize(place + 1, "3");
      lists.back()[place] = value;
    }
  for (const Values& pair : pairs_for(condition)) {
    if (condition.of.size() != 2) continue;
    lists.push_back(values);
    for (std::size_t i = 0; i < entry.arguments.size() && i < values.size(); ++i)
      for (std::size_t j = 0; j < 2; ++j)
        if (entry.arguments[i].name == condition.of[j]) lists.back()[i] = pair[j];
  }
  return lists;
}

// ---- Rows that no condition describes

struct HandMade {
  const char* function;
  const char* when;
  const char* preparation;
  const char* call;
};

const HandMade hand_made[] = {
    {"xarray", "`dtype` is `@$name`", "name = \"double\"", "xarray(@$name)"},
    {"xarray", "an extent selects an entry of a value that is no table", "t = [1, 2]", "xarray(@int(t[0, 1]))"},
    {"xarray", "`dtype` stands alone and has no extents", "", "xarray(@double)"},
    {"xarray", "an extent in `dtype` is no int", "n = xarange(3).shape()[0]", "xarray(@double(n))"},
    {"xarray", "`dtype` stands alone and names no kind", "", "xarray(@complex(2))"},
    {"xarray", "an extent in `dtype` is negative", "", "xarray(@double(-1))"},
    {"xarray", "`dtype` names no kind, and there is data", "", "xarray(@complex, [1, 2])"},
    {"xarray", "`data` quotes something else than a data literal", "", "xarray(@double, @double(2))"},
    {"xarray", "`dtype` names float", "", "xarray(@float, [1, 2])"},
    {"xarange", "the count wraps below zero, as of `xarange(0, 2147483647, 2)`", "", "xarange(0, 2147483647, 2)"},
    {"xarange", "the count divides -2147483648 by -1 in 32 bits, as of `xarange(0, -2147483648, -1)`", "",
     "xarange(0, -2147483648, -1)"},
    {"xbincount", "an element of `a` is negative", "a = xarray(@int, [1, -1])", "xbincount(a)"},
    {"xbincount", "the largest element of `a` is the largest of its kind", "a = xarray(@int, [2147483647])",
     "xbincount(a)"},
    {"xcholesky", "`a` is not positive definite", "a = xeye(2) * -1", "xcholesky(a)"},
    {"xeig", "`a` holds NaN or an infinity", "a = xones(2, 2); a[0, 0] = 0.0 / 0", "xeig(a)"},
    {"xeigvals", "`a` holds NaN or an infinity", "a = xones(2, 2); a[0, 0] = 0.0 / 0", "xeigvals(a)"},
    {"xeigh", "the computation does not converge", "a = xones(3, 3) * (0.0 / 0)", "xeigh(a)"},
    {"xeigvalsh", "the computation does not converge", "a = xones(3, 3) * (0.0 / 0)", "xeigvalsh(a)"},
    {"xcond", "`a` is singular", "a = xones(2, 2)", "xcond(a)"},
    {"xinv", "`a` is singular", "a = xones(2, 2)", "xinv(a)"},
    {"xsolve", "`a` is singular", "a = xones(2, 2); b = xones(2)", "xsolve(a, b)"},
    {"reshape", "the extents need more elements than the array has", "a = xones(6)", "a.reshape(4, 2)"},
    {"reshape", "the product of the extents is another number than that of the elements", "a = xones(6)",
     "a.reshape(2, 2)"},
};

}  // namespace

std::vector<FailureCall> valid_calls(const FunctionEntry& entry) {
  if (entry.name == "reshape") return {{"a = xones(8)\n", "a.reshape(2, 1, 1, 2, 1, 2)"}};
  std::vector<FailureCall> calls{call_of(entry, accepted_values(entry), "xones(1, 1, 1, 1, 1, 2)")};
  Values values = accepted_values(entry);
  if (values.size() == 1) calls.push_back(call_of(entry, {"xones(1, 2, 1, 2, 1, 2)"}));
  return calls;
}

std::vector<FailureCall> failure_calls(const FunctionEntry& entry, const FailureRow& row) {
  std::vector<FailureCall> calls;
  for (const HandMade& made : hand_made)
    if (entry.name == made.function && row.when == made.when)
      calls.push_back({std::string(made.preparation) + "\n", made.call});
  for (const Values& values : changed(entry, row.condition, accepted_values(entry)))
    calls.push_back(call_of(entry, values));
  return calls;
}

}  // namespace hvm::testing
