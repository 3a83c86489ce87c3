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
constexpr std::string_view both_bits =
    "there are no operators for bits; bool arrays are joined by as_int(m) * as_int(n), after use \"arrays\"";
constexpr std::string_view either_bit =
    "there are no operators for bits; bool arrays are joined by as_int(m) + as_int(n), after use \"arrays\"";
constexpr std::string_view a_script = "write use \"file.hvm\"";

// Of two signs with the same beginning the longer one comes first.
constexpr Row table[] = {
    {ForeignPlace::character, "&&", "conditions are joined by 'and'"},
    {ForeignPlace::character, "||", "conditions are joined by 'or'"},
    {ForeignPlace::character, "&", both_bits},
    {ForeignPlace::character, "|", either_bit},
    {ForeignPlace::character, "~=", unequal},
    {ForeignPlace::character, "~", "a bool array is negated by as_int(m) < 1, after use \"arrays\""},
    {ForeignPlace::character, "!", "a condition is negated by 'not'"},
    {ForeignPlace::character, "^", powers},
    {ForeignPlace::character, "?", a_condition},
    {ForeignPlace::character, "{", braces},
    {ForeignPlace::character, "}", braces},
    {ForeignPlace::character, "'", quotes},
    {ForeignPlace::character, "`", quotes},
    {ForeignPlace::character, "\xE2\x80\x98", quotes},
    {ForeignPlace::character, "\xE2\x80\x99", quotes},
    {ForeignPlace::character, "\xE2\x80\x9C", "a string is written in straight quotes: \"text\""},
    {ForeignPlace::character, "\xE2\x80\x9D", "a string is written in straight quotes: \"text\""},
    {ForeignPlace::character, "\xE2\x80\x93", "a minus is written '-'"},
    {ForeignPlace::character, "\xE2\x88\x92", "a minus is written '-'"},
    {ForeignPlace::character, "\xC2\xA0", "it looks like a blank; write a blank instead"},
    {ForeignPlace::character, "\\", "a line continues after an operator or a comma, and inside brackets"},

    {ForeignPlace::first, "def", a_function},
    {ForeignPlace::first, "func", a_function},
    {ForeignPlace::first, "function", a_function},
    {ForeignPlace::first, "sub", a_function},
    {ForeignPlace::first, "local", "a variable that a fn gives a value is local: write x = 1"},
    {ForeignPlace::first, "let", a_declaration},
    {ForeignPlace::first, "var", a_declaration},
    {ForeignPlace::first, "const", a_declaration},
    {ForeignPlace::first, "auto", a_declaration},
    {ForeignPlace::first, "int", a_declaration},
    {ForeignPlace::first, "float", a_declaration},
    {ForeignPlace::first, "double", a_declaration},
    {ForeignPlace::first, "string", a_declaration},
    {ForeignPlace::first, "global", "a name that a fn gives no value is global, and can only be read there"},
    {ForeignPlace::first, "import", an_import},
    {ForeignPlace::first, "from", an_import},
    {ForeignPlace::first, "using", an_import},
    {ForeignPlace::first, "require", a_script},
    {ForeignPlace::first, "include", a_script},
    {ForeignPlace::first, "elif", "write 'elseif'"},
    {ForeignPlace::first, "elsif", "write 'elseif'"},
    {ForeignPlace::first, "switch", a_choice},
    {ForeignPlace::first, "match", a_choice},
    {ForeignPlace::first, "unless", "write if not c"},
    {ForeignPlace::first, "foreach", a_loop},
    {ForeignPlace::first, "repeat", a_repetition},
    {ForeignPlace::first, "until", a_repetition},
    {ForeignPlace::first, "loop", a_repetition},
    {ForeignPlace::first, "print", a_print},
    {ForeignPlace::first, "echo", a_print},
    {ForeignPlace::first, "raise", a_failure},
    {ForeignPlace::first, "throw", a_failure},
    {ForeignPlace::first, "except", "write catch e"},
    {ForeignPlace::first, "del", "write remove(t, key)"},
    {ForeignPlace::first, "class", "there are no classes; a table holds values under names"},
    {ForeignPlace::first, "struct", "there are no structures; a table holds values under names"},

    {ForeignPlace::alone, "endif", block_end},
    {ForeignPlace::alone, "endfor", block_end},
    {ForeignPlace::alone, "endwhile", block_end},
    {ForeignPlace::alone, "endfunction", block_end},
    {ForeignPlace::alone, "fi", block_end},
    {ForeignPlace::alone, "done", block_end},
    {ForeignPlace::alone, "except", "write catch e"},
    {ForeignPlace::alone, "finally", "what follows 'end' runs in any case"},

    {ForeignPlace::behind_value, "elif", "write 'elseif'"},
    {ForeignPlace::behind_value, "elsif", "write 'elseif'"},
    {ForeignPlace::behind_value, "if", a_condition},
    {ForeignPlace::behind_value, "for", a_table_from_a_loop},
    {ForeignPlace::behind_value, "in", "write has(t, key) of a table, find(s, part) != nil of a string"},
    {ForeignPlace::behind_value, "is", "write '==' or '!='"},
    {ForeignPlace::behind_value, "mod", "a remainder is written '%'"},
    {ForeignPlace::behind_value, "div", "'/' of two integers truncates"},
    {ForeignPlace::behind_value, "@", "'@' quotes what follows; a product of matrices is xdot(a, b)"},

    {ForeignPlace::before_value, "lambda", a_function},
    {ForeignPlace::before_value, "new", "what is made is the value of a call: xzeros(3)"},

    {ForeignPlace::joined, "//", "a comment begins with '#'; '/' of two integers truncates"},
    {ForeignPlace::joined, "/*", a_comment},
    {ForeignPlace::joined, "**", powers},
    {ForeignPlace::joined, "++", a_step},
    {ForeignPlace::joined, "--", "a comment begins with '#'; to count down, write x -= 1"},
    {ForeignPlace::joined, "<>", unequal},
    {ForeignPlace::joined, "===", "write '=='"},
    {ForeignPlace::joined, "!==", "write '!='"},
    {ForeignPlace::joined, ":=", "write '='"},
    {ForeignPlace::joined, "->", "a method is called by '.': a.shape()"},
    {ForeignPlace::joined, "=>", "greater or equal is written '>='"},
    {ForeignPlace::joined, "..", "strings are joined by '+'"},
    {ForeignPlace::joined, "::", "a range has no step"},
    {ForeignPlace::joined, "f\"", a_text_of_values},
    {ForeignPlace::joined, "r\"", "no letter stands before a string; a backslash is written \\\\"},
    {ForeignPlace::joined, "b\"", "no letter stands before a string; a byte is written \\xHH"},
    {ForeignPlace::joined, "u\"", "no letter stands before a string, which is UTF-8"},

    {ForeignPlace::statement, ":", block_words},
    {ForeignPlace::statement_end, ",", "one variable gets a value at a time: a = 1; b = 2"},
    {ForeignPlace::statement_end, ")", "it closes nothing"},
    {ForeignPlace::statement_end, "]", "it closes nothing"},
    {ForeignPlace::header, ":", block_words},
    {ForeignPlace::header, "begin", block_words},
    {ForeignPlace::header, "loop", block_words},
    {ForeignPlace::loop, "(", a_loop},
    {ForeignPlace::loop, "=", a_loop},
    {ForeignPlace::sequence, ":", "a loop over numbers is written for i in range(1, 4)"},
    {ForeignPlace::parenthesis, ",", "a table is written [1, 2], and arguments need no second parentheses: f(1, 2)"},
    {ForeignPlace::index, ":", "a range has no step"},

    {ForeignPlace::member, "T", "write transpose(a), after use \"arrays\""},
    {ForeignPlace::member, "size", "write len(a), and a.shape() for all extents"},
    {ForeignPlace::member, "ndim", "write len(a.shape())"},
    {ForeignPlace::member, "dtype", "write type(a)"},
    {ForeignPlace::member, "length", "write len(a)"},
    {ForeignPlace::member, "pi", "write 3.141592653589793"},

    {ForeignPlace::argument, "axis", "sum_rows(a) and sum_columns(a) sum along an axis, after use \"arrays\""},
    {ForeignPlace::argument, "dtype", "the kind is the first argument of xarray: xarray(@double, t)"},
};

}  // namespace

std::string_view foreign_advice(ForeignPlace place, std::string_view text) {
  for (const Row& row : table)
    if (row.place == place && row.text == text) return row.advice;
  return {};
}

std::string_view foreign_sign(std::string_view text) {
  for (const Row& row : table)
    if (row.place == ForeignPlace::character && text.substr(0, row.text.size()) == row.text) return row.text;
  return {};
}

}  // namespace hvm
