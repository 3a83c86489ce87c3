// script/explain/condition_words.cpp: values and arguments in the sentences of warnings

#include "script/explain/condition_words.hpp"

#include <fmt/format.h>

#include <cmath>

#include "script/explain/script_words.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

bool is_of_kind(const Value& value, std::string_view kind) { return array_kind_of(value) == kind; }

bool has_fraction(const Value& value) {
  if (value.tag() != ValueTag::real) return false;
  const auto x = arrayfold::load<double>(value.record().payload);
  return !(x == std::floor(x));
}

std::string argument_text(const AnsweredCall& call, std::size_t number, std::string_view otherwise) {
  const auto texts = argument_texts(call.text());
  return number < texts.size() ? short_text(texts[number], otherwise) : std::string(otherwise);
}

std::string argument_name(const AnsweredCall& call, std::size_t number, std::string_view otherwise) {
  const std::string text = argument_text(call, number, otherwise);
  return is_name(text) ? text : std::string(otherwise);
}

std::string in_words(const HostValue& record) {
  const Value value = Value::sharing(record);
  if (value.is_nil()) return "nil";
  if (const auto kind = kind_of_array(value)) return with_article(*kind) + " array";
  if (value.is_string()) return fmt::format("the string {:?}", short_text(text_of(record), "..."));
  return kind_in_words(value);
}

}  // namespace hvm
