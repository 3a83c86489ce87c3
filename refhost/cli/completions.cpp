// cli/completions.cpp: what a word at the prompt may become

#include "cli/completions.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "cli/help.hpp"
#include "cli/names.hpp"
#include "cli/safe_text.hpp"
#include "script/module/array_module.hpp"
#include "script/syntax/lexer.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/printer.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

/// Where the line ends.
struct Ending {
  bool is_in_comment = false;
  std::size_t quote = std::string_view::npos;  // the offset of the quotation mark of an open string
};

Ending ending_of(std::string_view line) {
  Ending ending;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const bool is_in_string = ending.quote != std::string_view::npos;
    if (c == '\n') ending = {};
    if (ending.is_in_comment) continue;
    if (is_in_string && c == '\\') ++i;
    if (c == '"') ending.quote = is_in_string ? std::string_view::npos : i;
    if (c == '#' && !is_in_string) ending.is_in_comment = true;
  }
  return ending;
}

void keep_matches(Completion& completion, const std::set<std::string>& words, std::string_view typed) {
  for (const std::string& word : words)
    if (word.compare(0, typed.size(), typed) == 0) completion.matches.push_back(word);
}

/// Whether a name can be typed as it is, and shown.
bool is_plain(const std::string& name) {
  return name.find_first_of("\t\n\"\\") == std::string::npos && safe_text(name) == name;
}

/// Files that begin as the path that is typed from `begin` on. A folder ends with a slash.
Completion files(std::string_view line, std::size_t begin, const char* shown_after) {
  const std::string typed(line.substr(begin));
  const std::size_t slash = typed.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : typed.substr(0, slash + 1);
  const std::string front = typed.substr(folder.size());
  Completion completion;
  completion.begin = begin + folder.size();
  std::set<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::string name = entry->path().filename().string();
    const bool is_hidden = name.front() == '.' && front.empty();
    if (is_hidden || !is_plain(name)) continue;
    std::error_code no_folder;
    if (entry->is_directory(no_folder)) name += '/';
    names.insert(std::move(name));
  }
  keep_matches(completion, names, front);
  const bool is_file = completion.matches.size() == 1 && completion.matches.front().back() != '/';
  if (is_file) completion.shown_after = shown_after;
  return completion;
}

/// Whether a word stands at the end of `text`, blanks aside.
bool ends_with_word(std::string_view text, std::string_view word) {
  text = trimmed(text);
  if (text.size() < word.size() || text.substr(text.size() - word.size()) != word) return false;
  return text.size() == word.size() || !is_in_name(text[text.size() - word.size() - 1]);
}

/// The name that stands at the end of `text`, unless it belongs to something before it.
std::string last_name(std::string_view text) {
  std::size_t begin = text.size();
  while (begin > 0 && is_in_name(text[begin - 1])) --begin;
  const bool is_alone = begin == 0 || text[begin - 1] != '.';
  return is_alone ? std::string(text.substr(begin)) : std::string();
}

/// The table that a variable of this name holds; null when it holds none.
const HostHash* table_in(const std::string& variable, const Interpreter& interpreter) {
  const Value* value = interpreter.global(variable);
  return value && value->is_table() ? table_of(value->record()) : nullptr;
}

/// The keys of a table, in its brackets.
Completion keys(std::string_view line, std::size_t quote, const HostHash* table) {
  Completion completion;
  completion.begin = quote + 1;
  std::set<std::string> names;
  TableWalk walk(table);
  while (const Entry entry = walk.next()) {
    const Value key = Value::sharing(*entry.key);
    if (key.is_string() && is_plain(std::string(text_of(key.record())))) names.emplace(text_of(key.record()));
  }
  keep_matches(completion, names, line.substr(quote + 1));
  completion.shown_after = "\"]";
  return completion;
}

Completion quoted(std::string_view line, std::size_t quote, const Interpreter& interpreter) {
  if (quote > 0 && line[quote - 1] == '[')
    if (const HostHash* table = table_in(last_name(line.substr(0, quote - 1)), interpreter))
      return keys(line, quote, table);
  Completion completion = files(line, quote + 1, "\"");
  if (!ends_with_word(line.substr(0, quote), "use")) return completion;
  Completion libraries;
  libraries.begin = quote + 1;
  keep_matches(libraries, {"arrays"}, line.substr(quote + 1));
  if (libraries.matches.empty() || completion.begin != libraries.begin) return completion;
  completion.matches.insert(completion.matches.end(), libraries.matches.begin(), libraries.matches.end());
  std::sort(completion.matches.begin(), completion.matches.end());
  if (completion.matches.size() == 1) completion.shown_after = "\"";
  return completion;
}

