// script/data/json_values.cpp: JSON as values

#include "script/data/json_values.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "script/data/data_error.hpp"
#include "script/data/json_limits.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/integer_value.hpp"

namespace hvm {
namespace {

/// `cause` with the place of the character at `offset`.
[[noreturn]] void fail_at(std::string_view text, std::size_t offset, std::string_view cause) {
  const std::string_view before = text.substr(0, offset);
  const std::size_t line_start = before.rfind('\n') + 1;  // npos + 1 is 0
  throw DataError(fmt::format("line {}, column {}: {}", std::count(before.begin(), before.end(), '\n') + 1,
                              character_count(before.substr(line_start)) + 1, cause));
}

/// What the library says, without its own words for the place in front and the text that it read last behind.
std::string_view cause_in(std::string_view message) {
  if (message.find("number overflow") != std::string_view::npos)
    return "the number is beyond the range of 64-bit floating-point numbers";
  message = message.substr(0, message.find("; last read: "));
  // `[json.exception.parse_error.101] parse error at line 1, column 3: syntax error while parsing value - cause`
  for (const std::string_view behind : {": ", " - "}) {
    const std::size_t end = message.find(behind);
    if (end != std::string_view::npos) message.remove_prefix(end + behind.size());
  }
  return message;
}

/// Takes the events of the library's parser and makes values of them.
class ValueBuilder : public nlohmann::json_sax<nlohmann::json> {
 public:
  ValueBuilder(std::string_view text, const char* const& at) : text_(text), at_(at) {}

  Value take() { return std::move(result_); }

  bool null() override { return add(Value()); }
  bool boolean(bool x) override { return add(Value(x ? 1 : 0)); }
  bool number_integer(number_integer_t x) override { return add(integer_value(x)); }
  bool number_unsigned(number_unsigned_t x) override {
    return add(x <= INT64_MAX ? integer_value(static_cast<std::int64_t>(x)) : Value(static_cast<double>(x)));
  }
  bool number_float(number_float_t x, const string_t&) override { return add(Value(x)); }
  bool string(string_t& text) override { return add(Value(text)); }
  bool binary(binary_t&) override { return false; }  // there is none in text

  bool start_object(std::size_t) override { return open(false); }
  bool start_array(std::size_t) override { return open(true); }
  bool key(string_t& key) override {
    open_.back().key = std::move(key);
    return true;
  }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) override {
    // The library counts the character that it stopped at.
    fail_at(text_, std::min(position > 0 ? position - 1 : 0, text_.size()), cause_in(error.what()));
  }

 private:
  struct Open {
    HostHash* table;  // the value that holds it lives as long as `result_`
    bool is_list;
    std::string key = {};
  };

  bool add(const Value& value) {
    if (open_.empty())
      result_ = value;
    else if (open_.back().is_list)
      append_entry(open_.back().table, value.record());
    else
      set_entry(open_.back().table, open_.back().key, value.record());
    return true;
  }

  bool open(bool is_list) {
    if (open_.size() >= deepest_json)
      fail_at(text_, static_cast<std::size_t>(at_ - text_.data()) - 1,
              fmt::format("the text nests deeper than {} levels", deepest_json));
    const Value table = Value::table();
    add(table);
    open_.push_back({table_of(table.record()), is_list});
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  std::string_view text_;
  const char* const& at_;  // how far the library has read
  Value result_;
  std::vector<Open> open_;
};

/// Reads the characters of a text for the library, and shows to others how far it is.
class Cursor {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  explicit Cursor(const char*& at) : at_(&at) {}
  reference operator*() const { return **at_; }
  Cursor& operator++() {
    ++*at_;
    return *this;
  }
  bool operator==(const Cursor& other) const { return *at_ == *other.at_; }
  bool operator!=(const Cursor& other) const { return !(*this == other); }

 private:
  const char** at_;
};

}  // namespace

Value json_value(std::string_view text) {
  // To the library a zero byte is the end of the text.
  const std::size_t zero = text.find('\0');
  if (zero != std::string_view::npos) fail_at(text, zero, "a byte is 0");
  const char* at = text.data();
  const char* end = text.data() + text.size();
  ValueBuilder builder(text, at);
  nlohmann::json::sax_parse(Cursor(at), Cursor(end), &builder);
  return builder.take();
}

}  // namespace hvm
