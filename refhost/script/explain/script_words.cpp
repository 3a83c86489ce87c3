// script/explain/script_words.cpp: the words of a script, as warnings repeat them

#include "script/explain/script_words.hpp"

#include <algorithm>

namespace hvm {
namespace {

constexpr std::size_t longest = 32;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// Walks the text of an expression and knows whether a character is in a string, and in how many brackets.
class BracketWalk {
 public:
  explicit BracketWalk(std::string_view text) : text_(text) {}

  /// Goes on to the next character that is in no string and in no comment; false at the end.
  bool next() {
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      if (is_escaped_) {
        is_escaped_ = false;
      } else if (is_in_string_) {
        is_escaped_ = c == '\\';
        is_in_string_ = c != '"';
      } else if (is_in_comment_) {
        is_in_comment_ = c != '\n';
      } else if (c == '"') {
        is_in_string_ = true;
      } else if (c == '#') {
        is_in_comment_ = true;
      } else {
        if (c == ')' || c == ']') --depth_;
        if (c == '(' || c == '[') ++depth_;
        return depth_ >= 0;
      }
    }
    return false;
  }
  char character() const { return text_[at_ - 1]; }
  std::size_t offset() const { return at_ - 1; }
  int depth() const { return depth_; }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
  bool is_in_string_ = false;
  bool is_in_comment_ = false;
  bool is_escaped_ = false;
};

/// Whether every bracket has its other one. The span of an expression in parentheses may lack one.
bool is_balanced(std::string_view text) {
  BracketWalk walk(text);
  while (walk.next()) continue;
  return walk.depth() == 0;
}

bool is_short(std::string_view text) {
  return !text.empty() && text.size() <= longest && text.find_first_of("\n\r#") == std::string_view::npos;
}

bool has_operators(const Expression& expression) {
  const auto& form = expression.form;
  return std::holds_alternative<Chain>(form) || std::holds_alternative<Logic>(form) ||
         std::holds_alternative<Negation>(form) || std::holds_alternative<Not>(form);
}

}  // namespace

std::vector<std::string_view> argument_texts(std::string_view call) {
  std::vector<std::string_view> texts;
  const std::size_t opening = call.find('(');
  if (opening == std::string_view::npos || call.empty() || call.back() != ')') return texts;
  const std::string_view inner = call.substr(opening + 1, call.size() - opening - 2);
  std::size_t begin = 0;
  BracketWalk walk(inner);
  while (walk.next()) {
    if (walk.character() != ',' || walk.depth() > 0) continue;
    texts.push_back(trimmed(inner.substr(begin, walk.offset() - begin)));
    begin = walk.offset() + 1;
  }
  const std::string_view last = trimmed(inner.substr(begin));
  if (!last.empty() || !texts.empty()) texts.push_back(last);
  return texts;
}

bool is_name(std::string_view text) {
  const auto belongs = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  };
  return !text.empty() && !(text[0] >= '0' && text[0] <= '9') && std::all_of(text.begin(), text.end(), belongs);
}

std::string short_text(std::string_view text, std::string_view otherwise) {
  return std::string(is_short(text) && is_balanced(text) ? text : otherwise);
}

std::string operand_text(const Expression& expression, const SourceText& source) {
  if (const auto* chain = std::get_if<Chain>(&expression.form)) {
    const std::string text = chain_text(*chain, nullptr, source);
    return text.empty() ? text : '(' + text + ')';
  }
  const std::string_view text = source.text(expression.span);
  if (!is_short(text) || !is_balanced(text)) return {};
  return has_operators(expression) ? '(' + std::string(text) + ')' : std::string(text);
}

std::string chain_text(const Chain& chain, const Link* link, const SourceText& source) {
  std::string text = operand_text(*chain.first, source);
  for (const Link& part : chain.links) {
    if (&part == link || text.empty()) break;
    const std::string operand = operand_text(*part.operand, source);
    text = operand.empty() ? "" : text + ' ' + spelling(part.op) + ' ' + operand;
    if (text.size() > longest) return {};
  }
  return text;
}

}  // namespace hvm
