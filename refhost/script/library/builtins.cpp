// script/library/builtins.cpp: finding and calling built-in functions

#include "script/library/builtins.hpp"

#include <fmt/format.h>

#include <unordered_map>

#include "script/module/object_text.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/text/number_text.hpp"

namespace hvm {
namespace {

using BuiltinTable = std::unordered_map<std::string_view, const Builtin*>;

const BuiltinTable& builtins() {
  static const BuiltinTable table = [] {
    BuiltinTable made;
    for (const BuiltinFamily& family : {general_functions(), number_functions(), text_functions(), table_functions(),
                                        file_functions(), picture_functions()})
      for (const Builtin& builtin : family) made.emplace(builtin.name, &builtin);
    return made;
  }();
  return table;
}

std::string wanted_count(const Builtin& builtin) {
  if (builtin.minimum == builtin.maximum)
    return counted(static_cast<std::size_t>(builtin.minimum), "argument", "arguments");
  if (builtin.maximum < 0)
    return fmt::format("at least {}", counted(static_cast<std::size_t>(builtin.minimum), "argument", "arguments"));
  return fmt::format("{} to {} arguments", builtin.minimum, builtin.maximum);
}

}  // namespace

void BuiltinCall::fail(const std::string& message) const { throw Failure(fmt::format("{}: {}", name, message)); }

void BuiltinCall::print_lines(const std::string& text) const {
  const SourceText& source = *caller.source;
  print(text, source, source.line(span.end > 0 ? span.end - 1 : 0));
}

Printer BuiltinCall::printer(Detail detail) const { return Printer(detail, object_text(caller, checks, detail)); }

const Builtin* find_builtin(std::string_view name) {
  const auto found = builtins().find(name);
  return found == builtins().end() ? nullptr : found->second;
}

std::vector<std::string_view> builtin_names() {
  std::vector<std::string_view> names;
  names.reserve(builtins().size());
  for (const auto& entry : builtins()) names.push_back(entry.first);
  return names;
}

Value call_builtin(const Builtin& builtin, BuiltinCall call) {
  call.name = builtin.name;
  const int count = static_cast<int>(call.count());
  if (count < builtin.minimum || (builtin.maximum >= 0 && count > builtin.maximum))
    call.fail(fmt::format("it takes {}, not {}", wanted_count(builtin), count));
  return builtin.body(call);
}

}  // namespace hvm
