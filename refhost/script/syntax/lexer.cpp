// script/syntax/lexer.cpp: the tokens of a script

#include "script/syntax/lexer.hpp"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <limits>

#include "script/syntax/diagnostics.hpp"
#include "script/syntax/foreign_words.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

struct Spelling {
  std::string_view text;
  TokenKind kind;
};

constexpr std::array<Spelling, 22> keywords{{{"and", TokenKind::kw_and},       {"break", TokenKind::kw_break},
                                             {"catch", TokenKind::kw_catch},   {"continue", TokenKind::kw_continue},
                                             {"do", TokenKind::kw_do},         {"else", TokenKind::kw_else},
                                             {"elseif", TokenKind::kw_elseif}, {"end", TokenKind::kw_end},
                                             {"false", TokenKind::kw_false},   {"fn", TokenKind::kw_fn},
                                             {"for", TokenKind::kw_for},       {"if", TokenKind::kw_if},
                                             {"in", TokenKind::kw_in},         {"nil", TokenKind::kw_nil},
                                             {"not", TokenKind::kw_not},       {"or", TokenKind::kw_or},
                                             {"return", TokenKind::kw_return}, {"then", TokenKind::kw_then},
                                             {"true", TokenKind::kw_true},     {"try", TokenKind::kw_try},
                                             {"use", TokenKind::kw_use},       {"while", TokenKind::kw_while}}};

