// cli/help.hpp: help at the prompt

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "script/explain/description.hpp"
#include "script/run/interpreter.hpp"

namespace hvm {

/// A command of the prompt, such as `:vars`.
struct PromptCommand {
  const char* name;
  const char* usage;
  const char* summary;
};
const std::vector<PromptCommand>& prompt_commands();

/// The topics, on less than a screen.
std::string help_topics();
/// What help knows.
struct HelpSources {
  const Interpreter& interpreter;
  const Description* description;  // of the module's functions; null: there is none
  std::size_t width;               // of the terminal
};
/// What a name means: a function, a method, a keyword, a command of the prompt, or a topic.
std::string help_on(const std::string& name, const HelpSources& sources);
/// What an input asks help for: `help`, `help(name)` or `help name`. Empty for `help` alone; no value when the input is
/// another one.
std::optional<std::string> help_asked(std::string_view input);

}  // namespace hvm
