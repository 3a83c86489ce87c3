// script/syntax/foreign_words.cpp: words and signs of other languages, and what is written instead

#include "script/syntax/foreign_words.hpp"

namespace hvm {
namespace {

struct Row {
  ForeignPlace place;
  std::string_view text;
  std::string_view advice;
};

constexpr std::string_view block_words =
    "a block begins after 'then', 'do' or the end of the line, and ends with 'end'";
constexpr std::string_view block_end = "a block ends with 'end'";
constexpr std::string_view braces =
    "a block has no braces and ends with 'end'; a table is written [1, 2] or [\"key\": 1]";
constexpr std::string_view quotes = "a string is written in double quotes: \"text\"";
constexpr std::string_view powers = "a power is pow(x, y) of numbers, power(a, p) of an array after use \"arrays\"";
constexpr std::string_view a_function = "a function is written fn f(x), its statements and end";
constexpr std::string_view a_loop = "a loop is written for i in range(3), or for k, v in t";
constexpr std::string_view a_comment = "a comment begins with '#'";
constexpr std::string_view a_step = "write x += 1 or x -= 1";
constexpr std::string_view a_declaration = "a variable needs no declaration: write x = 1";
constexpr std::string_view a_condition = "a condition is a statement of its own: if c then x = 1 else x = 2 end";
constexpr std::string_view a_table_from_a_loop = "a table is filled in a loop: t = [], and append(t, x) for each value";
constexpr std::string_view an_import = "write use \"arrays\" for the library; functions of the module need nothing";
constexpr std::string_view a_text_of_values = "write \"x \" + str(x), or format(\"x {}\", x)";
constexpr std::string_view a_failure = "write error(\"text\")";
constexpr std::string_view a_choice = "write if … elseif … else … end";
constexpr std::string_view a_print = "write print(x)";
constexpr std::string_view a_repetition = "write while true … if c then break end … end";
constexpr std::string_view unequal = "unequal is written '!='";
constexpr std::string_view no_bits = "there are no operators for bits";
constexpr std::string_view a_script = "write use \"file.hvm\"";

using Place = ForeignPlace;

// Of two signs with the same beginning the longer one comes first.
constexpr Row table[] = {
    {Place::character, "&&", "conditions are joined by 'and'"},
    {Place::character, "||", "conditions are joined by 'or'"},
    {Place::character, "&", no_bits},
    {Place::character, "|", no_bits},
    {Place::character, "~=", unequal},
    {Place::character, "!", "a condition is negated by 'not'"},
    {Place::character, "^", powers},
    {Place::character, "?", a_condition},
    {Place::character, "{", braces},
    {Place::character, "}", braces},
    {Place::character, "'", quotes},
    {Place::character, "`", quotes},
    {Place::character, "\xE2\x80\x98", quotes},
    {Place::character, "\xE2\x80\x99", quotes},
    {Place::character, "\xE2\x80\x9C", "a string is written in straight quotes: \"text\""},
    {Place::character, "\xE2\x80\x9D", "a string is written in straight quotes: \"text\""},
    {Place::character, "\xE2\x80\x93", "a minus is written '-'"},
    {Place::character, "\xE2\x88\x92", "a minus is written '-'"},
    {Place::character, "\xC2\xA0", "it looks like a blank; write a blank instead"},
    {Place::character, "\\", "a line continues after an operator or a comma, and inside brackets"},

    {Place::first, "def", a_function},
    {Place::first, "func", a_function},
    {Place::first, "function", a_function},
    {Place::first, "sub", a_function},
    {Place::first, "local", "a variable that a fn gives a value is local: write x = 1"},
    {Place::first, "let", a_declaration},
    {Place::first, "var", a_declaration},
    {Place::first, "const", a_declaration},
    {Place::first, "auto", a_declaration},
    {Place::first, "int", a_declaration},
    {Place::first, "float", a_declaration},
    {Place::first, "double", a_declaration},
    {Place::first, "string", a_declaration},
    {Place::first, "global", "a name that a fn gives no value is global, and can only be read there"},
    {Place::first, "import", an_import},
    {Place::first, "from", an_import},
    {Place::first, "using", an_import},
    {Place::first, "require", a_script},
    {Place::first, "include", a_script},
    {Place::first, "elif", "write 'elseif'"},
    {Place::first, "elsif", "write 'elseif'"},
    {Place::first, "switch", a_choice},
    {Place::first, "match", a_choice},
    {Place::first, "unless", "write if not c"},
    {Place::first, "foreach", a_loop},
    {Place::first, "repeat", a_repetition},
    {Place::first, "until", a_repetition},
    {Place::first, "loop", a_repetition},
    {Place::first, "print", a_print},
    {Place::first, "echo", a_print},
    {Place::first, "raise", a_failure},
    {Place::first, "throw", a_failure},
    {Place::first, "except", "write catch e"},
    {Place::first, "del", "write remove(t, key)"},
    {Place::first, "class", "there are no classes; a table holds values under names"},
    {Place::first, "struct", "there are no structures; a table holds values under names"},

    {Place::alone, "endif", block_end},
    {Place::alone, "endfor", block_end},
    {Place::alone, "endwhile", block_end},
    {Place::alone, "endfunction", block_end},
    {Place::alone, "fi", block_end},
    {Place::alone, "done", block_end},
    {Place::alone, "except", "write catch e"},
    {Place::alone, "finally", "what follows 'end' runs in any case"},

    {Place::behind_value, "elif", "write 'elseif'"},
    {Place::behind_value, "elsif", "write 'elseif'"},
    {Place::behind_value, "if", a_condition},
    {Place::behind_value, "for", a_table_from_a_loop},
    {Place::behind_value, "in", "write has(t, key) of a table, find(s, part) != nil of a string"},
    {Place::behind_value, "is", "write '==' or '!='"},
    {Place::behind_value, "mod", "a remainder is written '%'"},
    {Place::behind_value, "div", "'/' of two integers truncates"},
    {Place::behind_value, "@", "'@' quotes what follows; a product of matrices is xdot(a, b)"},

    {Place::before_value, "lambda", a_function},
    {Place::before_value, "new", "what is made is the value of a call: xzeros(3)"},

    {Place::joined, "//", "a comment begins with '#'; '/' of two integers truncates"},
    {Place::joined, "/*", a_comment},
    {Place::joined, "**", powers},
    {Place::joined, "++", a_step},
    {Place::joined, "--", "a comment begins with '#'; to count down, write x -= 1"},
    {Place::joined, "<>", unequal},
    {Place::joined, "===", "write '=='"},
    {Place::joined, "!==", "write '!='"},
    {Place::joined, ":=", "write '='"},
    {Place::joined, "->", "a method is called by '.': a.shape()"},
    {Place::joined, "=>", "greater or equal is written '>='"},
    {Place::joined, "..", "strings are joined by '+'"},
    {Place::joined, "::", "a range has no step"},
    {Place::joined, "f\"", a_text_of_values},
    {Place::joined, "r\"", "no letter stands before a string; a backslash is written \\\\"},
    {Place::joined, "b\"", "no letter stands before a string; a byte is written \\xHH"},
    {Place::joined, "u\"", "no letter stands before a string, which is UTF-8"},

    {Place::statement, ":", block_words},
    {Place::statement_end, ",", "one variable gets a value at a time: a = 1; b = 2"},
    {Place::statement_end, ")", "it closes nothing"},
    {Place::statement_end, "]", "it closes nothing"},
    {Place::header, ":", block_words},
    {Place::header, "begin", block_words},
    {Place::header, "loop", block_words},
    {Place::loop, "(", a_loop},
    {Place::loop, "=", a_loop},
    {Place::parenthesis, ",", "a table is written [1, 2]"},
    {Place::index, ":", "a range has no step"},

    {Place::member, "T", "write transpose(a), after use \"arrays\""},
    {Place::member, "size", "write len(a), and a.shape() for all extents"},
    {Place::member, "ndim", "write len(a.shape())"},
    {Place::member, "dtype", "write type(a)"},
    {Place::member, "length", "write len(a)"},

    {Place::argument, "axis", "sum_rows(a) and sum_columns(a) sum along an axis, after use \"arrays\""},
    {Place::argument, "dtype", "the kind is the first argument of xarray: xarray(@double, t)"},
};

}  // namespace

std::string_view foreign_advice(ForeignPlace place, std::string_view text) {
  for (const Row& row : table)
    if (row.place == place && row.text == text) return row.advice;
  return {};
}

std::string_view foreign_sign(std::string_view text) {
  for (const Row& row : table)
    if (row.place == Place::character && text.substr(0, row.text.size()) == row.text) return row.text;
  return {};
}

}  // namespace hvm
