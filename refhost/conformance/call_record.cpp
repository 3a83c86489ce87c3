// conformance/call_record.cpp: what a call does, as JSON without addresses

#include "conformance/call_record.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "script/module/array_module.hpp"
#include "script/module/trace.hpp"
#include "script/run/interpreter.hpp"

namespace hvm::conformance {
namespace {

constexpr std::int64_t most_elements = 4096;
constexpr const char* result_name = "conformance_result";
constexpr const char* looked_at = "conformance_object";
constexpr const char* seen = "conformance_seen";

/// Operations with which a module holds memory for its own use, or asks for what is always the same.
const std::set<std::string> free_operations = {"HVM_Malloc",        "HVM_Free",      "HVM_Realloc2",
                                               "HVM_ReallocNoLeak", "HVM_NewObject", "HVM_NewObjects",
                                               "HVM_FreeObj",       "HVM_FreeObjs",  "HVM_GetGlobalNilObj"};

// ---- Operations

/// Numbers things by their first appearance.
class Renumbering {
 public:
  /// Returns `record 1` for the first record, whatever its number, and so on. Other texts are returned unchanged.
  std::string of(const std::string& name) {
    const std::size_t blank = name.find(' ');
    const std::string word = name.substr(0, blank);
    const bool is_numbered = word == "record" || word == "table" || word == "block" || word == "object";
    if (!is_numbered || blank == std::string::npos) return name;
    auto& numbers = numbers_[word];
    return fmt::format("{} {}", word, numbers.try_emplace(name, numbers.size() + 1).first->second);
  }

 private:
  std::map<std::string, std::map<std::string, std::size_t>> numbers_;
};

/// A member of a traced operation: a name, a number, a truth value, null, or an object for a text or a value.
std::string operand_text(const Json& operand, Renumbering& numbers) {
  if (operand.is_string()) return numbers.of(operand.get<std::string>());
  if (operand.is_object() && operand.size() == 1 && operand.contains("text")) return operand["text"].dump();
  if (operand.is_object() && operand.contains("object") && operand["object"].is_number())
    return fmt::format("{} {}", operand.value("kind", ""),
                       numbers.of("object " + std::to_string(operand["object"].get<std::uint64_t>())));
  if (operand.is_object() && operand.contains("kind") && operand.contains("value"))
    return fmt::format("{} {}", operand.value("kind", ""), operand["value"].dump());
  return operand.dump();
}

/// Without the capacity of a table, which is a hint.
std::size_t compared_operands(const std::string& name, std::size_t count) {
  const std::size_t hints = name == "HVM_ForceTable" || name == "HVM_NewHash" ? 1 : 0;
  return count - std::min(hints, count);
}

std::string operation_text(const Json& operation, Renumbering& numbers) {
  const std::string name = operation.at("name");
  const Json& operands = operation.at("operands");
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < compared_operands(name, operands.size()); ++i)
    texts.push_back(operand_text(operands[i], numbers));
  std::string text = fmt::format("{}({})", name, fmt::join(texts, ", "));
  if (operation.contains("result")) text += " = " + operand_text(operation["result"], numbers);
  if (operation.contains("value")) text += ", " + operand_text(operation["value"], numbers);
  return text;
}

Json operations_of(const Json& line) {
  Json operations = Json::array();
  Renumbering numbers;
  for (const Json& operation : line.value("operations", Json::array()))
    if (free_operations.count(operation.at("name")) == 0) operations.push_back(operation_text(operation, numbers));
  if (line.contains("omitted")) operations.push_back(fmt::format("and {} more", line["omitted"].dump()));
  return operations;
}

/// The calls of traced lines, except those made within others.
Json calls_of(const std::vector<std::string>& lines, bool with_shape) {
  Json calls = Json::array();
  for (const std::string& text : lines) {
    const Json line = Json::parse(text);
    if (line.at("depth") != 0) continue;
    if (!with_shape && line.value("method", "") == "shape") continue;
    Json call;
    for (const char* form : {"function", "method", "operator"})
      if (line.contains(form)) call[form] = line[form];
    call["operations"] = operations_of(line);
    if (line.contains("returned")) call["returned"] = line["returned"];
    // A call that fails leaves its result record untouched.
    const bool is_untouched = !line.contains("result") || line["result"].value("kind", "") == "nil";
    const bool fails = line.contains("returned") && line["returned"] == 0;
    if (fails && !is_untouched && !line.contains("in_place")) call["result"] = line["result"].value("kind", "");
    if (line.contains("exception"))
      call["throws"] = fmt::format("{}: {}", line["exception"].value("type", ""), line["exception"].value("words", ""));
    calls.push_back(std::move(call));
  }
  return calls;
}

// ---- Values

Json real_json(double x) {
  if (std::isfinite(x)) return x;
  return std::isnan(x) ? "nan" : x > 0 ? "inf" : "-inf";
}

/// The bytes of a text as one number, by the formula FNV-1a.
std::uint64_t digest_of(const std::string& text) {
  std::uint64_t digest = 14695981039346656037U;
  for (const char c : text) digest = (digest ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return digest;
}

}  // namespace

/// The interpreter of the call, and what it has seen.
class CallRecording::Parts {
 public:
  Parts(const ModuleFunctions& functions, PreparedCall made, bool has_contents)
      : made_(std::move(made)),
        has_contents_(has_contents),
        trace_([this](std::string_view line) { lines_.emplace_back(line); }, Trace::most_operations_by_default),
        interpreter_(functions, options()) {}

