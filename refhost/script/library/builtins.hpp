// script/library/builtins.hpp: the functions that the language itself has

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "script/module/array_module.hpp"

namespace hvm {

/// Takes a line of output, without its end, with the place that printed it.
using PrintLine = std::function<void(const std::string& text, const SourceText& source, std::size_t line)>;

/// What a built-in function gets.
struct BuiltinCall {
  const ModuleCaller& caller;
  Span span;
  const ArrayChecks& checks;
  const PrintLine& print;
  std::vector<Value>& arguments;
};

struct Builtin {
  std::string_view name;
  int minimum;  // of the number of arguments
  int maximum;  // -1: any number
  Value (*body)(const BuiltinCall& call);
};

/// The built-in function of a name, null when there is none.
const Builtin* find_builtin(std::string_view name);
std::vector<std::string_view> builtin_names();
/// Calls it after a check of the number of arguments. Throws `Failure`.
Value call_builtin(const Builtin& builtin, const BuiltinCall& call);

}  // namespace hvm
