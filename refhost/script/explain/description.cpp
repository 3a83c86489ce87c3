// script/explain/description.cpp: reading a module's functions.json

#include "script/explain/description.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <utility>

#include "kernel/kernel.hpp"
#include "script/data/data_error.hpp"
#include "script/data/json_values.hpp"
#include "script/data/text_input.hpp"
#include "script/text/integer_value.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largest_file = std::size_t{16} << 20;
constexpr std::int64_t known_format = 1;
constexpr std::string_view limits_key = "most_arguments";

// ---- Parts of the file

/// A value of the file and the path to it, for messages.
class Part {
 public:
  Part(const HostValue& value, std::string path) : value_(value), path_(std::move(path)) {}

  /// The value of a key; no value when it is absent or null.
  std::optional<Part> find(std::string_view key) const {
    const HostHash* table = table_of(value_);
    if (!table) fail("is no object");
    const HostValue* found = hvm::find(table, key);
    if (!found || found->tag == ValueTag::nil) return std::nullopt;
    return Part(*found, path_.empty() ? std::string(key) : fmt::format("{}.{}", path_, key));
  }
  Part at(std::string_view key) const {
    auto found = find(key);
    if (!found) fail(fmt::format("has no '{}'", key));
    return *std::move(found);
  }

  std::string text() const {
    const Value value = Value::sharing(value_);
    if (!value.is_string()) fail("is no string");
    std::string text{text_of(value.record())};
    for (char& c : text)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    return text;
  }
  std::string text(std::string_view key) const { return at(key).text(); }
  std::string text_or_nothing(std::string_view key) const {
    const auto found = find(key);
    return found ? found->text() : std::string();
  }

  std::int64_t number() const {
    HostValue value = value_;
    if (!is_integer(Value::sharing(value))) fail("is no integer");
    return HVM_AsInt64(&value);
  }
  std::optional<std::int64_t> number_or_nothing(std::string_view key) const {
    const auto found = find(key);
    return found ? std::optional(found->number()) : std::nullopt;
  }
  bool is_true(std::string_view key) const { return number_or_nothing(key).value_or(0) != 0; }

  /// What `read` makes of each entry of a list.
  template <class Read>
  auto list(Read read) const {
    const HostHash* table = table_of(value_);
    if (!table) fail("is no list");
    std::vector<decltype(read(*this))> entries;
    for (std::int32_t i = 0; i < entry_count(table); ++i) {
      const HostValue* entry = hvm::find(table, i);
      if (!entry) fail("is no list");
      entries.push_back(read(Part(*entry, fmt::format("{}[{}]", path_, i))));
    }
    return entries;
  }
  std::vector<std::string> texts() const {
    return list([](const Part& part) { return part.text(); });
  }
  std::vector<std::string> texts_or_nothing(std::string_view key) const {
    const auto found = find(key);
    return found ? found->texts() : std::vector<std::string>();
  }

  /// Gives each key of an object and its value to `take`.
  template <class Take>
  void each(Take take) const {
    const HostHash* table = table_of(value_);
    if (!table) fail("is no object");
    TableWalk walk(table);
    while (const Entry entry = walk.next()) {
      const Value key = key_value(*entry.key);
      if (!key.is_string()) fail("is no object");
      const std::string name{text_of(key.record())};
      take(name, Part(*entry.value, fmt::format("{}.{}", path_, name)));
    }
  }

  bool is_nothing() const { return value_.tag == ValueTag::nil; }
  bool is_string() const { return Value::sharing(value_).is_string(); }
  [[noreturn]] void fail(std::string_view cause) const {
    throw DataError(fmt::format("{} {}", path_.empty() ? "it" : path_, cause));
  }

 private:
  const HostValue& value_;
  std::string path_;
};

// ---- From the parts to the structures

using Form = Condition::Form;

constexpr std::pair<std::string_view, Form> numbered_forms[] = {
    {"arguments_below", Form::arguments_below},
    {"arguments_above", Form::arguments_above},
    {"dimensions_below", Form::dimensions_below},
    {"dimensions_above", Form::dimensions_above},
    {"dimensions_not", Form::dimensions_not},
    {"below", Form::below},
    {"equals", Form::equals},
};
constexpr std::pair<std::string_view, Form> kind_forms[] = {
    {"kind_not_in", Form::kind_not_in},
    {"kind_in", Form::kind_in},
};
constexpr std::pair<std::string_view, Form> plain_forms[] = {
    {"not_square", Form::not_square},
    {"first_extents_differ", Form::first_extents_differ},
    {"kinds_differ", Form::kinds_differ},
    {"summed_extents_differ", Form::summed_extents_differ},
    {"no_broadcast", Form::no_broadcast},
    {"fewer_rows", Form::fewer_rows},
    {"shorter", Form::shorter},
    {"empty", Form::empty},
    {"empty_rows", Form::empty_rows},
    {"always", Form::always},
    {"beyond_32_bits", Form::beyond_32_bits},
    {"no_memory", Form::no_memory},
};

