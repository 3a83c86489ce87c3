// script/explain/described_call.cpp: a call of the module beside its entry in the description

#include "script/explain/described_call.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <string_view>

#include "script/module/array_module.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

constexpr std::size_t most_shown_elements = 6;
constexpr std::size_t most_shown_characters = 40;

constexpr std::string_view array_end = " array";

bool ends_with(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool contains(const std::vector<std::string>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool is_number_kind(std::string_view kind) { return kind == "int" || kind == "int64" || kind == "real"; }

/// Whether a value of `kind` is meant by `name`, which may name several kinds.
bool is_meant(const std::string& kind, const std::string& name) {
  const bool is_array = ends_with(kind, array_end);
  if (kind == name || name == "any") return true;
  if (name == "number") return is_number_kind(kind);
  if (name == "array") return is_array;
  if (name == "array of numbers") return is_array && kind != "bool array";
  if (name == "object") return is_array || kind == "object";
  if (name == "quotation") return kind == "quoted call" || kind == "data literal";
  return false;
}

bool is_word_character(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// `text` in which `replace` gives another word for each name that stands alone; no value keeps the name.
template <class Replace>
std::string with_names_replaced(std::string_view text, Replace replace) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    if (!is_word_character(text[at])) {
      out += text[at++];
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && is_word_character(text[end])) ++end;
    const std::string word(text.substr(at, end - at));
    const bool is_alone = (at == 0 || (text[at - 1] != '.' && text[at - 1] != '@' && text[at - 1] != '"')) &&
                          (end == text.size() || text[end] != '(');
    const auto other = is_alone ? replace(word) : std::nullopt;
    out += other ? *other : word;
    at = end;
  }
  return out;
}

/// `text` without its backticks, and what `change` makes of each piece of code between two of them.
template <class Change>
std::string with_code_changed(std::string_view text, Change change) {
  std::string out;
  bool is_code = false;
  while (true) {
    const std::size_t mark = text.find('`');
    const std::string_view piece = text.substr(0, mark);
    out += is_code ? change(piece) : std::string(piece);
    if (mark == std::string_view::npos) return out;
    text.remove_prefix(mark + 1);
    is_code = !is_code;
  }
}

/// The first characters of a string in quotation marks. The rest of a long one is not touched.
std::string quoted(const Value& value) {
  if (value.tag() == ValueTag::wide_string) {
    const std::u16string_view whole = wide_text_of(value.record());
    const std::size_t end = character_offset(whole, most_shown_characters);
    const Value front(whole.substr(0, end));
    return fmt::format("\"{}{}\"", printed(front.record()), end < whole.size() ? "..." : "");
  }
  const std::string_view whole = text_of(value.record());
  const std::size_t end = character_offset(whole, most_shown_characters);
  return fmt::format("\"{}{}\"", whole.substr(0, end), end < whole.size() ? "..." : "");
}

/// The position after `position`, the last index moving fastest.
void advance(const Extents& extents, Extents& position) {
  for (std::size_t axis = extents.size(); axis-- > 0;) {
    if (++position[axis] < extents[axis]) return;
    position[axis] = 0;
  }
}

std::string first_elements(const ModuleCaller& caller, Value& object, const Extents& extents) {
  std::vector<std::string> elements;
  Extents position(extents.size(), 0);
  const std::int64_t count = element_count(extents);
  const auto shown = std::min<std::int64_t>(count, most_shown_elements);
  for (std::int64_t i = 0; i < shown; ++i, advance(extents, position)) {
    const auto text = element_text(caller, object, position);
    if (!text) return {};
    elements.push_back(*text);
  }
  return fmt::format("{}{}", fmt::join(elements, ", "), shown < count ? ", ..." : "");
}

/// The names between the brackets of the form in the synopsis that has this many arguments; empty when none has.
std::vector<std::string> names_in_form(const FunctionEntry& entry, std::size_t count) {
  for (const std::string& form : entry.synopsis) {
    const std::size_t open = form.find('(');
    const std::size_t close = form.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close <= open) continue;
    std::vector<std::string> names{""};
    for (const char c : form.substr(open + 1, close - open - 1)) {
      if (c == ',') names.emplace_back();
      if (c != ',' && c != ' ') names.back() += c;
    }
    if (names.size() == count) return names;
  }
  return {};
}

}  // namespace

