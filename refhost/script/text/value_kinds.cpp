// script/text/value_kinds.cpp: the names of the kinds of values

#include "script/text/value_kinds.hpp"

#include <fmt/format.h>

#include <string_view>

namespace hvm {

std::string kind_name(const Value& value) {
  if (value.is_string()) return "string";
  switch (value.tag()) {
    case ValueTag::integer:
      return "int";
    case ValueTag::integer64:
      return "int64";
    case ValueTag::real:
      return "real";
    case ValueTag::table:
      return "table";
    case ValueTag::nil:
      return "nil";
    case ValueTag::code:
      return "code";
    case ValueTag::object:
      return type_name_of(object_of(value.record()));
    default:
      return "value";
  }
}

std::string with_article(const std::string& noun) {
  const bool has_vowel = std::string_view("aeiou").find(noun.front()) != std::string_view::npos;
  return fmt::format("{} {}", has_vowel ? "an" : "a", noun);
}

std::string kind_in_words(const Value& value) {
  std::string name = kind_name(value);
  return value.is_nil() || value.is_object() ? name : with_article(name);
}

}  // namespace hvm