/// A condition without a known form is one that only what happened tells.
Condition condition_of(const Part& part) {
  Condition condition;
  if (const auto of = part.find("of")) {
    condition.is_of_any = of->is_string() && of->text() == "any";
    if (!condition.is_of_any) condition.of = of->texts();
  }
  for (const auto& [key, form] : numbered_forms)
    if (const auto number = part.number_or_nothing(key)) condition.form = form, condition.number = *number;
  for (const auto& [key, form] : kind_forms)
    if (const auto kinds = part.find(key)) condition.form = form, condition.kinds = kinds->texts();
  for (const auto& [key, form] : plain_forms)
    if (part.is_true(key)) condition.form = form;
  if (const auto parts = part.find("all")) condition.form = Form::all, condition.parts = parts->list(condition_of);
  return condition;
}

Outcome outcome_of(const Part& part) {
  constexpr std::pair<std::string_view, Outcome> outcomes[] = {
      {"fails", Outcome::fails},     {"nothing", Outcome::nothing}, {"throws", Outcome::throws},
      {"refused", Outcome::refused}, {"ends", Outcome::ends},
  };
  const std::string name = part.text();
  for (const auto& [known, outcome] : outcomes)
    if (name == known) return outcome;
  part.fail(fmt::format("is '{}', which is no outcome", name));
}

FailureRow failure_of(const Part& part) {
  return {part.text("when"), condition_of(part.at("condition")), outcome_of(part.at("outcome")),
          part.text_or_nothing("exception"), part.text_or_nothing("remedy")};
}

ArgumentEntry argument_of(const Part& part) {
  ArgumentEntry argument;
  argument.name = part.text("name");
  argument.accepts = part.text("accepts");
  argument.kinds = part.texts_or_nothing("kinds");
  argument.read_as = part.text_or_nothing("read_as");
  if (const auto dimensions = part.find("dimensions")) {
    argument.least_dimensions = dimensions->number_or_nothing("least");
    argument.most_dimensions = dimensions->number_or_nothing("most");
  }
  argument.least = part.number_or_nothing("least");
  argument.kind_of = part.text_or_nothing("kind_of");
  argument.is_square = part.is_true("square");
  argument.is_not_zero = part.is_true("not_zero");
  argument.repeats = part.is_true("repeats");
  if (const auto value = part.find("default")) argument.default_value = value->text();
  argument.meaning = part.text_or_nothing("meaning");
  return argument;
}

SurpriseEntry surprise_of(const Part& part) { return {part.text("title"), part.text("text")}; }

FunctionEntry function_of(const Part& part) {
  FunctionEntry function;
  function.name = part.text("name");
  function.family = part.text_or_nothing("family");
  function.status = part.text_or_nothing("status");
  function.summary = part.text_or_nothing("summary");
  function.synopsis = part.texts_or_nothing("synopsis");
  function.least_arguments = part.number_or_nothing("least_arguments").value_or(0);
  function.most_arguments = part.number_or_nothing("most_arguments");
  if (const auto receiver = part.find("receiver")) function.receiver = argument_of(*receiver);
  if (const auto arguments = part.find("arguments")) function.arguments = arguments->list(argument_of);
  function.result = part.text_or_nothing("result");
  if (const auto failures = part.find("failures")) function.failures = failures->list(failure_of);
  if (const auto surprises = part.find("surprises")) function.surprises = surprises->list(surprise_of);
  function.page = part.text_or_nothing("page");
  return function;
}

std::vector<FunctionEntry> entries_of(const Part& part, std::string_view key) {
  const auto entries = part.find(key);
  return entries ? entries->list(function_of) : std::vector<FunctionEntry>();
}

std::vector<KindEntry> kinds_of(const Part& part) {
  std::vector<KindEntry> kinds;
  const auto found = part.find("kinds");
  if (!found) return kinds;
  found->each([&](const std::string& name, const Part& kind) {
    const auto tag = kind.number_or_nothing("tag");
    kinds.push_back({name, tag ? std::optional(static_cast<int>(*tag)) : std::nullopt, kind.text_or_nothing("type")});
  });
  return kinds;
}

void require_known_format(const Part& part) {
  const std::int64_t format = part.at("format").number();
  if (format != known_format)
    throw DataError(fmt::format("its format is {}, and this hvm knows format {}", format, known_format));
}

