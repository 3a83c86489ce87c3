// cli/help.cpp: help at the prompt

#include "cli/help.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cli/help_page.hpp"
#include "cli/safe_text.hpp"
#include "script/explain/other_names.hpp"
#include "script/library/script_file.hpp"
#include "script/module/array_module.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/lexer.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

struct WordHelp {
  const char* names;  // with blanks around each
  const char* usage;
  const char* summary;
};

constexpr WordHelp word_table[] = {
    {" if then elseif else ", "if c\n  ...\nelseif c\n  ...\nelse\n  ...\nend",
     "Runs the block of the first condition that holds. On one line: if c then ... end."},
    {" while do ", "while c\n  ...\nend", "Runs its block as long as the condition holds."},
    {" for in ", "for i in range(n)\n  ...\nend\nfor v in t ... end\nfor k, v in t ... end",
     "Runs its block for each number of a range, or each value of a table."},
    {" break ", "break", "Ends the innermost loop."},
    {" continue ", "continue", "Continues with the next turn of the innermost loop."},
    {" fn return ", "fn name(a, b)\n  return a + b\nend", "Defines a function. Without return a call gives nil."},
    {" try catch ", "try\n  ...\ncatch e\n  ...\nend",
     "Runs the second block when the first one fails, with the message in e."},
    {" use ", "use \"file.hvm\"\nuse \"arrays\"", "Runs another script once, or loads the library of array functions."},
    {" and or not ", "a and b, a or b, not a", "Conditions: a number that is not zero is true, nil is false."},
    {" nil ", "nil", "The value of a call without a result, and of an absent entry."},
    {" true false ", "true, false", "The numbers 1 and 0."},
    {" end ", "end", "Ends a block of if, while, for, fn or try."},
    {" @ ", "xarray(@double, [1, 2])\nxarray(@int(2, 3))\nxarray(@double, @[[1.0, 2.0], [3.0, 4.0]])",
     "Quotes what follows for a function of the module: the kind of an array, with or without its extents, or data."},
    {" bool double ", "xarray(@double, [1, 2])\nxarray(@bool, [1, 0])",
     "Kinds of the elements of arrays, after an @. The others are int and int64."},
    {" table ", "[1, 2, \"key\": 3]\nt[\"key\"] = 4", "Values under keys, which are numbers and strings."},
    {" string ", "\"text\"\ns[0], s[1:3]", "Characters in UTF-8, counted from 0."},
    {" code ", "@double(2, 3)", "The kind of a quotation."},
    {" args ", "args[0]", "A table of the words after the name of the script, which are strings."},
    {" _ ", "_", "The value that the prompt showed last."},
    {" help ", "help\nhelp(name)",
     "Explains a function, a method, a word or a command. Without a name it lists the topics."},
    {" why ", "why", "Explains the last error: its arguments, what hvm looked at, and what to do."},
    {" exit quit ", "exit", "Ends hvm."},
};

struct OperatorHelp {
  const char* names;  // with blanks around each
  const char* page;   // behind `docs/functions/`
  const char* entry;  // of the description; empty: none
};

constexpr OperatorHelp operator_table[] = {
    {" + += ", "operator-add", "add"},
    {" - -= ", "operator-subtract", "subtract"},
    {" * *= ", "operator-multiply", "multiply"},
    {" / /= ", "operator-divide", "divide"},
    {" % %= ", "operator-remainder", "remainder"},
    {" < <= > >= ", "operator-less", "less"},
    {" == != ", "operator-equal", "equal"},
    {" [] ", "element-access", ""},
};

/// The row of a table whose names have this one among them; null when there is none.
template <class Row, std::size_t count>
const Row* row_of(const Row (&table)[count], const std::string& name) {
  const std::string wanted = fmt::format(" {} ", name);
  for (const Row& row : table)
    if (std::string_view(row.names).find(wanted) != std::string_view::npos) return &row;
  return nullptr;
}

/// The help of what has no page.
std::string brief_help(std::string_view usage, std::string_view summary, std::size_t width) {
  return indented(usage) + wrapped(std::string(summary), 0, width);
}

