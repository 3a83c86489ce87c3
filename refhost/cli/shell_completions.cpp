// cli/shell_completions.cpp: files with which shells complete command lines of hvm

#include "cli/shell_completions.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <vector>

#include "cli/options.hpp"

namespace hvm {
namespace {

using Spellings = std::vector<std::string>;
using Form = OptionValue::Form;

void append_spellings(Spellings& all, const Option& option) {
  for (const std::string& spelling : {option.letter, option.name})
    if (!spelling.empty()) all.push_back(spelling);
}

template <class Condition>
Spellings spellings_where(Condition condition) {
  Spellings all;
  for (const Option& option : options())
    if (condition(option)) append_spellings(all, option);
  return all;
}

bool goes_with(const Option& option, Task task) {
  return std::find(option.tasks.begin(), option.tasks.end(), task) != option.tasks.end();
}

bool have_common_task(const Option& a, const Option& b) {
  return std::any_of(a.tasks.begin(), a.tasks.end(), [&](Task task) { return goes_with(b, task); });
}

/// The name of a task in the files.
std::string task_name(Task task) {
  if (task == Task::run) return "run";
  for (const Option& option : options())
    if (option.chooses == task) return option.name.substr(2);
  return {};
}

// ---- bash

std::string bash_case(const Spellings& spellings, const std::string& commands) {
  return spellings.empty() ? "" : fmt::format("      {}) {} ;;\n", fmt::join(spellings, " | "), commands);
}

/// The cases for the options that go with each task. Without one, options that choose a task are among them.
std::string bash_options() {
  std::string cases;
  for (const Option& chooser : options())
    if (chooser.chooses)
      cases += fmt::format(
          "    {}) echo '{}' ;;\n", task_name(*chooser.chooses),
          fmt::join(spellings_where([&](const Option& option) { return goes_with(option, *chooser.chooses); }), " "));
  const Spellings without =
      spellings_where([](const Option& option) { return option.chooses || goes_with(option, Task::run); });
  return cases + fmt::format("    *) echo '{}' ;;\n", fmt::join(without, " "));
}

/// The cases for words that are options.
std::string bash_words() {
  std::string cases;
  for (const Option& option : options()) {
    Spellings spellings;
    append_spellings(spellings, option);
    Spellings assignments;
    if (option.chooses) assignments.push_back("task=" + task_name(*option.chooses));
    if (option.value) assignments.emplace_back("option=$word");
    if (!assignments.empty()) cases += bash_case(spellings, fmt::format("{}", fmt::join(assignments, " ")));
  }
  return cases;
}

/// The cases for options with values.
std::string bash_values() {
  std::string cases =
      bash_case(spellings_where([](const Option& option) { return option.value && option.value->form == Form::file; }),
                R"(_hvm_files '' "$current")");
  for (const Option& option : options()) {
    if (!option.value || option.value->form != Form::choice) continue;
    Spellings spellings;
    append_spellings(spellings, option);
    cases += bash_case(spellings, fmt::format(R"(_hvm_words '{}' "$current")", fmt::join(option.value->choices, " ")));
  }
  return cases;
}

constexpr const char* bash_file = R"bash(# hvm: completes its command lines in bash. Made by: hvm --completion bash

# The options that go with a task.
_hvm_options() {{
  case $1 in
{options}  esac
}}

# Offers those of some words that begin with another one.
_hvm_words() {{
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}}

# Offers folders, and files that no pattern leaves out.
_hvm_files() {{
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -d -- "$2"; compgen -f -X "$1" -- "$2" | while IFS= read -r file; do
    [[ -d $file ]] || printf '%s\n' "$file"
  done)
}}

# Offers the functions of the module.
_hvm_functions() {{
  local kind name rest
  while read -r kind name rest; do
    [[ $kind == function && $name == "$2"* ]] && COMPREPLY+=("$name")
  done < <("$1" --list 2>/dev/null)
}}

_hvm() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} task=run option= ended= left_out='!*.hvm' word i
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${{COMP_WORDS[i]}}
    if [[ -n $option ]]; then
      # bash makes three words of --name=value.
      [[ $word == = ]] && continue
      [[ $option == -e ]] && left_out=
      option=
      continue
    fi
    case $ended$word in  # behind --, no word is an option
{words}      --) ended=1 ;;
      -e*) left_out= ;;
      -?*) ;;
      *)
        # Behind the script, or the first argument of the code, everything is its own.
        if [[ $task == run ]]; then
          _hvm_files '' "$current"
          return
        fi
        ;;
    esac
  done
  if [[ -n $option ]]; then
    [[ $current == = ]] && current=
    case $option in
{values}    esac
  elif [[ -z $ended && $current == -* ]]; then
    _hvm_words "$(_hvm_options "$task")" "$current"
  else
    case $task in
      run | test) _hvm_files "$left_out" "$current" ;;
      list) _hvm_functions "${{COMP_WORDS[0]}}" "$current" ;;
    esac
  fi
}}

