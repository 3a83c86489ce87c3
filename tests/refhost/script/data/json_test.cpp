// refhost/script/data/json_test.cpp: JSON as values, and values as JSON

#include "folder.hpp"
#include "script/data/json_limits.hpp"

namespace hvm::testing {
namespace {

/// `text` as a literal of the language.
std::string literal(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    if (c == '\n')
      out += "\\n";
    else if (c == '\0')
      out += "\\0";
    else if (c == '\xFF')
      out += "\\xff";
    else
      out += c;
  }
  return out + "\"";
}

std::string parsed(const std::string& json) {
  const Counts before = counts();
  const std::string output = output_of("x = parse_json(" + literal(json) + "); print(type(x), x)");
  EXPECT_TRUE(counts() == before) << "left behind by: " << json;
  return output;
}

TEST(ParseJson, GivesTablesNumbersStringsAndNil) {
  const std::pair<const char*, const char*> rows[] = {
      {"null", "nil nil"},
      {"true", "int 1"},
      {"false", "int 0"},
      {"-7", "int -7"},
      {"2147483648", "int64 2147483648"},
      {"-9223372036854775808", "int64 -9223372036854775808"},
      {"9223372036854775807", "int64 9223372036854775807"},
      {"9223372036854775808", "real 9.22337e+18"},
      {"123456789012345678901234567890", "real 1.23457e+29"},
      {"1.0", "real 1.0"},
      {"1e-999", "real 0.0"},
      {"-0", "int 0"},
      {"\"\"", "string "},
      {"\"a\\u00e9\\ud83d\\ude00\\n\"", "string a\xC3\xA9\xF0\x9F\x98\x80\n"},
      {"[]", "table []"},
      {"{}", "table []"},
      {" [1, [2.5], {\"a\": null}]\n", "table [1, [2.5], [\"a\": nil]]"},
      {"{\"b\": 1, \"a\": {\"\": [true]}}", "table [\"b\": 1, \"a\": [\"\": [1]]]"},
      {"{\"a\": 1, \"b\": 2, \"a\": [3]}", "table [\"a\": [3], \"b\": 2]"},
      {"\xEF\xBB\xBF[1]", "table [1]"},
  };
  for (const auto& [json, output] : rows) EXPECT_EQ(parsed(json), output) << json;
  EXPECT_EQ(output_of("s = parse_json(\"\\\"a\\\\u0000b\\\"\"); print(len(s))"), "3");
}

TEST(ParseJson, Errors_HaveLineAndColumn) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "line 1, column 1: unexpected end of input; expected '[', '{', or a literal"},
      {"[1,\n  x]", "line 2, column 3: invalid literal"},
      {"[\"\xC3\xA9\xC3\xA9\", x]", "line 1, column 8: invalid literal"},
      {"[1 2]", "line 1, column 4: unexpected number literal; expected ']'"},
      {"[1,]", "line 1, column 4: unexpected ']'; expected '[', '{', or a literal"},
      {"{\"a\" 1}", "line 1, column 6: unexpected number literal; expected ':'"},
      {"{a: 1}", "line 1, column 2: invalid literal"},
      {"1 1", "line 1, column 3: unexpected number literal; expected end of input"},
      {"[1] ]", "line 1, column 5: unexpected ']'; expected end of input"},
      {"01", "line 1, column 2: unexpected number literal; expected end of input"},
      {"NaN", "line 1, column 1: invalid literal"},
      {"1e999", "line 1, column 5: the number is beyond the range of 64-bit floating-point numbers"},
      {"\"a", "line 1, column 3: invalid string: missing closing quote"},
      {"\"\\x\"", "line 1, column 3: invalid string: forbidden character after backslash"},
      {"\"\\ud800\"", "line 1, column 8: invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF"},
      {"\"\\udc00\"", "line 1, column 7: invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF"},
      {"\"\xFF\"", "line 1, column 2: invalid string: ill-formed UTF-8 byte"},
      {"\"a\nb\"", "line 1, column 3: invalid string: control character U+000A (LF) must be escaped to \\u000A or \\n"},
      {std::string("1\0x", 3), "line 1, column 2: a byte is 0"},
      {"// c\n1", "line 1, column 1: invalid literal"},
  };
  for (const auto& [json, message] : rows) EXPECT_EQ(parsed(json), "!parse_json: " + std::string(message)) << json;
}