DescribedCall::DescribedCall(const Description& description, const FunctionEntry& entry, const MadeCall& made,
                             bool may_ask)
    : description_(description), entry_(entry), made_(made), may_ask_(may_ask) {
  const std::vector<std::string> names = names_in_form(entry, count());
  for (std::size_t i = 0; i < count(); ++i) {
    const std::string name = i < names.size() ? names[i] : std::string();
    const auto named = std::find_if(entry.arguments.begin(), entry.arguments.end(),
                                    [&](const ArgumentEntry& argument) { return argument.name == name; });
    const bool is_named = named != entry.arguments.end();
    places_.push_back(is_named ? static_cast<std::size_t>(named - entry.arguments.begin()) : i);
  }
}

const ArgumentEntry* DescribedCall::argument(std::size_t i) const {
  const std::size_t place = i < places_.size() ? places_[i] : i;
  if (place < entry_.arguments.size()) return &entry_.arguments[place];
  const bool repeats = !entry_.arguments.empty() && entry_.arguments.back().repeats;
  return repeats ? &entry_.arguments.back() : nullptr;
}

std::optional<std::size_t> DescribedCall::position_of(const std::string& name) const {
  for (std::size_t i = 0; i < std::max(count(), entry_.arguments.size()); ++i)
    if (const ArgumentEntry* known = argument(i); known && known->name == name) return i;
  return std::nullopt;
}

std::vector<std::size_t> DescribedCall::positions(const std::string& name) const {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < count(); ++i)
    if (const ArgumentEntry* known = argument(i); known && known->name == name) found.push_back(i);
  return found;
}

std::vector<std::size_t> DescribedCall::positions(const Condition& condition) const {
  std::vector<std::size_t> found;
  const auto most = entry_.most_arguments.value_or(static_cast<std::int64_t>(count()));
  if (condition.is_of_any)
    for (std::size_t i = 0; i < count() && static_cast<std::int64_t>(i) < most; ++i) found.push_back(i);
  for (const std::string& name : condition.of)
    for (const std::size_t i : positions(name)) found.push_back(i);
  return found;
}

std::string DescribedCall::kind(std::size_t i) const {
  const Quotation* quoted = quotation(i);
  if (!quoted) return kind_of(value(i));
  if (quoted->form == Quotation::Form::data) return "data literal";
  return quoted->has_arguments ? "quoted call" : "quotation";
}

std::string DescribedCall::kind_of(const Value& value) const {
  if (value.tag() == ValueTag::code) return "quotation";
  if (!value.is_object()) return kind_name(value);
  const std::string type = type_name_of(object_of(value.record()));
  const auto known = std::find_if(description_.kinds.begin(), description_.kinds.end(),
                                  [&](const KindEntry& entry) { return !type.empty() && entry.type == type; });
  return known == description_.kinds.end() ? "object" : known->name;
}

bool DescribedCall::is_one_of(std::size_t i, const std::vector<std::string>& kinds) const {
  const std::string own = kind(i);
  return std::any_of(kinds.begin(), kinds.end(), [&](const std::string& name) { return is_meant(own, name); });
}

const Extents* DescribedCall::shape(std::size_t i) {
  auto known = shapes_.find(i);
  if (known == shapes_.end()) {
    const bool has_shape = may_ask_ && value(i).is_object();
    known = shapes_.emplace(i, has_shape ? shape_of(made_.caller, value(i)) : std::nullopt).first;
  }
  return known->second ? &*known->second : nullptr;
}

std::string DescribedCall::type_in_words(const Value& value, const Extents* extents) const {
  std::string name = kind_of(value);
  if (ends_with(name, array_end)) name.resize(name.size() - array_end.size());
  if (name == "object") name = kind_name(value);
  return extents ? fmt::format("{} {}", name, in_parentheses(*extents)) : name;
}

std::string DescribedCall::shown(std::size_t i) {
  const Value& shown = value(i);
  if (shown.is_object()) return type_in_words(shown, shape(i));
  return shown.tag() == ValueTag::code ? with_article(kind(i)) : kind_in_words(shown);
}

