// refhost/script/syntax/parser_test.cpp: which tree a text gives, and what is said of text that gives none

#include "script/syntax/parser.hpp"

#include <gtest/gtest.h>

#include "script/syntax/diagnostics.hpp"
#include "tree_text.hpp"

namespace hvm::testing {
namespace {

struct TextAndTree {
  const char* text;
  const char* expected;
};

void expect_trees(std::initializer_list<TextAndTree> rows) {
  for (const TextAndTree& row : rows) EXPECT_EQ(parsed(row.text), row.expected) << row.text;
}

TEST(Parser, Precedence_BindsProductsBeforeSumsBeforeComparisonsBeforeLogic) {
  expect_trees({{"1 + 2 * 3", "{(+ 1 (* 2 3))}"},
                {"1 - 2 - 3", "{(- (- 1 2) 3)}"},
                {"8 / 4 % 3 * 2", "{(* (% (/ 8 4) 3) 2)}"},
                {"(1 + 2) * 3", "{(* (+ 1 2) 3)}"},
                {"a + 1 <= b * 2", "{(<= (+ a 1) (* b 2))}"},
                {"a < 1 and b > 2 or not c == 3", "{(or (and (< a 1) (> b 2)) (not (== c 3)))}"},
                {"n > 2 and not (x < 1)", "{(and (> n 2) (not (< x 1)))}"},
                {"a and b and c", "{(and a b c)}"}});
}

TEST(Parser, Minus_BeforeANumericLiteral_BelongsToIt) {
  expect_trees({{"-2147483648", "{-2147483648}"},
                {"-9223372036854775808L", "{-9223372036854775808L}"},
                {"-2.dump()", "{(method -2 dump)}"},
                {"- 5", "{-5}"},
                {"--5", "{(- -5)}"},
                {"-a * 2", "{(* (- a) 2)}"},
                {"a -1", "{(- a 1)}"},
                {"-a[1].dump()", "{(- (method (at a 1) dump))}"}});
}

TEST(Parser, Suffixes_StandBehindAnyOperand) {
  expect_trees({{"2.dump()", "{(method 2 dump)}"},
                {"2.5.dump()", "{(method 2.5 dump)}"},
                {"a[0, 1]", "{(at a 0 1)}"},
                {"f(1)[2].shape(3, 4)", "{(method (at (call f 1) 2) shape 3 4)}"},
                {"[1, 2][0]", "{(at (table 1 2) 0)}"},
                {"(a)\n[1]", "{a (table 1)}"}});
}

TEST(Parser, TableLiteral_TakesValuesAndPairs) {
  expect_trees(
      {{"[1, 2, \"a\": 3, 2.0: 4, [\"x\"], \"k\": [5]]", "{(table 1 2 \"a\":3 2.0:4 (table \"x\") \"k\":(table 5))}"},
       {"[]", "{(table)}"},
       {"[1,]", "{(table 1)}"},
       {"[\n1,\n2\n]", "{(table 1 2)}"},
       {"[n + 1: m]", "{(table (+ n 1):m)}"}});
}

TEST(Parser, Literals_KeepTheirKind) {
  expect_trees({{"5L", "{5L}"},
                {"2.5", "{2.5}"},
                {"1e3", "{1000.0}"},
                {"1.5e-3", "{0.0015}"},
                {"true; false", "{1 0}"},
                {"\"a\\tb\\x41\\u{e9}\"", "{\"a\\tbA\xC3\xA9\"}"},
                {"w\"wide\"", "{w\"wide\"}"}});
}

TEST(Parser, Quotations_TakeNamesCallsAndData) {
  expect_trees({{"@double", "{(quote double)}"},
                {"@double(2, -n, -3)", "{(quote double of 2 (- n) -3)}"},
                {"@f()", "{(quote f of)}"},
                {"@@n; @@double(2)", "{(quote-twice n) (quote-twice double of 2)}"},
                {"@$n", "{(quote-text n)}"},
                {"@label: double(2)", "{(quote-labelled label: double of 2)}"},
                {"@[[1.0, -2.0], [x, \"s\"],]", "{(quote-data (table (table 1.0 -2.0) (table x \"s\")))}"},
                {"@int(t[1:3], t[:n + 1], t[1:, \"k\"], t[:])",
                 "{(quote int of (at t 1..3) (at t ..(+ n 1)) (at t 1.. \"k\") (at t ..))}"},
                {"@int(f(t[1:]))", "{(quote int of (call f (at t 1..)))}"},
                {"f(@int,\n@[1,\n2])", "{(call f (quote int) (quote-data (table 1 2)))}"}});
}

TEST(Parser, Newline_EndsAStatementUnlessMoreMustFollow) {
  expect_trees({{"a = 1\nb = 2", "{(= a 1) (= b 2)}"},
                {"a = 1; b = 2;", "{(= a 1) (= b 2)}"},
                {"a = 1 +\n2", "{(= a (+ 1 2))}"},
                {"a = f(1,\n\n2)", "{(= a (call f 1 2))}"},
                {"a = (1\n+ 2)", "{(= a (+ 1 2))}"},
                {"a = b and\nc", "{(= a (and b c))}"},
                {"a = 1 # comment ( [\nb", "{(= a 1) b}"},
                {"a\r\nb", "{a b}"}});
}

TEST(Parser, Assignment_ReachesVariablesAndElements) {
  expect_trees({{"a = b", "{(= a b)}"},
                {"a += 1; a -= 1; a *= 1; a /= 1; a %= 1", "{(+= a 1) (-= a 1) (*= a 1) (/= a 1) (%= a 1)}"},
                {"a[0, 1] = 7", "{(= (at a 0 1) 7)}"},
                {"t[1][2] += 7", "{(+= (at (at t 1) 2) 7)}"},
                {"t[1].f()[2] = 7", "{(= (at (method (at t 1) f) 2) 7)}"}});
}

TEST(Parser, Blocks_EndWithEnd) {
  expect_trees({{"if a\nb\nelseif c; d\nelse\ne\nend", "{(if a {b} c {d} else {e})}"},
                {"if a then b end", "{(if a {b})}"},
                {"while a do b end", "{(while a {b})}"},
                {"for i in range(3)\nprint(i)\nend", "{(for i (call range 3) {(call print i)})}"},
                {"for v in t do end", "{(for v t {})}"},
                {"for k, v in t do end", "{(for k, v t {})}"},
                {"while a do if b then break end; continue end", "{(while a {(if b {(break)}) (continue)})}"},
                {"try a\nb catch e c end", "{(try {a b} e {c})}"},
                {"for v in t\ntry\nbreak\ncatch e\ncontinue\nend\nend", "{(for v t {(try {(break)} e {(continue)})})}"},
                {"use \"lib/a.hvm\"; a", "{(use \"lib/a.hvm\") a}"}});
}

TEST(Parser, Ranges_StandBetweenBrackets) {
  expect_trees({{"s[1:2]", "{(at s 1..2)}"},
                {"s[:n + 1]", "{(at s ..(+ n 1))}"},
                {"f(s)[len(s) - 1:]", "{(at (call f s) (- (call len s) 1)..)}"},
                {"s[:][1]", "{(at (at s ..) 1)}"}});
}

TEST(Parser, NamesInAFn_AreLocalWhenAssignedThere) {
  NameTable globals;
  const Program program =
      parse(source_of("fn f(a)\nb = a + g\nfor i in t\nb += i\nend\nreturn b\nend\nb = 1"), globals);
  ASSERT_EQ(program.functions.size(), 1u);
  const Function& function = *program.functions[0];
  EXPECT_EQ(tree_text(function.body),
            "{(= local.b (+ local.a g)) (for local.i t {(+= local.b local.i)}) (return local.b)}");
  EXPECT_EQ(function.parameter_count, 1u);
  EXPECT_EQ(function.locals, (std::vector<std::string>{"a", "b", "i"}));
  EXPECT_EQ(tree_text(program.statements), "{(= b 1)}");
  EXPECT_FALSE(globals.find("a"));
  EXPECT_TRUE(globals.find("g"));
}

TEST(Parser, LoopVariablesAndCaughtErrors_AreLocalInAFn) {
  NameTable globals;
  const Program program = parse(source_of("fn f(t)\nfor k, v in t\ntry\ng(k)\ncatch e\nend\nend\nend"), globals);
  EXPECT_EQ(program.functions.at(0)->locals, (std::vector<std::string>{"t", "k", "v", "e"}));
}

TEST(Parser, Errors_SayWhatIsWrong) {
  const TextAndTree rows[] = {
      {"if a = b\nend", "an assignment is not an expression; did you mean =="},
      {"print(a = b)", "an assignment is not an expression, and a call takes no named arguments; did you mean =="},
      {"while a += 1\nend", "an assignment is not an expression"},
      {"use = 1", "'use' is a word of the language, not a name for a variable"},
      {"fn = 1", "'fn' is a word of the language, not a name for a variable"},
      {"if 1\nin += 1\nend", "'in' is a word of the language, not a name for a variable"},
      {"a = b = c", "an assignment is not an expression; did you mean =="},
      {"2147483648", "the integer does not fit in 32 bits; write 2147483648L for 64 bits"},
      {"-2147483649", "the integer does not fit in 32 bits; write 2147483649L for 64 bits"},
      {"9223372036854775808L", "the integer does not fit in 64 bits"},
      {"99999999999999999999", "the integer does not fit in 64 bits"},
      {"1e999", "the real number is beyond the range of 64-bit floats"},
      {"1.", "a real number needs a digit on both sides of its point"},
      {".5", "a real number needs a digit on both sides of its point"},
      {"5abc", "'5abc' is neither a number nor a name"},
      {"x = \"abc", "the string is not closed on its line"},
      {"x = \"abc\ny = 1", "the string is not closed on its line"},
      {"\"\\q\"", "unknown escape in a string; a backslash itself is written \\\\"},
      {"\"\\u{110000}\"", "there is no such character"},
      {"a < b < c", "comparisons do not follow each other; join them with 'and'"},
      {"a = @(2)", "a name, a call or a data literal after '@' expected, but here is '('"},
      {"a = @@[1.0]", "a name, a call or a data literal after '@' expected, but here is '['"},
      {"a = @@@n", "a quotation is quoted once at most"},
      {"a = @$5", "a name for a variable expected, but here is a number"},
      {"a = @label: 5", "a name, a call or a data literal after '@' expected, but here is a number"},
      {"a = @int(2)(3)", "only a name can be called"},
      {"s[1:2] = 3", "a range cannot be assigned to"},
      {"break", "'break' is allowed in a loop only"},
      {"fn f() continue end", "'continue' is allowed in a loop only"},
      {"if 1 then break end", "'break' is allowed in a loop only"},
      {"try x = 1 end", "'catch' for 'try' expected, but here is 'end'"},
      {"try x = 1 catch end", "a name for a variable expected, but here is 'end'"},
      {"catch e", "'catch' without a block"},
      {"if 1 then catch e end", "'end' for 'if' expected, but here is 'catch'"},
      {"use", "a string with the path of a script after 'use' expected, but here is the end of the script"},
      {"use x", "a string with the path of a script after 'use' expected, but here is a name"},
      {"if 1 then use \"a.hvm\" end", "use is allowed at the outermost level only"},
      {"fn f() use \"a.hvm\" end", "use is allowed at the outermost level only"},
      {"nil = 3", "'nil' is a word of the language, not a name for a variable"},
      {"@nil", "a name, a call or a data literal after '@' expected, but here is 'nil'"},
      {"for k, 3 in t end", "a name for a variable expected, but here is a number"},
      {"for a, b, c in t end", "'in' after the variable expected, but here is ','"},
      {"a = @int(t[1:2] + 1)",
       "a range of keys is allowed in a selection that is an argument of its own, such as @int(t[1:3])"},
      {"a = @int(t[u[1:2]])",
       "a range of keys is allowed in a selection that is an argument of its own, such as @int(t[1:3])"},
      {"a = @[1.0, n + 1]", "a data literal holds only literals and variables; give the value to a variable first"},
      {"a = @[-n]", "a data literal holds only literals and variables; give the value to a variable first"},
      {"a = @[f()]", "a data literal holds only literals and variables; give the value to a variable first"},
      {"a = @[t[1:2]]", "a data literal holds only literals and variables; give the value to a variable first"},
      {"a = @[]", "a data literal needs an element in every row"},
      {"a = @[[1.0], []]", "a data literal needs an element in every row"},
      {"a = @[[1.0], 2.0]", "a row of a data literal holds rows or elements, not both"},
      {"a = @[1.0, [2.0]]", "a row of a data literal holds rows or elements, not both"},
      {"a = @[\"k\": 1.0]", "a data literal has no keys"},
      {"!a", "unexpected character '!'; a condition is negated by 'not'"},
      {"a ~ b", "unexpected character '~'; a bool array is negated by as_int(m) < 1, after use \"arrays\""},
      {"a = \xC3\xA9", "unexpected character '\xC3\xA9'; names have letters from a to z, digits and '_'"},
      {"fn f(x) = x * 2", "the statements of a fn follow, and then 'end': return x * 2"},
      {"a = 1 2", "the end of the statement expected, but here is a number"},
      {"a b", "the end of the statement expected, but here is a name"},
      {"end", "'end' without a block"},
      {"if a\nb", "'if' has no 'end'"},
      {"if a b end", "the end of the line, ';', 'then' or 'do' expected, but here is a name"},
      {"f(1, 2", "'(' is not closed"},
      {"a.b", "a method is called with parentheses: .b(); an entry of a table is written t[\"b\"]"},
      {"a[]", "an index expected between the brackets"},
      {"f(1)(2)", "only a name can be called"},
      {"f() = 1", "only a variable or an element can be assigned to"},
      {"1 = 2", "only a variable or an element can be assigned to"},
      {"return 1", "return is allowed in a fn only"},
      {"if a\nfn f()\nend\nend",
       "a fn is allowed at the outermost level only, and 'if' of line 1 has no 'end' before it"},
      {"fn f(a, a)\nend", "two parameters are called 'a'"},
      {"x = ", "an expression expected, but here is the end of the script"},
      {"x = *", "an expression expected, but here is '*'"},
      {"if 1\nelse\nelse\nend", "'end' for 'if' expected, but here is 'else'"},
  };
  for (const TextAndTree& row : rows) EXPECT_EQ(error_of(row.text).message(), row.expected) << row.text;
}

TEST(Parser, ABracketThatIsNotClosed_IsReportedWhereItOpens) {
  const TextAndTree rows[] = {
      {"x = (1 + 2", "1:5 '(' is not closed"},
      {"x = f(1, [2, 3", "1:10 '[' is not closed"},
      {"print((1 + 2)", "1:6 '(' is not closed"},
      {"a = @int(1, 2", "1:9 '(' is not closed"},
      {"a = @[[1.0, 2.0], [3.0", "1:19 '[' is not closed"},
      {"x = a[1, 2", "1:6 '[' is not closed"},
      {"x = a.dump(1", "1:11 '(' is not closed"},
      {"fn f(a, b\nend", "1:5 '(' is not closed"},
      {"y = [1,\n2\nz = 3\n", "1:5 '[' is not closed"},
      {"y = [1,\n2,\nz = 3\n", "1:5 '[' is not closed"},
      {"x = (1 + 2\ny = 3\nprint([1])", "1:5 '(' is not closed"},
      {"f(1, 2\nprint(3)\n", "1:2 '(' is not closed"},
      // A bracket that is closed is not the cause.
      {"t = [1, 2\n3, 4]", "2:1 ']' or ',' in the table expected, but here is a number"},
      {"f(1 2)", "1:5 ')' or ',' after the argument expected, but here is a number"},
  };
  for (const TextAndTree& row : rows) EXPECT_EQ(placed_error_of(row.text), row.expected) << row.text;
}

TEST(Parser, AWrongClosingBracket_NamesTheOneThatItShouldClose) {
  const TextAndTree rows[] = {
      {"x = [1, 2)", "1:10 the '[' is closed by ']', but here is ')'"},
      {"x = f(1, [2, 3)", "1:15 the '[' is closed by ']', but here is ')'"},
      {"x = f(1\n]", "2:1 the '(' of line 1 is closed by ')', but here is ']'"},
      {"x = @[1.0, 2.0)", "1:15 the '[' is closed by ']', but here is ')'"},
      {"x = @int(2]", "1:11 the '(' is closed by ')', but here is ']'"},
      {"x = a[1)", "1:8 the '[' is closed by ']', but here is ')'"},
      {"fn f(a]\nend", "1:7 the '(' is closed by ')', but here is ']'"},
      {"print(1))", "1:9 unexpected ')'; it closes nothing"},
      {"x = 1]", "1:6 unexpected ']'; it closes nothing"},
  };
  for (const TextAndTree& row : rows) EXPECT_EQ(placed_error_of(row.text), row.expected) << row.text;
}

TEST(Parser, AMissingEnd_IsReportedWhereItsStatementBegins) {
  const TextAndTree rows[] = {
      {"x = 1\nfor i in range(3)\n  print(i)\n", "2:1 'for' has no 'end'"},
      {"while 1 do if 2 then x = 1 end", "1:1 'while' has no 'end'"},
      {"if 1\nelseif 2\n", "1:1 'if' has no 'end'"},
      {"if 1\nelse\n", "1:1 'if' has no 'end'"},
      {"try\nx = 1\ncatch e\n", "1:1 'try' has no 'end'"},
      {"fn f()\nx = 1\n", "1:1 'fn' has no 'end'"},
      // The indent shows whose end is missing.
      {"fn f(x)\n  while x\n    if x\n      x = 1\n  end\nend\n",
       "3:5 'if' has no 'end': the 'end' of line 5 stands further left"},
      {"fn f(x)\n  if x\n    return 1\n\nfn g()\nend", "2:3 'if' has no 'end' before the 'fn' of line 5"},
      {"fn f(x)\n  return 1\n\nfn g()\nend", "1:1 'fn' has no 'end' before the 'fn' of line 4"},
      {"if 1\n  x = 1\nelse if 2\n  x = 2\nend\n",
       "3:1 'else if' begins an 'if' of its own, which needs its own 'end'; write 'elseif'"},
      {"if 1 then\n  x = 1\nendif\n", "3:1 unexpected 'endif'; a block ends with 'end'"},
      {"try\n  x = 1\nexcept\n  x = 2\nend\n", "3:1 unexpected 'except'; write catch e"},
  };
  for (const TextAndTree& row : rows) EXPECT_EQ(placed_error_of(row.text), row.expected) << row.text;
  EXPECT_EQ(parsed("if a then b else if c then d end end"), "{(if a {b} else {(if c {d})})}");
  EXPECT_EQ(parsed("endif = 1\nif endif\n  endif\nend"), "{(= endif 1) (if endif {endif})}");
}

TEST(Parser, InvalidUtf8_IsAnErrorNamingThePlace) {
  for (const char* bytes : {"\xFF", "\xC3", "\xE2\x82", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80"}) {
    const ScriptError error = error_of(std::string("a = 1\nb = \"x") + bytes + "\"");
    EXPECT_NE(error.message().find("not valid UTF-8"), std::string::npos) << error.message();
    EXPECT_NE(error.report().find("test.hvm:2:7:"), std::string::npos) << error.report();
  }
}

TEST(Parser, Incompleteness_IsToldFromErrors) {
  for (const char* text : {"print(1,",
                           "a = 1 +",
                           "if a",
                           "fn f()\n",
                           "t = [1, ",
                           "while 1\nb\n",
                           "a =",
                           "a = @",
                           "a = @f(1,",
                           "a = @[[1.0],",
                           "a = @f(t[1:",
                           "s[1:",
                           "f(\n",
                           "x = (1 + 2",
                           "x = [[1], [2]",
                           "fn f(a,",
                           "if 1 then\nendif\n",
                           "if 1\nelse if 2\nend\n",
                           "try",
                           "try\na\n",
                           "try\na\ncatch e\n",
                           "for k,"})
    EXPECT_TRUE(error_of(text).is_incomplete()) << text;
  for (const char* text : {"a = )", "end", "x = \"abc", "a = 1 2", "if a = b", "x = [1)", "x = (1 + 2\ny = 3", "f(1 2"})
    EXPECT_FALSE(error_of(text).is_incomplete()) << text;
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(Parser, DeepNesting_IsAnError) {
  const int deep = 10000;
  for (const std::string& text :
       {repeated("(", deep) + "1" + repeated(")", deep), repeated("[", deep) + repeated("]", deep),
        repeated("f(", deep) + repeated(")", deep), "x = " + repeated("- ", deep) + "a", "x = @" + repeated("[", deep),
        repeated("@f(", deep), repeated("not ", deep) + "1", repeated("if 1\n", deep) + repeated("end\n", deep),
        repeated("a[", deep) + "1" + repeated("]", deep)})
    EXPECT_EQ(error_of(text).message(), "the script nests too deeply here: more than 200 levels");
}

TEST(Parser, LongChains_DoNotNest) {
  const int many = 100000;
  NameTable globals;
  for (const std::string& text :
       {"1" + repeated("+1", many), "1" + repeated("*1-1", many), "a" + repeated("[0]", many),
        "a" + repeated(".f()", many), "1" + repeated(" and 1", many), "if 0\n" + repeated("elseif 0\n", many) + "end",
        "[" + repeated("1,", many) + "]", repeated("a = 1\n", many)})
    EXPECT_NO_THROW(parse(source_of(text), globals));
}

}  // namespace
}  // namespace hvm::testing
