// description/vocabulary.cpp: the words for kinds of values and for what an argument accepts

#include "description/vocabulary.hpp"

#include <algorithm>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "description/pattern.hpp"

namespace hvm::description {
namespace {

struct Kind {
  const char* name;
  int tag;           // of the records, -1 without one
  const char* type;  // of the objects, null without one
};

constexpr int object_tag = 16, quotation_tag = 13;

const std::vector<Kind> kinds = {{"int", 0, nullptr},
                                 {"int64", 20, nullptr},
                                 {"real", 1, nullptr},
                                 {"string", 2, nullptr},
                                 {"table", 5, nullptr},
                                 {"nil", 10, nullptr},
                                 {"quotation", quotation_tag, nullptr},
                                 {"quoted call", quotation_tag, nullptr},
                                 {"data literal", quotation_tag, nullptr},
                                 {"object", object_tag, nullptr},
                                 {"any", -1, nullptr},
                                 {"int array", object_tag, "$xintarray"},
                                 {"int64 array", object_tag, "$xint64array"},
                                 {"double array", object_tag, "$xdoublearray"},
                                 {"bool array", object_tag, "$xboolarray"}};

struct Group {
  const char* name;
  std::vector<std::string> kinds;
};

const std::vector<Group> groups = {{"number", {"int", "int64", "real"}},
                                   {"array", {"int array", "int64 array", "double array", "bool array"}},
                                   {"array of numbers", {"int array", "int64 array", "double array"}}};

std::vector<std::string> kinds_of_word(const std::string& word) {
  for (const Group& group : groups)
    if (word == group.name) return group.kinds;
  for (const Kind& kind : kinds)
    if (word == kind.name) return {word};
  return {};
}

bool is_of_array(const std::string& word) { return word.find("array") != std::string::npos; }

/// The parts between commas.
std::vector<std::string> parts_of(const std::string& list) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t comma; (comma = list.find(", ", start)) != std::string::npos; start = comma + 2)
    parts.push_back(list.substr(start, comma - start));
  parts.push_back(list.substr(start));
  return parts;
}

/// The words of a list: between commas, and the last two between `or`.
std::vector<std::string> words_of(const std::string& list) {
  std::vector<std::string> words = parts_of(list);
  const std::size_t last = words.back().rfind(" or ");
  if (last != std::string::npos) {
    const std::string tail = words.back().substr(last + 4);
    words.back().resize(last);
    words.push_back(tail);
  }
  return words;
}

/// Reads one constraint behind the kinds. False when it is none.
bool read_constraint(const std::string& part, Accepted& accepted) {
  static const Pattern read_as("read as (int|int64|double)");
  static const Pattern either_rank("([0-9]) or ([0-9]) dimensions");
  static const Pattern least_rank("([0-9]) or more dimensions");
  static const Pattern kind_of("of the kind of `(\\w+)`");
  if (const auto kind = read_as.match(part)) {
    accepted.read_as = (*kind)[1];
  } else if (part == "0 or more" || part == "1 or more") {
    accepted.least = part[0] - '0';
  } else if (part == "not 0") {
    accepted.is_not_zero = true;
  } else if (part == "vector") {
    accepted.least_dimensions = accepted.most_dimensions = 1;
  } else if (part == "matrix" || part == "square matrix") {
    accepted.least_dimensions = accepted.most_dimensions = 2;
    accepted.is_square = part != "matrix";
  } else if (const auto ranks = either_rank.match(part)) {
    accepted.least_dimensions = std::stoi((*ranks)[1]);
    accepted.most_dimensions = std::stoi((*ranks)[2]);
  } else if (const auto rank = least_rank.match(part)) {
    accepted.least_dimensions = std::stoi((*rank)[1]);
  } else if (const auto argument = kind_of.match(part)) {
    accepted.kind_of = (*argument)[1];
  } else {
    return false;
  }
  return true;
}

}  // namespace

Json kinds_in_json() {
  Json json = Json::object();
  for (const Kind& kind : kinds) {
    Json entry = Json::object();
    if (kind.tag >= 0) entry["tag"] = kind.tag;
    if (kind.type != nullptr) entry["type"] = kind.type;
    json[kind.name] = entry;
  }
  return json;
}

std::optional<std::vector<std::string>> read_kinds(const std::string& list) {
  std::vector<std::string> words = words_of(list);
  // From the last to the first: a bare name before an array is that of its elements.
  bool before_array = false;
  for (auto word = words.rbegin(); word != words.rend(); ++word) {
    const bool names_elements = *word == "int" || *word == "int64" || *word == "double" || *word == "bool";
    if (before_array && names_elements) *word += " array";
    before_array = is_of_array(*word);
  }
  std::vector<std::string> read;
  for (const std::string& word : words) {
    const auto found = kinds_of_word(word);
    if (found.empty()) return std::nullopt;
    for (const std::string& kind : found)
      if (std::find(read.begin(), read.end(), kind) == read.end()) read.push_back(kind);
  }
  return read;
}

Accepted read_accepts(const std::string& cell) {
  const std::vector<std::string> parts = parts_of(cell);
  Accepted accepted;
  std::size_t constraints = parts.size();
  Accepted ignored;
  while (constraints > 1 && read_constraint(parts[constraints - 1], ignored)) --constraints;
  std::string list = parts[0];
  for (std::size_t i = 1; i < constraints; ++i) list += ", " + parts[i];
  const auto read = read_kinds(list);
  if (!read) throw std::invalid_argument(list);
  accepted.kinds = *read;
  for (std::size_t i = constraints; i < parts.size(); ++i) read_constraint(parts[i], accepted);
  return accepted;
}

std::optional<int> read_count(const std::string& word) {
  static const std::vector<std::string> words = {"no",  "one",   "two",   "three", "four", "five",
                                                 "six", "seven", "eight", "nine",  "ten"};
  const auto found = std::find(words.begin(), words.end(), word);
  if (found != words.end()) return static_cast<int>(found - words.begin());
  if (word.empty() || word.size() > 4 || word.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  return std::stoi(word);
}

}  // namespace hvm::description