TEST(ParseJson, NestsUpToItsLimit) {
  const Folder folder;
  const auto nested = [](int depth) {
    return std::string(static_cast<std::size_t>(depth), '[') + std::string(static_cast<std::size_t>(depth), ']');
  };
  folder.write("deepest", nested(deepest_json));
  folder.write("deeper", "\n" + nested(deepest_json + 1));
  folder.write("objects", [] {
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += "{\"a\":";
    return text;
  }());
  EXPECT_EQ(
      folder.output_of("t = parse_json(read_text(\"DIR/deepest\")); print(to_json(t) == read_text(\"DIR/deepest\"))"),
      "1");
  EXPECT_EQ(folder.output_of("parse_json(read_text(\"DIR/deeper\"))"),
            "!parse_json: line 2, column 10001: the text nests deeper than 10000 levels");
  EXPECT_EQ(folder.output_of("parse_json(read_text(\"DIR/objects\"))"),
            "!parse_json: line 1, column 50001: the text nests deeper than 10000 levels");
}

TEST(ToJson, WritesListsObjectsNumbersAndNull) {
  expect_outputs({{"print(to_json([1, -2.5, 5000000000L, 1.0, 1e300, -0.0]))", "[1,-2.5,5000000000,1.0,1e+300,-0.0]"},
                  {"print(to_json([\"a\": [1], \"b\": [\"c\": []]]))", "{\"a\":[1],\"b\":{\"c\":[]}}"},
                  {"print(to_json([0.0 / 0, 1.0 / 0, -1.0 / 0, parse_json(\"null\")]))", "[null,null,null,null]"},
                  {"print(to_json(\"q\\\" b\\\\ n\\n r\\r t\\t \\x01\\x7f \\0 \xC3\xA9\"))",
                   "\"q\\\" b\\\\ n\\n r\\r t\\t \\u0001\x7F \\u0000 \xC3\xA9\""},
                  {"print(to_json(w\"w\xC3\xA9\"))", "\"w\xC3\xA9\""},
                  {"print(to_json(7), to_json(2.0), to_json([]))", "7 2.0 []"},
                  {"print(to_json([1, [\"a\": 2, \"b\": []], []], 2))",
                   "[\n  1,\n  {\n    \"a\": 2,\n    \"b\": []\n  },\n  []\n]"},
                  {"print(to_json([1, [2]], 0))", "[\n1,\n[\n2\n]\n]"},
                  {"print(to_json([toy_int(2), toy_double(1, 2)]))", "[[0,1],[[0.0,1.0]]]"}});
}

TEST(ToJson, WhatHasNoForm_IsAnError) {
  expect_outputs({{"to_json([@double])", "!to_json: a code has no form in JSON"},
                  {"to_json([1, \"a\": 2])",
                   "!to_json: a table is a list with the keys 0, 1, 2, ... or an object with strings as keys; this one "
                   "has the key "
                   "0"},
                  {"to_json([1: 2])",
                   "!to_json: a table is a list with the keys 0, 1, 2, ... or an object with strings as keys; this one "
                   "has the key "
                   "1"},
                  {"to_json([\"a\": 1, 2.5: 2])",
                   "!to_json: a table is a list with the keys 0, 1, 2, ... or an object with strings as keys; this one "
                   "has the key "
                   "2.5"},
                  {"to_json(\"a\\xff\")", "!to_json: a string is not valid UTF-8"},
                  {"to_json([\"\\xff\": 1])", "!to_json: a string is not valid UTF-8"},
                  {"to_json(1, -1)", "!to_json: the indent is from 0 to 32, not -1"},
                  {"to_json(1, 33)", "!to_json: the indent is from 0 to 32, not 33"},
                  {"to_json(1, \"x\")", "!to_json: it takes an integer, not a string"},
                  {"t = []; for i in range(100000) do t = [t] end; to_json(t)",
                   "!to_json: the table nests deeper than 10000 levels"}});
}

TEST(ToJson, ParseJsonGivesBackWhatWasWritten) {
  expect_outputs(
      {{"t = [\"a\": [1, 2.5, \"x\\n\\\"\", 5000000000L, 0.1, 1e300], \"b\": [\"\": [[], [1]]]]\n"
        "print(str(parse_json(to_json(t))) == str(t), str(parse_json(to_json(t, 2))) == str(t))",
        "1 1"}});
}

}  // namespace
}  // namespace hvm::testing