complete -F _hvm hvm
)bash";

// ---- zsh

/// Text between quotation marks of the shell, where brackets and colons mean themselves.
std::string zsh_escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\'') {
      escaped += R"('\'')";
      continue;
    }
    if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string zsh_value(const OptionValue& value) {
  switch (value.form) {
    case Form::text:
      return fmt::format(":{}: ", value.word);
    case Form::file:
      return fmt::format(":{}:_files", value.word);
    case Form::choice:
      return fmt::format(":{}:({})", value.word, fmt::join(value.choices, " "));
  }
  return {};
}

/// A line for each spelling, with what it does not go with in front.
std::string zsh_lines(const Option& option) {
  Spellings excluded =
      spellings_where([&](const Option& other) { return &other != &option && !have_common_task(option, other); });
  append_spellings(excluded, option);
  Spellings spellings;
  append_spellings(spellings, option);
  std::string lines;
  for (const std::string& spelling : spellings) {
    const char* const sign = !option.value ? "" : spelling.size() == 2 ? "+" : "=";
    lines += fmt::format("    '({}){}{}[{}]{}'\n", fmt::join(excluded, " "), spelling, sign,
                         zsh_escaped(option.meaning), option.value ? zsh_value(*option.value) : "");
  }
  return lines;
}

/// The lines of the options that `condition` holds for, as an array of the shell.
template <class Condition>
std::string zsh_array(Condition condition) {
  std::string lines;
  for (const Option& option : options())
    if (condition(option)) lines += zsh_lines(option);
  return lines;
}

/// The options of a task without which they have no meaning.
std::string zsh_tasks() {
  std::string text;
  for (const Option& chooser : options()) {
    if (!chooser.chooses) continue;
    const std::string lines = zsh_array([&](const Option& option) {
      return !option.chooses && !goes_with(option, Task::run) && goes_with(option, *chooser.chooses);
    });
    if (!lines.empty()) text += fmt::format("  (( ${{words[(I){}]}} )) && specs+=(\n{}  )\n", chooser.name, lines);
  }
  return text;
}

constexpr const char* zsh_file = R"zsh(#compdef hvm
# hvm: completes its command lines in zsh. Made by: hvm --completion zsh

# Offers the functions of the module, with their sentences.
_hvm_functions() {{
  local kind name sentence
  local -a functions
  _call_program functions ${{(q)words[1]}} --list 2>/dev/null | while read -r kind name sentence; do
    [[ $kind == function ]] && functions+=("$name${{sentence:+:$sentence}}")
  done
  _describe function functions
}}

_hvm() {{
  local context state state_descr line
  local -a ends specs
  typeset -A opt_args
  # Behind the script everything is its own.
  (( ${{words[(I)--(test|list)]}} )) || ends=(-A '-*')
  specs=(
{options}  )
{tasks}  _arguments -s -S $ends : $specs '*: :->operands' && return
  [[ $state == operands ]] || return
  if (( ${{words[(I)--list]}} )); then
    _hvm_functions
  elif (( ${{words[(I)--test]}} || $#line < 2 && ! ${{words[(I)-e*]}} )); then
    _files -g '*.hvm'
  else
    _files
  fi
}}

_hvm "$@"
)zsh";

}  // namespace

std::string bash_completion() {
  return fmt::format(bash_file, fmt::arg("options", bash_options()), fmt::arg("words", bash_words()),
                     fmt::arg("values", bash_values()));
}

std::string zsh_completion() {
  const std::string common =
      zsh_array([](const Option& option) { return option.chooses || goes_with(option, Task::run); });
  return fmt::format(zsh_file, fmt::arg("options", common), fmt::arg("tasks", zsh_tasks()));
}

}  // namespace hvm