// The first match counts, so operators of two characters come before those of one.
constexpr std::array<Spelling, 26> operators{{{"==", TokenKind::equal},
                                              {"!=", TokenKind::not_equal},
                                              {"<=", TokenKind::less_equal},
                                              {">=", TokenKind::greater_equal},
                                              {"+=", TokenKind::plus_assign},
                                              {"-=", TokenKind::minus_assign},
                                              {"*=", TokenKind::star_assign},
                                              {"/=", TokenKind::slash_assign},
                                              {"%=", TokenKind::percent_assign},
                                              {"(", TokenKind::left_paren},
                                              {")", TokenKind::right_paren},
                                              {"[", TokenKind::left_bracket},
                                              {"]", TokenKind::right_bracket},
                                              {",", TokenKind::comma},
                                              {":", TokenKind::colon},
                                              {".", TokenKind::dot},
                                              {"@", TokenKind::at},
                                              {"$", TokenKind::dollar},
                                              {"+", TokenKind::plus},
                                              {"-", TokenKind::minus},
                                              {"*", TokenKind::star},
                                              {"/", TokenKind::slash},
                                              {"%", TokenKind::percent},
                                              {"<", TokenKind::less},
                                              {">", TokenKind::greater},
                                              {"=", TokenKind::assign}}};

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool begins_name(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool continues_name(char c) { return begins_name(c) || is_digit(c); }

class Lexer {
 public:
  explicit Lexer(SourcePtr source) : source_(std::move(source)), text_(source_->text()) {}

  TokenList words() {
    require_utf8();
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") at_ = 3;
    while (at_ < text_.size()) next();
    add(TokenKind::end_of_source, at_);
    return std::move(list_);
  }

 private:
  void next() {
    const char c = text_[at_];
    if (c == ' ' || c == '\t' || c == '\r') return void(++at_);
    if (c == '\n') return newline();
    if (c == '#') return comment();
    if (is_digit(c)) return number();
    if (c == '"') return string(at_);
    if (c == 'w' && peek(1) == '"') return wide_string();
    if (begins_name(c)) return name();
    symbol();
  }

  char peek(std::size_t ahead) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }

  Token& add(TokenKind kind, std::size_t begin) {
    Token& token = list_.tokens.emplace_back();
    token.kind = kind;
    token.span = {begin, at_};
    return token;
  }

  [[noreturn]] void fail(std::string message, std::size_t begin, std::size_t end) const {
    throw ScriptError(std::move(message), source_, {begin, end});
  }

  void require_utf8() const {
    const std::size_t bad = first_invalid_utf8(text_);
    if (bad == std::string::npos) return;
    fail(fmt::format("the source is not valid UTF-8: byte 0x{:02X} at offset {}",
                     static_cast<unsigned char>(text_[bad]), bad),
         bad, bad + 1);
  }

  void newline() {
    const std::size_t begin = at_++;
    line_begins_ = at_;
    if (open_brackets_ == 0) add(TokenKind::newline, begin);
  }

  void comment() {
    const std::size_t begin = at_;
    at_ = std::min(text_.find('\n', at_), text_.size());
    const bool is_alone = text_.find_first_not_of(" \t", line_begins_) == begin;
    list_.comments.push_back({{begin, at_}, is_alone});
  }

  void name() {
    const std::size_t begin = at_;
    while (continues_name(peek(0))) ++at_;
    const std::string_view text = text_.substr(begin, at_ - begin);
    for (const Spelling& keyword : keywords)
      if (keyword.text == text) return void(add(keyword.kind, begin));
    add(TokenKind::name, begin).text = text;
  }

  void number() {
    const std::size_t begin = at_;
    skip_digits();
    const bool has_fraction = peek(0) == '.' && is_digit(peek(1));
    if (has_fraction) ++at_, skip_digits();
    const bool has_exponent = skip_exponent();
    if (has_fraction || has_exponent) return real(begin);
    integer(begin);
  }

  void skip_digits() {
    while (is_digit(peek(0))) ++at_;
  }

  bool skip_exponent() {
    if (peek(0) != 'e' && peek(0) != 'E') return false;
    const std::size_t sign = peek(1) == '+' || peek(1) == '-' ? 1 : 0;
    if (!is_digit(peek(1 + sign))) return false;
    at_ += 1 + sign;
    skip_digits();
    return true;
  }

  void real(std::size_t begin) {
    refuse_trailing_letters(begin);
    double value = 0;
    if (std::from_chars(text_.data() + begin, text_.data() + at_, value).ec != std::errc{})
      fail("the real number is beyond the range of 64-bit floats", begin, at_);
    add(TokenKind::real, begin).real = value;
  }

  void integer(std::size_t begin) {
    const std::size_t end = at_;
    const bool is_wide = peek(0) == 'L';
    if (is_wide) ++at_;
    refuse_trailing_letters(begin);
    if (peek(0) == '.' && !begins_name(peek(1)))
      fail("a real number needs a digit on both sides of its point", begin, at_ + 1);
    std::uint64_t value = 0;
    const std::uint64_t limit = std::uint64_t{1} << 63;
    const auto read = std::from_chars(text_.data() + begin, text_.data() + end, value);
    if (read.ec != std::errc{} || value > limit) fail("the integer does not fit in 64 bits", begin, at_);
    add(is_wide ? TokenKind::integer64 : TokenKind::integer, begin).magnitude = value;
  }

  void refuse_trailing_letters(std::size_t begin) {
    if (!continues_name(peek(0))) return;
    while (continues_name(peek(0))) ++at_;
    fail(fmt::format("'{}' is neither a number nor a name", text_.substr(begin, at_ - begin)), begin, at_);
  }

  void string(std::size_t begin) {
    std::string text = read_string(*source_, source_, at_);
    add(TokenKind::string, begin).text = std::move(text);
  }

  void wide_string() {
    const std::size_t begin = at_++;
    std::u16string text = wide_text(read_string(*source_, source_, at_));
    add(TokenKind::wide_string, begin).wide = std::move(text);
  }

  void symbol() {
    const std::size_t begin = at_;
    if (text_[at_] == '.' && is_digit(peek(1)))
      fail("a real number needs a digit on both sides of its point", begin, begin + 1);
    if (text_[at_] == ';') return ++at_, void(add(TokenKind::semicolon, begin));
    for (const Spelling& op : operators) {
      if (text_.substr(at_, op.text.size()) != op.text) continue;
      at_ += op.text.size();
      count_bracket(op.kind);
      return void(add(op.kind, begin));
    }
    unknown_character();
  }

  void count_bracket(TokenKind kind) {
    if (kind == TokenKind::left_paren || kind == TokenKind::left_bracket) ++open_brackets_;
    const bool closes = kind == TokenKind::right_paren || kind == TokenKind::right_bracket;
    if (closes && open_brackets_ > 0) --open_brackets_;
  }

  [[noreturn]] void unknown_character() const {
    const auto c = static_cast<unsigned char>(text_[at_]);
    if (const std::string_view sign = foreign_sign(text_.substr(at_)); !sign.empty())
      fail(fmt::format("unexpected {} '{}'; {}", character_count(sign) == 1 ? "character" : "characters", sign,
                       foreign_advice(ForeignPlace::character, sign)),
           at_, at_ + sign.size());
    if (c < 0x20 || c == 0x7F) fail(fmt::format("unexpected control character 0x{:02X}", c), at_, at_ + 1);
    std::size_t end = at_ + 1;
    while (end < text_.size() && (static_cast<unsigned char>(text_[end]) & 0xC0) == 0x80) ++end;
    fail(fmt::format("unexpected character '{}'{}", text_.substr(at_, end - at_),
                     c < 0x80 ? "" : "; names have letters from a to z, digits and '_'"),
         at_, end);
  }

  SourcePtr source_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_begins_ = 0;
  std::size_t open_brackets_ = 0;
  TokenList list_;
};

}  // namespace

TokenList lex(const SourcePtr& source) { return Lexer(source).words(); }

std::vector<std::string> keyword_names() {
  std::vector<std::string> names;
  for (const Spelling& word : keywords) names.emplace_back(word.text);
  return names;
}

const char* described(TokenKind kind) {
  switch (kind) {
    case TokenKind::end_of_source:
      return "the end of the script";
    case TokenKind::newline:
      return "the end of the line";
    case TokenKind::semicolon:
      return "';'";
    case TokenKind::name:
      return "a name";
    case TokenKind::integer:
    case TokenKind::integer64:
    case TokenKind::real:
      return "a number";
    case TokenKind::string:
    case TokenKind::wide_string:
      return "a string";
    default:
      break;
  }
  static const auto texts = [] {
    std::array<std::string, static_cast<std::size_t>(TokenKind::percent_assign) + 1> quoted;
    for (const Spelling& word : keywords) quoted[static_cast<std::size_t>(word.kind)] = fmt::format("'{}'", word.text);
    for (const Spelling& word : operators) quoted[static_cast<std::size_t>(word.kind)] = fmt::format("'{}'", word.text);
    return quoted;
  }();
  return texts[static_cast<std::size_t>(kind)].c_str();
}

}  // namespace hvm