std::string help_on_builtin(const Builtin& builtin, std::size_t width) {
  std::string text = brief_help(builtin.usage, builtin.summary, width);
  if (!builtin.options.empty())
    text += "\nOptions, in a table after the other arguments:\n" + indented(builtin.options);
  return text + "\n" + indented(builtin.example);
}

/// Words in lines of at most 78 characters.
std::string in_lines(const std::vector<std::string>& words) {
  constexpr std::size_t widest = 78;
  std::string text;
  std::size_t width = 0;
  for (const std::string& word : words) {
    const bool breaks = width + word.size() + 1 > widest;
    if (breaks) text += '\n';
    width = breaks ? 0 : width;
    text += (width == 0 ? "  " : " ") + word;
    width += word.size() + (width == 0 ? 2 : 1);
  }
  return text + "\n";
}

std::string builtin_list() {
  std::vector<std::string> names;
  for (const std::string_view name : builtin_names()) names.emplace_back(name);
  std::sort(names.begin(), names.end());
  return in_lines(names) + "help(print) explains one of them.\n";
}

std::string module_list(const Interpreter& interpreter) {
  return in_lines(interpreter.module_names()) +
         "These are the functions of the module. help(name) explains one of them.\n";
}

std::string keyword_list() { return in_lines(keyword_names()) + "help(for) explains one of them.\n"; }

std::string command_list() {
  std::string text;
  for (const PromptCommand& command : prompt_commands())
    text += fmt::format("  {:<18} {}\n", command.usage, command.summary);
  return text;
}

std::string variable_names(const Interpreter& interpreter) {
  return interpreter.globals().empty() ? "There are no variables.\n" : in_lines(interpreter.globals());
}

/// The comment right above a fn, without its marks.
std::string comment_above(const SourceText& source, std::size_t fn_line) {
  std::string text;
  for (std::size_t line = fn_line - 1; line > 0; --line) {
    const std::string_view words = trimmed(source.line_text(line));
    if (words.empty() || words.front() != '#') break;
    text = fmt::format("{}\n{}", trimmed(words.substr(1)), text);
  }
  return text;
}

/// The line on which a fn begins; 0 when it cannot be told.
std::size_t line_of(const Function& function) {
  const std::string& text = function.source->text();
  const std::string opening = "fn " + function.name;
  for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at + 1)) {
    const std::size_t behind = text.find_first_not_of(" \t", at + opening.size());
    const bool begins_word = at == 0 || text[at - 1] == '\n' || text[at - 1] == ' ' || text[at - 1] == ';';
    if (begins_word && behind != std::string::npos && text[behind] == '(') return function.source->line(at);
  }
  return 0;
}

std::string library_page(const std::string& name) { return fmt::format("docs/library/{}.md", name); }

std::string help_on_fn(const Function& function, std::size_t width) {
  if (function.source->is_library())
    if (const auto page = read_page(library_page(function.name))) return shown_page(*page, width);
  std::string parameters;
  for (std::size_t i = 0; i < function.parameter_count; ++i) parameters += (i > 0 ? ", " : "") + function.locals[i];
  const std::size_t line = line_of(function);
  const std::string comment = line > 0 ? comment_above(*function.source, line) : "";
  std::string text = fmt::format("  {}({})\n{}", function.name, parameters, comment);
  if (line > 0) text += fmt::format("Defined in {}, line {}.\n", function.source->name(), line);
  return text;
}

/// What the description of a module says of a function or a method, with the examples of its page.
HelpPage described_page(const FunctionEntry& entry) {
  HelpPage page;
  for (const std::string& form : entry.synopsis) page.usage += form + "\n";
  page.summary = entry.summary;
  for (const ArgumentEntry& argument : entry.arguments)
    page.arguments.push_back({argument.name, argument.accepts, argument.default_value.value_or(""), argument.meaning});
  for (const SurpriseEntry& surprise : entry.surprises)
    page.surprises.push_back(fmt::format("Surprise: {} {}", surprise.title, surprise.text));
  page.path = entry.page;
  if (auto read = read_page(entry.page)) {
    page.examples = std::move(read->examples);
    page.path = std::move(read->path);
  }
  return page;
}

