// script/explain/description.hpp: what a module's pages say of its functions, read from its functions.json
//
// A module may bring a description of its functions: beside DIR/NAME.so it is DIR/NAME.json, otherwise
// DIR/../share/NAME/functions.json. The structures here mirror that file; docs/description.md describes it. hvm
// works without a description.

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hvm {

/// When a row of a table of failures applies.
struct Condition {
  enum class Form {
    told,    // no condition: only what happened tells
    always,  // every call
    all,     // all of `parts`
    arguments_below,
    arguments_above,
    kind_not_in,
    kind_in,
    dimensions_below,
    dimensions_above,
    dimensions_not,
    not_square,
    first_extents_differ,
    summed_extents_differ,
    kinds_differ,
    no_broadcast,
    fewer_rows,  // the first of two arguments has a smaller first extent than the second
    shorter,     // the first of two arguments has fewer elements along its first dimension
    empty,
    empty_rows,  // without elements, and with a first extent that is not 0
    below,
    equals,
    beyond_32_bits,
    no_memory,
  };
  Form form = Form::told;
  std::vector<std::string> of;  // names of arguments: one of them, or both where the form compares two
  bool is_of_any = false;       // of any argument
  std::vector<std::string> kinds;
  std::int64_t number = 0;       // the count, the number of dimensions, or the bound
  std::vector<Condition> parts;  // of `all`
};

/// What a call does under a condition.
enum class Outcome { fails, nothing, throws, refused, ends };

struct FailureRow {
  std::string when;  // in the words of the page, as Markdown
  Condition condition;
  Outcome outcome = Outcome::fails;
  std::string exception;  // `std::runtime_error: words`; empty unless the call throws
  std::string remedy;     // empty where there is none
};

struct ArgumentEntry {
  std::string name;
  std::string accepts;             // in the words of the page
  std::vector<std::string> kinds;  // such as `int`, `double array`, `array`, `any`
  std::string read_as;             // `int`, `int64`, `double`; empty: as it is
  std::optional<std::int64_t> least_dimensions;
  std::optional<std::int64_t> most_dimensions;
  std::optional<std::int64_t> least;  // of the number that is read
  std::string kind_of;                // the argument whose kind it shares; empty for none
  bool is_square = false;
  bool is_not_zero = false;
  bool repeats = false;
  std::optional<std::string> default_value;  // absent: it must be given
  std::string meaning;
};

struct SurpriseEntry {
  std::string title;
  std::string text;
};

/// A function, a method or an operator.
struct FunctionEntry {
  std::string name;
  std::string family;
  std::string status;
  std::string summary;
  std::vector<std::string> synopsis;
  std::int64_t least_arguments = 0;
  std::optional<std::int64_t> most_arguments;  // absent: arguments repeat without end
  std::optional<ArgumentEntry> receiver;       // of a method: the object that it is called on
  std::vector<ArgumentEntry> arguments;
  std::string result;
  std::vector<FailureRow> failures;
  std::vector<SurpriseEntry> surprises;
  std::string page;
};

/// A kind of value as the description names it: its tag in a record and, of an object, the name of its type.
struct KindEntry {
  std::string name;
  std::optional<int> tag;
  std::string type;  // empty for a kind that is no object
};

struct Description {
  std::string module;
  std::string version;
  std::vector<KindEntry> kinds;
  std::vector<FunctionEntry> functions;
  std::vector<FunctionEntry> methods;
  std::vector<FunctionEntry> operators;

  /// The entry of a name, null when there is none.
  const FunctionEntry* find(std::string_view function) const;
  const FunctionEntry* find_method(std::string_view method) const;
  const FunctionEntry* find_operator(std::string_view name) const;
};

/// With how many arguments functions are looked at, by their names. A function that is missing looks at all.
using ArgumentLimits = std::map<std::string, std::int64_t, std::less<>>;

/// What the head of a description gave: one of two things, or nothing when there is no file, or one without a head.
struct HeadReading {
  std::optional<ArgumentLimits> limits;
  std::string problem;  // as of the whole description
};

/// Reads the head of the description of a module: what stands before the first `}`, where that holds the numbers of
/// arguments. Throws nothing but `std::bad_alloc`.
HeadReading read_description_head(const std::string& module_path, const std::vector<std::string>& registered);

/// What the search for a description gave: one of three things, or nothing when there is no file.
struct DescriptionReading {
  std::optional<Description> description;
  std::string problem;              // one sentence; empty unless there is a file that is of no use
  std::vector<std::string> places;  // the paths at which one may lie, in the order of the search
};

/// Reads the description of the module that was loaded from `module_path` and registered functions of these names. It
/// belongs to the module when it is of format 1 and its functions have just these names. Throws nothing but
/// `std::bad_alloc`.
DescriptionReading read_description(const std::string& module_path, const std::vector<std::string>& registered);

}  // namespace hvm