Completion commands(std::string_view line, std::size_t begin) {
  Completion completion;
  completion.begin = begin;
  std::set<std::string> names;
  for (const PromptCommand& command : prompt_commands()) names.insert(command.name);
  keep_matches(completion, names, line.substr(begin));
  completion.shown_after = " ";
  return completion;
}

/// What a value without methods offers instead.
std::string notice_of(const std::string& variable, const Value& value) {
  constexpr int most_keys = 8;
  constexpr std::size_t longest_key = 30;
  if (!value.is_table()) return fmt::format("{} is {}, which has no methods", variable, kind_in_words(value));
  std::string entries;
  TableWalk walk(table_of(value.record()));
  for (int i = 0; const Entry entry = walk.next(); ++i) {
    if (i == most_keys) {
      entries += ", ...";
      break;
    }
    const std::string key = Printer(Detail::brief, {}).shortened_text(key_value(*entry.key), longest_key);
    entries += fmt::format("{}{}[{}]", i > 0 ? ", " : "", variable, key);
  }
  return fmt::format("{} is a table, which has no methods; {}", variable,
                     entries.empty() ? "it is empty" : "it has " + entries);
}

Completion methods(std::string_view line, std::size_t begin, const Interpreter& interpreter) {
  Completion completion;
  completion.begin = begin;
  const std::string variable = last_name(line.substr(0, begin - 1));
  const Value* value = interpreter.global(variable);
  if (value && !value->is_object()) {
    completion.notice = notice_of(variable, *value);
    return completion;
  }
  std::set<std::string> names;
  for (const ArrayMethod& method : array_methods) names.insert(method.name);
  keep_matches(completion, names, line.substr(begin));
  completion.shown_after = "(";
  return completion;
}

Completion names(std::string_view line, std::size_t begin, const Interpreter& interpreter) {
  std::set<std::string> functions;
  for (const std::string_view name : builtin_names()) functions.emplace(name);
  functions.insert(interpreter.module_names().begin(), interpreter.module_names().end());
  for (const auto& function : interpreter.fns()) {
    // Names that begin with that of their library are its own.
    const bool is_inner = function->source->is_library() &&
                          function->name.rfind(fs::path(function->source->name()).stem().string() + "_", 0) == 0;
    if (!is_inner) functions.insert(function->name);
  }
  std::set<std::string> words = functions;
  for (const std::string& name : interpreter.globals()) words.insert(name);
  for (const std::string& name : keyword_names()) words.insert(name);
  for (const char* word : {"exit", "help", "quit", "why"}) words.insert(word);
  Completion completion;
  completion.begin = begin;
  keep_matches(completion, words, line.substr(begin));
  const std::string_view before = trimmed(line.substr(0, begin));
  const bool asks_help = before == "help" || before == "help(";
  const bool is_function = completion.matches.size() == 1 && functions.count(completion.matches.front()) != 0 &&
                           !interpreter.has_global(completion.matches.front());
  if (is_function && !asks_help) completion.shown_after = "(";
  if (completion.matches.size() == 1 && before == "help(") completion.shown_after = ")";
  return completion;
}

}  // namespace

Completion completion_of(std::string_view line, const Interpreter& interpreter) {
  const std::size_t last_line = line.rfind('\n') + 1;  // npos + 1 is 0
  const std::size_t first = std::min(line.find_first_not_of(" \t", last_line), line.size());
  const std::string_view word = line.substr(first, line.find_first_of(" \t", first) - first);
  const std::size_t behind = first + word.size();
  if (word == ":load" || word == ":save") {
    const std::size_t begin = std::min(line.find_first_not_of(" \t", behind), line.size());
    const bool is_quoted = begin < line.size() && line[begin] == '"';
    if (begin > behind) return is_quoted ? files(line, begin + 1, "\"") : files(line, begin, "");
  }
  if (!word.empty() && word.front() == ':' && behind == line.size()) return commands(line, first);
  const Ending ending = ending_of(line);
  if (ending.is_in_comment) return {};
  if (ending.quote != std::string_view::npos) return quoted(line, ending.quote, interpreter);
  std::size_t begin = line.size();
  while (begin > 0 && is_in_name(line[begin - 1])) --begin;
  const bool is_number = begin < line.size() && line[begin] >= '0' && line[begin] <= '9';
  if (is_number) return {};
  const bool is_behind_point = begin > 1 && line[begin - 1] == '.' &&
                               (is_in_name(line[begin - 2]) || line[begin - 2] == ')' || line[begin - 2] == ']');
  return is_behind_point ? methods(line, begin, interpreter) : names(line, begin, interpreter);
}

}  // namespace hvm