  std::string prepare(const std::function<void(const std::string&)>& before) {
    std::istringstream lines(made_.preparation);
    for (std::string line; std::getline(lines, line);) {
      before(line);
      run(line);
    }
    before_ = variables();
    if (made_.preparation.empty()) return {};
    return fmt::format("{:016x}", digest_of(Json(before_).dump(-1, ' ', false, Json::error_handler_t::replace)));
  }

  Json perform() {
    lines_.clear();
    Json record;
    record["outcome"] = outcome(made_.call);
    for (const auto& [name, value] : variables()) {
      const auto old = before_.find(name);
      if (old == before_.end() || old->second != value) record["changes"][name] = value;
    }
    record["calls"] = calls_of(performed_, made_.call.find(".shape(") != std::string::npos);
    const Json& calls = record["calls"];
    if (record["outcome"].contains("error") && !calls.empty()) {
      const Json& last = calls.back();
      if (last.contains("throws")) record["outcome"] = Json{{"throws", last["throws"]}};
      if (last.contains("returned") && last["returned"] == 0) record["outcome"] = Json{{"fails", true}};
    }
    return record;
  }

 private:
  InterpreterOptions options() {
    InterpreterOptions options;
    options.print = [](const std::string&, const SourceText&, std::size_t) {};
    options.warnings = WarningMode::off;
    options.trace = &trace_;
    return options;
  }

  static SourcePtr source(const std::string& text) { return std::make_shared<SourceText>("call", text); }
  void run(const std::string& text) { interpreter_.run(interpreter_.parse(source(text))); }

  /// The program that keeps the value of an expression; a statement is its own program.
  Program program(const std::string& call) {
    try {
      return interpreter_.parse(source(fmt::format("{} = {}", result_name, call)));
    } catch (const ScriptError&) {
      return interpreter_.parse(source(call));
    }
  }

  /// What comes of the call, whose traced lines are then in `performed_`: reading its result makes others.
  Json outcome(const std::string& call) {
    try {
      interpreter_.run(program(call));
      performed_.swap(lines_);
    } catch (const ScriptError& error) {
      performed_.swap(lines_);
      return {{"error", error.message()}};
    }
    const Value* const value = interpreter_.global(result_name);
    return {{"value", value ? json_of(Value(*value)) : Json()}};
  }

  std::map<std::string, Json> variables() {
    std::map<std::string, Json> values;
    for (const std::string& name : interpreter_.globals())
      if (name != result_name && name != looked_at && name != seen)
        values[name] = json_of(Value(*interpreter_.global(name)));
    return values;
  }

