// description/entry.cpp: a page as its entry in the description

#include "description/entry.hpp"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "description/conditions.hpp"
#include "description/pattern.hpp"

namespace hvm::description {
namespace {

struct Argument {
  std::string name;
  bool repeats;
  bool must_be_given;
  Json json;
};

/// `part` with the fault of a page when it throws std::invalid_argument.
template <class Part>
auto at_line(const Page& page, int line, const std::string& before, Part part) {
  try {
    return part();
  } catch (const std::invalid_argument& error) {
    throw page.fault(line, before + error.what());
  }
}

Json dimensions_in_json(const Accepted& accepted) {
  Json dimensions = Json::object();
  if (accepted.least_dimensions) dimensions["least"] = *accepted.least_dimensions;
  if (accepted.most_dimensions) dimensions["most"] = *accepted.most_dimensions;
  return dimensions;
}

Argument argument_of(const Page& page, const Row& row) {
  const std::string &name = row.cells[0], &accepts = row.cells[1], &given = row.cells[2], &meaning = row.cells[3];
  static const Pattern form("`(\\w+)`(, \\.\\.\\.)?");
  const auto found = form.match(name);
  if (!found) throw page.fault(row.line, "'" + name + "' is no name in backticks, perhaps with ', ...' behind it");
  if (meaning.empty()) throw page.fault(row.line, "the argument has no meaning");
  const Accepted accepted =
      at_line(page, row.line, "not in the vocabulary of Accepts: ", [&] { return read_accepts(accepts); });
  Argument argument{(*found)[1], !(*found)[2].empty(), given.empty(), Json::object()};
  Json& json = argument.json;
  json["name"] = argument.name;
  json["accepts"] = accepts;
  json["kinds"] = accepted.kinds;
  if (!accepted.read_as.empty()) json["read_as"] = accepted.read_as;
  const Json dimensions = dimensions_in_json(accepted);
  if (!dimensions.empty()) json["dimensions"] = dimensions;
  if (accepted.is_square) json["square"] = true;
  if (accepted.least) json["least"] = *accepted.least;
  if (accepted.is_not_zero) json["not_zero"] = true;
  if (!accepted.kind_of.empty()) json["kind_of"] = accepted.kind_of;
  if (argument.repeats) json["repeats"] = true;
  json["default"] = given.empty() ? Json(nullptr) : Json(given);
  json["meaning"] = meaning;
  return argument;
}

std::vector<std::string> names_of(const std::vector<Argument>& arguments) {
  std::vector<std::string> names;
  names.reserve(arguments.size());
  for (const Argument& argument : arguments) names.push_back(argument.name);
  return names;
}

std::vector<Argument> read_arguments(const Page& page) {
  const Section& section = page.section("Arguments");
  const bool has_table = std::any_of(section.lines.begin(), section.lines.end(),
                                     [](const Line& line) { return line.text.compare(0, 1, "|") == 0; });
  std::vector<Argument> arguments;
  if (!has_table) return arguments;
  for (const Row& row : table_of(page, section, {"Name", "Accepts", "Default", "Meaning"})) {
    Argument argument = argument_of(page, row);
    const auto names = names_of(arguments);
    if (std::find(names.begin(), names.end(), argument.name) != names.end())
      throw page.fault(row.line, "the argument `" + argument.name + "` stands there twice");
    if (!arguments.empty() && arguments.back().repeats)
      throw page.fault(row.line, "an argument follows one that repeats");
    if (argument.json.contains("kind_of")) {
      const std::string other = argument.json["kind_of"];
      if (std::find(names.begin(), names.end(), other) == names.end())
        throw page.fault(row.line, "`" + other + "` is no argument before this one");
    }
    arguments.push_back(std::move(argument));
  }
  return arguments;
}

/// How many arguments stand between the brackets of a form such as `xeye(n, m)`. Dots are none.
int count_in_brackets(const std::string& call) {
  int depth = 0, count = 0;
  std::string word;
  const auto end_word = [&] {
    word = trimmed(word);
    count += !word.empty() && word != "...";
    word.clear();
  };
  for (const char c : call.substr(call.find('('))) {
    if (c == ')' || c == ']') --depth;
    if (depth == 0 && c == ')') break;
    if (depth == 1 && c == ',')
      end_word();
    else if (depth > 0)
      word += c;
    if (c == '(' || c == '[') ++depth;
  }
  end_word();
  return count;
}

/// The forms of the call. Those of functions and methods begin with the name; `minimum` is what the shortest must have.
Json read_synopsis(const Page& page, const Described& described, const std::string& receiver, int minimum) {
  const Section& section = page.section("Synopsis");
  const auto lines = code_of(section);
  if (lines.empty()) throw page.fault(section.line, "the section has no block of code");
  Json forms = Json::array();
  int shortest = -1;
  const std::string start = (receiver.empty() ? "" : receiver + ".") + described.name + "(";
  for (const Line& line : lines) {
    forms.push_back(line.text);
    if (described.form == CallForm::operation) continue;
    if (line.text.compare(0, start.size(), start) != 0)
      throw page.fault(line.number, "the form does not begin with '" + start + "'");
    const int count = count_in_brackets(line.text.substr(start.size() - 1));
    shortest = shortest < 0 ? count : std::min(shortest, count);
  }
  if (described.form != CallForm::operation && shortest != minimum)
    throw page.fault(lines[0].number, "the shortest form has " + std::to_string(shortest) +
                                          " arguments, and the table " + std::to_string(minimum) +
                                          " without a default");
  return forms;
}

std::string read_result(const Page& page) {
  const Section& section = page.section("Result");
  const auto paragraphs = paragraphs_of(section);
  if (paragraphs.empty()) throw page.fault(section.line, "the section has no paragraph");
  return paragraphs[0].text;
}

Json read_surprises(const Page& page) {
  static const Pattern form("\\*\\*Surprise: ([^*]+)\\*\\* (.+)");
  Json surprises = Json::array();
  for (const Line& paragraph : paragraphs_of(page.section("Result"))) {
    if (paragraph.text.compare(0, 12, "**Surprise: ") != 0) {
      if (paragraph.text.find("**Surprise") != std::string::npos)
        throw page.fault(paragraph.number, "a surprise begins its paragraph with '**Surprise: '");
      continue;
    }
    const auto found = form.match(paragraph.text);
    if (!found || (*found)[1].back() != '.')
      throw page.fault(paragraph.number, "a surprise is '**Surprise: title.** text'");
    Json surprise = Json::object();
    surprise["title"] = (*found)[1];
    surprise["text"] = (*found)[2];
    surprises.push_back(surprise);
  }
  return surprises;
}

Json failure_of(const Page& page, const Row& row, const std::vector<std::string>& arguments) {
  const std::string &when = row.cells[0], &happens = row.cells[1], &remedy = row.cells[2];
  if (when.empty()) throw page.fault(row.line, "the row has no condition under When");
  const Json condition = at_line(page, row.line, "When: ", [&] { return read_condition(when, arguments); });
  const Outcome outcome = at_line(page, row.line, "What happens: ", [&] { return read_outcome(happens); });
  Json failure = Json::object();
  failure["when"] = when;
  failure["condition"] = condition;
  failure["outcome"] = outcome.name;
  if (!outcome.exception.empty()) failure["exception"] = outcome.exception;
  if (!remedy.empty()) failure["remedy"] = remedy;
  return failure;
}

Json read_failures(const Page& page, const std::vector<std::string>& arguments) {
  Json failures = Json::array();
  for (const Row& row : table_of(page, page.section("Failures"), {"When", "What happens", "Remedy"})) {
    Json failure = failure_of(page, row, arguments);
    for (const Json& other : failures)
      if (other["when"] == failure["when"]) throw page.fault(row.line, "the condition stands there twice");
    failures.push_back(std::move(failure));
  }
  return failures;
}

/// Takes the first argument of a method, the array on which it is called, away from the others.
std::optional<Argument> take_receiver(const Page& page, CallForm form, std::vector<Argument>& arguments) {
  if (form != CallForm::method) return std::nullopt;
  if (arguments.empty()) throw page.fault(page.section("Arguments").line, "a method has a first row for its array");
  Argument receiver = std::move(arguments.front());
  arguments.erase(arguments.begin());
  return receiver;
}

}  // namespace

Json entry_of(const Page& page, const Described& described) {
  if (page.title != described.name) throw page.fault(1, "the title is not '" + described.name + "'");
  std::vector<Argument> arguments = read_arguments(page);
  const auto all_names = names_of(arguments);
  const auto receiver = take_receiver(page, described.form, arguments);
  const int minimum = static_cast<int>(std::count_if(arguments.begin(), arguments.end(),
                                                     [](const Argument& argument) { return argument.must_be_given; }));
  if (described.minimum >= 0 && minimum != described.minimum)
    throw page.fault(page.section("Arguments").line, "the table has " + std::to_string(minimum) +
                                                         " arguments without a default, and functions.def " +
                                                         std::to_string(described.minimum));
  const bool repeats = !arguments.empty() && arguments.back().repeats;

  Json entry = Json::object();
  entry["name"] = described.name;
  entry["family"] = described.family;
  entry["status"] = described.status;
  entry["summary"] = page.summary;
  entry["synopsis"] = read_synopsis(page, described, receiver ? receiver->name : "", minimum);
  entry["least_arguments"] = minimum;
  entry["most_arguments"] = repeats ? Json(nullptr) : Json(arguments.size());
  if (receiver) entry["receiver"] = receiver->json;
  entry["arguments"] = Json::array();
  for (const Argument& argument : arguments) entry["arguments"].push_back(argument.json);
  entry["result"] = read_result(page);
  entry["failures"] = read_failures(page, all_names);
  entry["surprises"] = read_surprises(page);
  entry["page"] = described.page;
  return entry;
}

}  // namespace hvm::description