/// What is known of a function or a method of the module: by its description, or by its page.
std::optional<std::string> help_by_page(const FunctionEntry* entry, const std::string& page, std::size_t width) {
  if (entry) return shown_page(described_page(*entry), width);
  const auto read = read_page(page);
  return read ? std::optional(shown_page(*read, width)) : std::nullopt;
}

std::optional<std::string> help_on_method(const std::string& name, const HelpSources& sources) {
  const FunctionEntry* entry = sources.description ? sources.description->find_method(name) : nullptr;
  for (const ArrayMethod& method : array_methods) {
    if (name != method.name) continue;
    const auto text = help_by_page(entry, fmt::format("docs/functions/method-{}.md", name), sources.width);
    return text ? *text : brief_help(method.usage, method.summary, sources.width);
  }
  return std::nullopt;
}

std::optional<std::string> help_on_module_function(const std::string& name, const HelpSources& sources) {
  const std::vector<std::string>& names = sources.interpreter.module_names();
  if (std::find(names.begin(), names.end(), name) == names.end()) return std::nullopt;
  const FunctionEntry* entry = sources.description ? sources.description->find(name) : nullptr;
  const auto text = help_by_page(entry, fmt::format("docs/functions/{}.md", name), sources.width);
  return text ? *text : brief_help(name + "(...)", "A function of the module.", sources.width);
}

std::optional<std::string> help_on_word(const std::string& name, std::size_t width) {
  const WordHelp* help = row_of(word_table, name);
  return help ? std::optional(brief_help(help->usage, help->summary, width)) : std::nullopt;
}

std::optional<std::string> help_on_operator(const std::string& name, const HelpSources& sources) {
  const OperatorHelp* help = row_of(operator_table, name);
  if (!help) return std::nullopt;
  const FunctionEntry* entry = sources.description ? sources.description->find_operator(help->entry) : nullptr;
  const auto text = help_by_page(entry, fmt::format("docs/functions/{}.md", help->page), sources.width);
  return text ? *text : brief_help(name, "An operator. docs/language.md describes it.", sources.width);
}

std::optional<std::string> help_on_topic(const std::string& name, const Interpreter& interpreter, std::size_t width) {
  if (name == "functions") return module_list(interpreter);
  if (name == "builtins") return builtin_list();
  if (name == "keywords") return keyword_list();
  if (name == "commands") return command_list();
  if (name == "variables") return variable_names(interpreter);
  for (const PromptCommand& command : prompt_commands())
    if (name == command.name || ":" + name == command.name)
      return brief_help(command.usage, std::string(command.summary) + ".", width);
  return std::nullopt;
}

/// All that help knows but operators.
std::vector<std::string> known_names(const Interpreter& interpreter) {
  std::vector<std::string> names = interpreter.module_names();
  for (const std::string_view name : builtin_names()) names.emplace_back(name);
  for (const auto& function : interpreter.fns()) names.push_back(function->name);
  for (const std::string& name : keyword_names()) names.push_back(name);
  for (const PromptCommand& command : prompt_commands()) names.emplace_back(command.name);
  for (const ArrayMethod& method : array_methods) names.emplace_back(method.name);
  for (const char* topic : {"functions", "builtins", "keywords", "commands", "variables"}) names.emplace_back(topic);
  std::sort(names.begin(), names.end());
  return names;
}

/// What else there is for a name that help does not know.
std::string no_help_on(const std::string& name, const Interpreter& interpreter) {
  constexpr std::size_t shortest_part = 3;
  constexpr std::size_t most_names = 20;
  const std::vector<std::string> known = known_names(interpreter);
  std::vector<std::string> longer;
  for (const std::string& each : known)
    if (name.size() >= shortest_part && each.find(name) != std::string::npos && longer.size() < most_names)
      longer.push_back(each);
  const std::string known_elsewhere = counterpart_of_function(name);
  const std::string instead =
      known_elsewhere.empty() ? suggestion(name, {known.begin(), known.end()}) : known_elsewhere;
  std::string text = fmt::format("There is no help on '{}'{}.\n", briefly(name), instead);
  if (longer.size() > (instead.empty() ? 0 : 1)) text += "These names are similar:\n" + in_lines(longer);
  return text + "help alone lists the topics.\n";
}

}  // namespace

