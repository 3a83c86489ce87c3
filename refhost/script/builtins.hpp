// script/builtins.hpp: the functions that the language itself has

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "script/module_calls.hpp"

namespace hvm {

/// Takes a line of output, without its end, with the place that printed it.
using PrintLine = std::function<void(const std::string& text, const SourceText& source, std::size_t line)>;

/// What a built-in function gets.
struct BuiltinCall {
  const ModuleCaller& caller;
  Span span;
  bool has_guards;
  const PrintLine& print;
  std::vector<Value>& arguments;
};

struct Builtin {
  std::string_view name;
  int least;
  int most;  // -1: any number
  Value (*body)(const BuiltinCall& call);
};

/// The built-in function of a name, null when there is none.
const Builtin* find_builtin(std::string_view name);
std::vector<std::string_view> builtin_names();
/// Calls it after a check of the number of arguments. Throws `Failure`.
Value call_builtin(const Builtin& builtin, const BuiltinCall& call);

/// The numbers of a `range`.
struct Range {
  std::int64_t start = 0;
  std::int64_t stop = 0;
  std::int64_t step = 1;
  bool is_short = true;  // 32-bit integers, as the arguments are

  bool has_more() const { return step > 0 ? start < stop : start > stop; }
  std::int64_t count() const;
  /// The current number.
  Value value() const { return is_short ? Value(static_cast<int>(start)) : Value(start); }
  void advance();
};
/// The range that `range(arguments)` means. Throws `Failure`.
Range range_of(std::vector<Value>& arguments);

}  // namespace hvm
