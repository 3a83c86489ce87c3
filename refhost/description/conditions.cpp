// description/conditions.cpp: the sentences of a table of failures as conditions and outcomes
//
// Each form of a sentence is a row of `forms`: an expression that matches the whole sentence, and a function that makes
// the condition of what it has found. Subjects are arguments in backticks (`a`, or `a` or `b`), or "an argument".

#include "description/conditions.hpp"

#include <algorithm>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "description/pattern.hpp"

namespace hvm::description {
namespace {

using Names = std::vector<std::string>;

/// The names in backticks.
Names names_in(const std::string& text) {
  static const Pattern name("`([A-Za-z_]\\w*)`");
  Names names;
  for (const Match& found : name.matches_in(text)) names.push_back(found[1]);
  return names;
}

/// The value of the key `of`: the arguments that a subject names, or `any`.
Json subject_in(const std::string& text) {
  const Names names = names_in(text);
  return names.empty() ? Json("any") : Json(names);
}

Json kinds_in(const std::string& text) {
  const auto kinds = read_kinds(text);
  if (!kinds) throw std::invalid_argument("'" + text + "' is no kind of value");
  return *kinds;
}

int count_in(const std::string& text) {
  const auto count = read_count(text);
  if (!count) throw std::invalid_argument("'" + text + "' is no count");
  return *count;
}

Json with(const std::string& key, Json value) {
  Json condition = Json::object();
  condition[key] = std::move(value);
  return condition;
}

Json about(const std::string& subject, const std::string& key, Json value) {
  Json condition = with("of", subject_in(subject));
  condition[key] = std::move(value);
  return condition;
}

struct Form {
  Pattern sentence;
  Json (*condition)(const Match& found);
};

/// `a`; or `a` or `b`; or `a`, `b` or `c`.
const std::string named = "(`\\w+`|`\\w+` or `\\w+`|`\\w+`, `\\w+` or `\\w+`)";
const std::string pair = "(`\\w+` and `\\w+`)";

const std::vector<Form>& forms() {
  static const std::vector<Form> all = {
      {Pattern("no argument"), [](const Match&) { return with("arguments_below", 1); }},
      {Pattern("fewer than (\\w+) arguments?"),
       [](const Match& found) { return with("arguments_below", count_in(found[1])); }},
      {Pattern("more than (\\w+) arguments?"),
       [](const Match& found) { return with("arguments_above", count_in(found[1])); }},
      {Pattern("every call|every other call"), [](const Match&) { return with("always", true); }},
      {Pattern("(an argument|" + named + ") is no (.*)"),
       [](const Match& found) { return about(found[1], "kind_not_in", kinds_in(found[3])); }},
      {Pattern("(an argument|" + named + ") is an? (.*)"),
       [](const Match& found) { return about(found[1], "kind_in", kinds_in(found[3])); }},
      {Pattern(pair + " are (.*) arrays"),
       [](const Match& found) {
         Json both = Json::array();
         for (const std::string& name : names_in(found[1]))
           both.push_back(about("`" + name + "`", "kind_in", kinds_in(found[2] + " array")));
         return with("all", both);
       }},
      {Pattern(named + " has no dimension"), [](const Match& found) { return about(found[1], "dimensions_below", 1); }},
      {Pattern(named + " has fewer than (\\w+) dimensions?"),
       [](const Match& found) { return about(found[1], "dimensions_below", count_in(found[2])); }},
      {Pattern(named + " has more than (\\w+) dimensions?"),
       [](const Match& found) { return about(found[1], "dimensions_above", count_in(found[2])); }},
      {Pattern(named + " has another number of dimensions than (\\w+)"),
       [](const Match& found) { return about(found[1], "dimensions_not", count_in(found[2])); }},
      {Pattern(named + " has no elements under a first extent that is not 0.*"),
       [](const Match& found) { return about(found[1], "empty_rows", true); }},
      {Pattern("(`\\w+` has fewer elements than `\\w+`) along its first dimension"),
       [](const Match& found) { return about(found[1], "shorter", true); }},
      {Pattern(named + " has no elements"), [](const Match& found) { return about(found[1], "empty", true); }},
      {Pattern("the last two extents of (`\\w+`) differ"),
       [](const Match& found) { return about(found[1], "not_square", true); }},
      {Pattern("the first extents of " + pair + " differ"),
       [](const Match& found) { return about(found[1], "first_extents_differ", true); }},
      {Pattern("(`\\w+` has fewer rows than `\\w+`)"),
       [](const Match& found) { return about(found[1], "fewer_rows", true); }},
      {Pattern("the extents of " + pair + " that are summed over differ"),
       [](const Match& found) { return about(found[1], "summed_extents_differ", true); }},
      {Pattern(pair + " are of different kinds"),
       [](const Match& found) { return about(found[1], "kinds_differ", true); }},
      {Pattern("the shapes of " + pair + " do not broadcast"),
       [](const Match& found) { return about(found[1], "no_broadcast", true); }},
      {Pattern("(an extent|an argument|" + named + ") is negative"),
       [](const Match& found) { return about(found[1], "below", 0); }},
      {Pattern(named + " is ([0-9]+)"),
       [](const Match& found) { return about(found[1], "equals", count_in(found[2])); }},
      {Pattern("(an extent|an argument|" + named + ") is beyond 32 bits"),
       [](const Match& found) { return about(found[1], "beyond_32_bits", true); }},
      {Pattern("no memory.*|.*\\bfit into memory\\b.*"), [](const Match&) { return with("no_memory", true); }},
  };
  return all;
}

Json read_simple(const std::string& sentence) {
  for (const Form& form : forms())
    if (const auto found = form.sentence.match(sentence)) return form.condition(*found);
  return with("told", true);
}

bool is_told(const Json& condition) { return condition.contains("told"); }

}  // namespace

Json read_condition(const std::string& sentence, const Names& arguments) {
  for (const std::string& name : names_in(sentence))
    if (std::find(arguments.begin(), arguments.end(), name) == arguments.end())
      throw std::invalid_argument("`" + name + "` is no argument of the page");
  const std::size_t conjunction = sentence.find(", and ");
  if (conjunction == std::string::npos) return read_simple(sentence);
  const Json first = read_simple(sentence.substr(0, conjunction));
  const Json second = read_simple(sentence.substr(conjunction + 6));
  return is_told(first) || is_told(second) ? with("told", true) : with("all", Json::array({first, second}));
}

Outcome read_outcome(const std::string& cell) {
  if (cell == "the call fails") return {"fails", ""};
  if (cell == "gives nothing") return {"nothing", ""};
  if (cell == "hvm refuses the call") return {"refused", ""};
  if (cell == "ends the process") return {"ends", ""};
  static const Pattern exception("throws ([A-Za-z_][A-Za-z0-9_:]*: .+)");
  if (const auto found = exception.match(cell)) return {"throws", (*found)[1]};
  throw std::invalid_argument(
      "'" + cell +
      "' is none of: the call fails; gives nothing; throws TYPE: words; hvm refuses the call; ends the process");
}

}  // namespace hvm::description
