// script/library/builtins.hpp: the functions that the language itself has

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "script/module/array_module.hpp"
#include "script/module/module_functions.hpp"
#include "script/picture/figure.hpp"
#include "script/text/printer.hpp"

namespace hvm {

/// Takes a line of output, without its end, with the place that printed it.
using PrintLine = std::function<void(const std::string& text, const SourceText& source, std::size_t line)>;

/// What a script may read and write.
enum class FileAccess {
  none,                    // no file at all
  without_standard_input,  // every file, but the standard input holds the script
  all
};

/// What a built-in function gets.
struct BuiltinCall {
  const ModuleCaller& caller;
  Span span;
  const ModuleFunctions& module;
  const ArrayChecks& checks;
  const PrintLine& print;
  FileAccess files;
  Pictures& pictures;
  std::vector<Value>& arguments;
  std::string_view name = {};  // of the function that is called

  /// Throws a `Failure` whose message is `name: message`.
  [[noreturn]] void fail(const std::string& message) const;
  std::size_t count() const { return arguments.size(); }
  /// Prints lines of text, at the place where the call ends.
  void print_lines(const std::string& text) const;
  /// Writes values as text, objects through their methods.
  Printer printer(Detail detail) const;
};

/// Whether a call is made for its value or for what it does.
enum class Gives { value, nothing };

struct Builtin {
  std::string_view name;
  int minimum;  // of the number of arguments
  int maximum;  // -1: any number
  Value (*body)(const BuiltinCall& call);
  std::string_view usage;    // the forms of a call, such as `round(x)` and `round(x, digits)`, with a line end between
  std::string_view summary;  // what it does, in a sentence
  std::string_view example;  // a script, with what it prints as comments
  Gives gives = Gives::value;
  std::string_view options = {};  // each entry of its table of options and what it means, in a line
};

/// The built-in functions of one source file.
struct BuiltinFamily {
  const Builtin* begin_;
  const Builtin* end_;
  const Builtin* begin() const { return begin_; }
  const Builtin* end() const { return end_; }
};
template <std::size_t count>
constexpr BuiltinFamily family_of(const Builtin (&rows)[count]) {
  return {rows, rows + count};
}

BuiltinFamily general_functions();
BuiltinFamily number_functions();
BuiltinFamily text_functions();
BuiltinFamily table_functions();
BuiltinFamily file_functions();
BuiltinFamily picture_functions();

/// The built-in function of a name, null when there is none.
const Builtin* find_builtin(std::string_view name);
std::vector<std::string_view> builtin_names();
/// Calls it after a check of the number of arguments. Throws `Failure`.
Value call_builtin(const Builtin& builtin, BuiltinCall call);

}  // namespace hvm
