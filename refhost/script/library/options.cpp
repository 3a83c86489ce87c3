// script/library/options.cpp: the table of options that a function takes as its last argument

#include "script/library/options.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "script/library/arguments.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

std::string quoted_list(std::initializer_list<std::string_view> names) {
  std::string text;
  for (const std::string_view name : names) text += (text.empty() ? "" : ", ") + string_literal(name);
  return text;
}

}  // namespace

Options::Options(const BuiltinCall& call, std::size_t argument, std::initializer_list<std::string_view> names)
    : call_(call) {
  if (!has_argument(call, argument)) return;
  table_ = table_argument(call, argument);
  TableWalk walk(table_);
  while (const Entry entry = walk.next()) {
    const Value key = Value::sharing(*entry.key);
    const std::string_view name = key.is_string() ? text_of(key.record()) : std::string_view();
    if (std::find(names.begin(), names.end(), name) != names.end()) continue;
    if (!key.is_string()) call.fail(fmt::format("an option has a name, not {}", kind_in_words(key)));
    call.fail(fmt::format("there is no option {}; it takes {}", string_literal(name), quoted_list(names)));
  }
}

std::optional<Value> Options::find(std::string_view name) const {
  const HostValue* value = hvm::find(table_, name);
  if (!value || value->tag == ValueTag::nil) return std::nullopt;
  return Value::sharing(*value);
}

bool Options::truth_of(std::string_view name, const Value& value) const {
  if (!value.is_number())
    call_.fail(fmt::format("{} is true or false, not {}", string_literal(name), kind_in_words(value)));
  HostValue record = value.record();
  return HVM_AsBool(&record) != 0;
}

char Options::character_of(std::string_view name, const Value& value) const {
  const std::string_view text = value.is_string() ? text_of(value.record()) : std::string_view();
  const bool is_character = text.size() == 1 && static_cast<unsigned char>(text.front()) < 0x80;
  if (!is_character) call_.fail(fmt::format("{} is a string of one ASCII character", string_literal(name)));
  return text.front();
}

}  // namespace hvm