std::string DescribedCall::at_length(Value& value, const Extents* extents) const {
  if (value.is_string()) return fmt::format("the string {}", quoted(value));
  if (value.is_number()) return fmt::format("the {} {}", kind_name(value), number_text(value));
  if (value.is_table()) {
    const auto entries = static_cast<std::size_t>(entry_count(table_of(value.record())));
    return fmt::format("a table of {}", counted(entries, "entry", "entries"));
  }
  if (value.tag() == ValueTag::code) return "a quotation";
  if (!value.is_object()) return kind_in_words(value);
  std::string type = type_in_words(value, extents);
  if (!extents) return type;
  try {
    ArrayChecks(true).extents(made_.caller, value);
    const std::string elements = first_elements(made_.caller, value, *extents);
    return elements.empty() ? type : fmt::format("{}: {}", type, elements);
  } catch (const Failure&) {
    return type;
  }
}

std::string DescribedCall::shown_at_length(std::size_t i) { return at_length(value(i), shape(i)); }

std::string DescribedCall::self_at_length() {
  const auto extents = may_ask_ ? shape_of(made_.caller, *made_.self) : std::nullopt;
  return at_length(*made_.self, extents ? &*extents : nullptr);
}

std::string DescribedCall::numbered(std::size_t i) { return fmt::format("argument {}", i + 1); }

std::string DescribedCall::with_numbers(const std::string& text) const {
  return with_code_changed(text, [&](std::string_view code) {
    const auto at = position_of(std::string(code));
    return at ? numbered(*at) : std::string(code);
  });
}

std::string DescribedCall::with_names(const std::string& text) const {
  return with_code_changed(text, [&](std::string_view code) {
    return with_names_replaced(code, [&](const std::string& word) -> std::optional<std::string> {
      const auto at = position_of(word);
      std::string name = at && *at < made_.names.size() ? made_.names[*at] : "";
      if (entry_.receiver && word == entry_.receiver->name) name = made_.self_name;
      return name.empty() ? std::nullopt : std::optional(name);
    });
  });
}

std::string DescribedCall::usage() const { return alternatives(entry_.synopsis); }

std::string alternatives(const std::vector<std::string>& words) {
  if (words.size() < 2) return words.empty() ? std::string() : words.front();
  return fmt::format("{} or {}", fmt::join(words.begin(), words.end() - 1, ", "), words.back());
}

std::string kinds_in_words(const std::vector<std::string>& kinds) {
  const bool has_any_number =
      contains(kinds, "number") || (contains(kinds, "int") && contains(kinds, "int64") && contains(kinds, "real"));
  if (kinds.empty() || contains(kinds, "any")) return "a value";
  std::vector<std::string> words;
  if (has_any_number) words.emplace_back("a number");
  std::vector<std::string> elements;
  for (const std::string& kind : kinds) {
    if (is_number_kind(kind) || kind == "number") {
      if (!has_any_number) words.push_back(with_article(kind));
    } else if (kind == "array of numbers") {
      elements = {"ints", "int64s", "doubles"};
    } else if (kind != "array" && ends_with(kind, array_end)) {
      elements.push_back(kind.substr(0, kind.size() - array_end.size()) + "s");
    } else {
      words.push_back(kind == "nil" ? kind : with_article(kind));
    }
  }
  if (!elements.empty()) words.push_back("an array of " + alternatives(elements));
  return alternatives(words);
}

std::string dimensions_in_words(const ArgumentEntry& argument) {
  const auto least = argument.least_dimensions;
  const auto most = argument.most_dimensions;
  if (argument.is_square) return "a square matrix";
  if (!least && !most) return {};
  if (least == most) {
    if (*least == 1) return "a vector";
    if (*least == 2) return "a matrix";
    return fmt::format("an array of {} dimensions", *least);
  }
  if (!most) return fmt::format("an array of {} or more dimensions", *least);
  if (least.value_or(0) == 0) return fmt::format("an array of {} or fewer dimensions", *most);
  return fmt::format("an array of {} {} {} dimensions", *least, *most == *least + 1 ? "or" : "to", *most);
}

}  // namespace hvm
