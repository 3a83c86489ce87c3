// script/library/arguments.cpp: the arguments of built-in functions, checked

#include "script/library/arguments.hpp"

#include <fmt/format.h>

#include "script/data/text_input.hpp"
#include "script/explain/other_names.hpp"
#include "script/module/array_module.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

void fail_kind(const BuiltinCall& call, const char* wanted, const Value& value) {
  std::string instead = number_in_array(call.caller, value);
  if (instead.empty() && value.is_object()) instead = counterpart_for_arrays(call.name, call.module);
  call.fail(fmt::format("it takes {}, not {}{}", wanted, kind_in_words(value), instead));
}

bool has_argument(const BuiltinCall& call, std::size_t i) { return i < call.count() && !call.arguments[i].is_nil(); }

std::string_view text_argument(const BuiltinCall& call, std::size_t i) {
  const Value& value = call.arguments[i];
  if (!value.is_string()) fail_kind(call, "a string", value);
  return text_of(value.record());
}

Number exact_number_argument(const BuiltinCall& call, std::size_t i) {
  const Value& value = call.arguments[i];
  if (!value.is_number()) fail_kind(call, "a number", value);
  return number_of(value);
}

double number_argument(const BuiltinCall& call, std::size_t i) { return exact_number_argument(call, i).real; }

std::int64_t integer_argument(const BuiltinCall& call, std::size_t i) {
  const Value& value = call.arguments[i];
  if (!is_integer(value)) fail_kind(call, "an integer", value);
  return number_of(value).whole;
}

HostHash* table_argument(const BuiltinCall& call, std::size_t i) {
  const Value& value = call.arguments[i];
  if (!value.is_table()) fail_kind(call, "a table", value);
  return table_of(value.record());
}

const HostValue& key_argument(const BuiltinCall& call, std::size_t i) {
  const Value& key = call.arguments[i];
  if (!is_key(key.record()))
    call.fail(fmt::format("{} is not a key of a table{}", kind_in_words(key), number_in_array(call.caller, key)));
  return key.record();
}

std::string path_argument(const BuiltinCall& call) {
  std::string path(text_argument(call, 0));
  if (call.files == FileAccess::none) call.fail("files are switched off");
  if (path.empty()) call.fail("the path is empty");
  if (path.find('\0') != std::string::npos) call.fail("the path has a zero byte");
  return path;
}

std::string output_path(const BuiltinCall& call) {
  std::string path = path_argument(call);
  if (is_standard_input(path)) call.fail("\"-\" is the standard input; 'print' writes to the standard output");
  return path;
}

}  // namespace hvm