const std::vector<PromptCommand>& prompt_commands() {
  static const std::vector<PromptCommand> commands = {
      {":load", ":load FILE", "runs a script and keeps its variables and functions"},
      {":save", ":save FILE", "writes what ran in the session as a script"},
      {":time", ":time STATEMENT", "runs a statement and shows how long it took"},
      {":vars", ":vars", "lists the variables and what they hold"},
  };
  return commands;
}

std::string help_topics() {
  return fmt::format(
      "Type a statement, or an expression to see its value. `_` is the last value.\n\n"
      "  help(name)         explains a function, a method or a keyword\n"
      "  help(functions)    lists the functions of the module\n"
      "  help(builtins)     lists the functions of the language\n"
      "  help(arrays)       lists the functions that use \"arrays\" loads\n"
      "  help(keywords)     lists the words that begin and end statements\n\n"
      "{0}\n"
      "  Tab                completes names, methods after a point, files in quotes\n"
      "  Up, Ctrl-R         bring back inputs, also of earlier sessions\n"
      "  why                explains the last error\n"
      "  Ctrl-C             ends what runs, or drops what is typed; variables stay\n"
      "  exit, Ctrl-D       ends hvm\n\n"
      "A start in half an hour: {1}docs/tutorial.md\n"
      "The language:            {1}docs/language.md\n"
      "The prompt:              {1}docs/prompt.md\n",
      command_list(), pages_folder());
}

std::string help_on(const std::string& name, const HelpSources& sources) {
  const Interpreter& interpreter = sources.interpreter;
  const std::size_t width = sources.width;
  if (const auto function = interpreter.fn(name)) return help_on_fn(*function, width);
  if (const Builtin* builtin = find_builtin(name)) return help_on_builtin(*builtin, width);
  if (auto text = help_on_module_function(name, sources)) return *text;
  if (auto text = help_on_method(name, sources)) return *text;
  if (auto text = help_on_word(name, width)) return *text;
  if (auto text = help_on_operator(name, sources)) return *text;
  if (auto text = help_on_topic(name, interpreter, width)) return *text;
  if (interpreter.has_global(name)) return fmt::format("{} is a variable. :vars shows what it holds.\n", name);
  const std::string library = library_with(name);
  if (!library.empty()) {
    const auto page = read_page(library_page(name));
    return fmt::format("use \"{}\" loads this function.\n{}", library, page ? shown_page(*page, width) : "");
  }
  const std::vector<std::string> functions = library_functions(name);
  if (!functions.empty())
    return in_lines(functions) +
           fmt::format("use \"{}\" loads these functions. help(name) explains one of them.\n", name);
  return no_help_on(name, interpreter);
}

std::optional<std::string> help_asked(std::string_view input) {
  constexpr std::string_view word = "help";
  input = trimmed(input);
  if (input.substr(0, word.size()) != word) return std::nullopt;
  std::string_view rest = input.substr(word.size());
  const bool is_separate = rest.empty() || rest.front() == '(' || blank_length(rest) > 0;
  if (!is_separate) return std::nullopt;
  rest = trimmed(rest);
  const bool has_brackets = !rest.empty() && rest.front() == '(';
  if (has_brackets) {
    rest.remove_prefix(1);
    if (!rest.empty() && rest.back() == ')') rest.remove_suffix(1);
    rest = trimmed(rest);
  }
  // `help = 3` and `help + 1` are statements of the language.
  constexpr std::string_view operators = "=+-*/%<>![.";
  const bool may_be_statement =
      !has_brackets && !rest.empty() && operators.find(rest.front()) != std::string_view::npos;
  if (may_be_statement && !row_of(operator_table, std::string(rest))) return std::nullopt;
  const bool is_quoted = rest.size() > 1 && rest.front() == '"' && rest.back() == '"';
  if (is_quoted) rest = rest.substr(1, rest.size() - 2);
  if (rest.size() > 1 && rest.front() == '@') rest.remove_prefix(1);
  return std::string(rest);
}

}  // namespace hvm