Description description_of(const Part& part) {
  require_known_format(part);
  Description description;
  description.module = part.text("module");
  description.version = part.text_or_nothing("version");
  description.kinds = kinds_of(part);
  description.functions = part.at("functions").list(function_of);
  description.methods = entries_of(part, "methods");
  description.operators = entries_of(part, "operators");
  return description;
}

std::set<std::string_view> names_of(const Description& description) {
  std::set<std::string_view> names;
  for (const FunctionEntry& function : description.functions) names.insert(function.name);
  return names;
}

/// Requires that the described functions are those of the module, which has registered functions of these names.
void require_of_module(const std::set<std::string_view>& described, const std::vector<std::string>& registered) {
  const std::set<std::string_view> known(registered.begin(), registered.end());
  const auto fail = [](std::string_view name, const char* where) {
    throw DataError(fmt::format("it is of another module or version: {} is {}", name, where));
  };
  for (const std::string_view name : described)
    if (known.count(name) == 0) fail(name, "a function of the description alone");
  for (const std::string_view name : known)
    if (described.count(name) == 0) fail(name, "a function of the module alone");
}

// ---- The file

std::string text_of_file(const std::string& path) {
  TextInput input(path);
  std::string text;
  for (std::string_view part = input.next(); !part.empty(); part = input.next()) {
    if (text.size() + part.size() > largest_file)
      throw DataError(fmt::format("it has more than {} bytes", largest_file));
    text += part;
  }
  return text;
}

/// What is wrong with a file, without the path in front.
std::string without_path(std::string_view message, const std::string& path) {
  const std::string front = path + ": ";
  if (message.substr(0, front.size()) == front) message.remove_prefix(front.size());
  return std::string(message);
}

/// Whether there is something at `path`. Throws when it is no file.
bool exists(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) return false;
  if (error) throw DataError(error.message());
  if (!fs::is_regular_file(status)) throw DataError("it is not a regular file");
  return true;
}

std::vector<std::string> places_of(const std::string& module_path) {
  const fs::path module(module_path);
  const std::string name = module.stem().string();
  const fs::path folder = module.parent_path();
  return {(folder / (name + ".json")).string(),
          (folder / ".." / "share" / name / "functions.json").lexically_normal().string()};
}

/// Lets `read` read the first file that there is. Returns what is wrong with it, in a sentence; empty when nothing is.
template <class Read>
std::string with_file(const std::vector<std::string>& places, Read read) {
  for (const std::string& path : places) {
    try {
      if (!exists(path)) continue;
      read(path);
      return {};
    } catch (const DataError& error) {
      return fmt::format("the description {} is not used: {}", path, without_path(error.what(), path));
    }
  }
  return {};
}

/// The head of a text as a value: an object that ends with the first value in braces. No value where there is none.
std::optional<Value> head_in(std::string_view text) {
  const std::size_t end = text.find('}');
  if (end == std::string_view::npos) return {};
  try {
    return json_value(std::string(text.substr(0, end + 1)) + '}');
  } catch (const DataError&) {
    return {};
  }
}

const FunctionEntry* found(const std::vector<FunctionEntry>& entries, std::string_view name) {
  const auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto& x) { return x.name == name; });
  return entry == entries.end() ? nullptr : &*entry;
}

}  // namespace

const FunctionEntry* Description::find(std::string_view function) const { return found(functions, function); }
const FunctionEntry* Description::find_method(std::string_view method) const { return found(methods, method); }
const FunctionEntry* Description::find_operator(std::string_view name) const { return found(operators, name); }

DescriptionReading read_description(const std::string& module_path, const std::vector<std::string>& registered) {
  DescriptionReading reading;
  reading.places = places_of(module_path);
  reading.problem = with_file(reading.places, [&](const std::string& path) {
    const Value content = json_value(text_of_file(path));
    Description description = description_of(Part(content.record(), ""));
    require_of_module(names_of(description), registered);
    reading.description = std::move(description);
  });
  return reading;
}

HeadReading read_description_head(const std::string& module_path, const std::vector<std::string>& registered) {
  HeadReading reading;
  reading.problem = with_file(places_of(module_path), [&](const std::string& path) {
    TextInput input(path);
    const auto content = head_in(input.next());
    if (!content) return;
    const Part head(content->record(), "");
    const auto counts = head.find(limits_key);
    if (!counts) return;
    require_known_format(head);
    std::set<std::string> names;
    ArgumentLimits limits;
    counts->each([&](const std::string& name, const Part& count) {
      names.insert(name);
      if (!count.is_nothing()) limits.emplace(name, count.number());
    });
    require_of_module({names.begin(), names.end()}, registered);
    reading.limits = std::move(limits);
  });
  return reading;
}

}  // namespace hvm
