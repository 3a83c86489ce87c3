// script/explain/condition_words.hpp: values and arguments in the sentences of warnings

#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "script/explain/array_integers.hpp"
#include "script/explain/warning_subjects.hpp"

namespace hvm {

/// Where to find what a sentence names.
inline constexpr auto library = "of use \"arrays\"";

bool is_of_kind(const Value& value, std::string_view kind);
/// Whether the value is a real that an integer cannot hold; NaN is one.
bool has_fraction(const Value& value);

/// The value in words: its kind, and the text of a string.
std::string in_words(const HostValue& record);

/// What follows the number that an array of integers has in place of another one; nothing where a fraction is cut.
constexpr std::string_view stored(Kept kept, bool is_narrow) {
  if (kept != Kept::another) return {};
  return is_narrow ? ", which fits into 32 bits" : ", which fits into 64 bits";
}

/// An argument in the words of the script; `otherwise` where it is missing or too long for a sentence.
std::string argument_text(const AnsweredCall& call, std::size_t number, std::string_view otherwise);
/// The same for an argument that a sentence names twice: anything but a name is computed once.
std::string argument_name(const AnsweredCall& call, std::size_t number, std::string_view otherwise);

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
/// The functions of a list.
template <std::size_t count>
std::vector<std::string_view> functions_of(const Word (&list)[count]) {
  std::vector<std::string_view> names;
  for (const Word& each : list) names.push_back(each.function);
  return names;
}

}  // namespace hvm
