// description/vocabulary.hpp: the words for kinds of values and for what an argument accepts

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace hvm::description {

using Json = nlohmann::ordered_json;

/// Every kind by its name, with the tag of its records and the name of its type, as far as it has one of each.
Json kinds_in_json();

/// Reads a list such as `int, int64 or double array` into the names of kinds, in the order in which they stand. Words
/// for several kinds (`number`, `array`, `array of numbers`) give each of them. Before a word of an array, the bare
/// names of elements stand for arrays. No value when it is no such list.
std::optional<std::vector<std::string>> read_kinds(const std::string& list);

/// What an argument accepts.
struct Accepted {
  std::vector<std::string> kinds;
  std::string read_as;  // int, int64 or double; empty when the kinds are taken as they are
  std::optional<int> least_dimensions, most_dimensions;
  bool is_square = false;    // of the last two extents
  std::optional<int> least;  // the smallest number
  bool is_not_zero = false;
  std::string kind_of;  // the argument whose kind it has
};

/// Reads a cell such as `double array, square matrix`. Throws std::invalid_argument with the phrase that is not in the
/// vocabulary.
Accepted read_accepts(const std::string& cell);

/// The number that a word (`no`, `one`, ... `ten`) or digits stand for.
std::optional<int> read_count(const std::string& word);

}  // namespace hvm::description