  Json json_of(const Value& value) {
    const HostValue& record = value.record();
    switch (value.tag()) {
      case ValueTag::nil:
        return nullptr;
      case ValueTag::integer:
        return {{"int", arrayfold::load<std::int32_t>(record.payload)}};
      case ValueTag::integer64:
        return {{"int64", arrayfold::load<std::int64_t>(record.payload)}};
      case ValueTag::real:
        return {{"real", real_json(arrayfold::load<double>(record.payload))}};
      case ValueTag::table:
        return {{"table", entries_of(value)}};
      case ValueTag::object:
        return object_json(value);
      default:
        break;
    }
    if (value.is_string()) return {{"string", std::string(text_of(record))}};
    return {{"tag", static_cast<int>(value.tag())}};
  }

  Json entries_of(const Value& table) {
    Json entries = Json::array();
    TableWalk walk(table_of(table.record()));
    for (Entry entry = walk.next(); entry; entry = walk.next())
      entries.push_back({json_of(Value::sharing(*entry.key)), json_of(Value::sharing(*entry.value))});
    return entries;
  }

  /// The kind, the extents and the elements of an array, as its own type reads them.
  Json object_json(const Value& object) {
    const auto kind = kind_of_array(object);
    if (!kind) return {{"object", std::string(type_name_of(object_of(object.record())))}};
    Json array;
    try {
      array[*kind + " array"] = contents_of(object);
    } catch (const ScriptError& error) {
      array[*kind + " array"] = "cannot be read: " + error.message();
    }
    return array;
  }

  Json contents_of(const Value& object) {
    interpreter_.set_global(looked_at, object);
    run(fmt::format("{} = {}.shape()", seen, looked_at));
    const Value shape = *interpreter_.global(seen);
    Extents extents;
    Json contents = {{"shape", Json::array()}};
    TableWalk walk(shape.is_table() ? table_of(shape.record()) : nullptr);
    for (Entry entry = shape.is_table() ? walk.next() : Entry(); entry; entry = walk.next()) {
      const Value extent = Value::sharing(*entry.value);
      extents.push_back(extent.tag() == ValueTag::integer64 ? arrayfold::load<std::int64_t>(extent.record().payload)
                                                            : std::int64_t{-1});
      contents["shape"].push_back(extents.back());
    }
    if (has_contents_) contents["elements"] = elements_of(extents);
    return contents;
  }

  /// All elements, row by row.
  Json elements_of(const Extents& extents) {
    std::int64_t count = 1;
    for (const std::int64_t extent : extents) {
      if (extent < 0 || extent > most_elements) return "not read";
      count *= extent;
      if (count > most_elements) return "not read";
    }
    Json elements = Json::array();
    Extents position(extents.size(), 0);
    for (std::int64_t i = 0; i < count; ++i) {
      elements.push_back(element_at(position));
      for (std::size_t axis = extents.size(); axis-- > 0 && ++position[axis] == extents[axis];) position[axis] = 0;
    }
    return elements;
  }

  /// A number, whose kind is that of the array.
  Json element_at(const Extents& position) {
    const std::string indices = position.empty() ? "0" : fmt::format("{}", fmt::join(position, ", "));
    run(fmt::format("{} = {}[{}]", seen, looked_at, indices));
    const Json element = json_of(Value(*interpreter_.global(seen)));
    return element.is_object() && element.size() == 1 ? *element.begin() : element;
  }

  PreparedCall made_;
  bool has_contents_;
  std::map<std::string, Json> before_;  // the variables that the preparation made
  std::vector<std::string> lines_;      // of the trace
  std::vector<std::string> performed_;  // those of the call
  Trace trace_;
  Interpreter interpreter_;
};

CallRecording::CallRecording(const ModuleFunctions& functions, PreparedCall made, bool has_contents)
    : parts_(std::make_unique<Parts>(functions, std::move(made), has_contents)) {}

CallRecording::~CallRecording() = default;

std::string CallRecording::prepare(const std::function<void(const std::string&)>& before) {
  return parts_->prepare(before);
}

Json CallRecording::perform() { return parts_->perform(); }

}  // namespace hvm::conformance
