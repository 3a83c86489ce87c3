// refhost/script/library/text_functions_test.cpp: format, and text in parts and as a whole

#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(TextFunctions, Format_FollowsFmt) {
  expect_outputs(
      {{R"(print(format("plain"), format("{{}}"), format("{1}{0}", 1, 2), format("")))", "plain {} 21 "},
       {R"(print(format("{} {} {} {}", 1, 5L, 2.5, "text")))", "1 5 2.5 text"},
       {R"(print(format("{:>5}|{:<5}|{:^5}|{:*>5}|{:05d}|{:+}", 1, 2, 3, 4, -5, 6)))",
        "    1|2    |  3  |****4|-0005|+6"},
       {R"(print(format("{:x} {:#x} {:b} {:o} {:X} {:c}", 255, 255, 5, 8, 171, 65)))", "ff 0xff 101 10 AB A"},
       {R"(print(format("{:.3f} {:8.2f} {:e} {:g} {:.0f} {:.0f} {:%}", 1.0 / 3, 2.0, 12345.678, 1e-7, 0.5, 2.5,
  1)))",
        "!format: invalid type specifier; behind the pattern: a real, a real, a real, a real, a real, a real, an int"},
       {R"(print(format("{:.3f} {:8.2f} {:e} {:g} {:.0f} {:.0f}", 1.0 / 3, 2.0, 12345.5, 1e-7, 0.5, 2.5)))",
        "0.333     2.00 1.234550e+04 1e-07 0 2"},
       {R"(print(format("{0:.2f} {1:.1e} {2:g} {0:08.3f}|{3:.0f}", 3, -250L, 7, 9007199254740993L)))",
        "3.00 -2.5e+02 7 0003.000|9007199254740992"},
       {R"(print(format("{:.{}f} {:f} {:a>4}", 3, 1, 2, 5)))", "3.0 2.000000 aaa5"},
       {R"(print(format("{:{0}}", 1, 2)))",
        "!format: cannot switch from automatic to manual argument indexing; behind the pattern: an int, an int"},
       {R"(print(format("{:{}}|{:.{}f}|", 7, 4, 1.0, 3), format("{1:{0}}|", 4, 7L)))", "   7|1.000|    7|"},
       {R"(print(format("{:>4}|{:.2}|{:π>3}|", "π", "äöü", "x")))", "   π|äö|ππx|"},
       {R"(print(format("{:5}|", w"wide"), format(w"{}", 1)))", "wide | 1"}});
}

TEST(TextFunctions, Format_OfARealWithoutASpec_IsTheShortestThatReadsBack) {
  expect_outputs({{R"(print(format("{} {} {} {}", 2.0, 0.1 + 0.2, -0.0, 1e300)))", "2 0.30000000000000004 -0 1e+300"},
                  {R"(nan = 0.0 / 0; print(format("{} {} {:f} {}", nan, -nan, nan, -1.0 / 0)))", "nan nan nan -inf"}});
}

TEST(TextFunctions, Format_OfOtherValues_TakesTheirPrintedText) {
  expect_outputs({{R"(print(format("{}|{:>6}|{:.2}", [1, "a", 2.0], nil, [1])))", "[1, \"a\", 2.0]|   nil|[1"},
                  {R"(print(format("{}", toy_int(2)) == format("{}", toy_int(2))))", "1"},
                  {R"(print(format("{:d}", [1])))", "!format: invalid type specifier; behind the pattern: a table"}});
}

TEST(TextFunctions, Format_OfABadPattern_GivesTheCauseOfFmt) {
  expect_outputs(
      {{R"(format("{"))", "!format: invalid format string"},
       {R"(format("}"))", "!format: unmatched '}' in format string"},
       {R"(format("{} {}", 1))", "!format: argument not found; behind the pattern: an int"},
       {R"(format("{1}", 1))", "!format: argument not found; behind the pattern: an int"},
       {R"(format("{name}", 1))", "!format: argument not found; behind the pattern: an int"},
       {R"(format("{:{}}", 1))", "!format: argument not found; behind the pattern: an int"},
       {R"(format("{:d}", 1.5))", "!format: invalid type specifier; behind the pattern: a real"},
       {R"(format("{:x}", "a"))", "!format: invalid type specifier; behind the pattern: a string"},
       {R"(format("{:{}}", 1, 2.0))", "!format: width is not integer; behind the pattern: an int, a real"},
       {R"(format("{:{}}", 1, -2))", "!format: negative width; behind the pattern: an int, an int"},
       {R"(format("{0} {}", 1, 2))",
        "!format: cannot switch from manual to automatic argument indexing; behind the pattern: an int, an int"},
       {R"(format("{:.3}", 1))", "!format: precision not allowed for this argument type; behind the pattern: an int"},
       {R"(format("{99999999999}", 1))", "!format: argument not found; behind the pattern: an int"},
       {R"(format("{:" + "{" * 1000, 1))", "!format: invalid format string; behind the pattern: an int"},
       {"format(5)", "!format: it takes a string, not an int"},
       {"format()", "!format: it takes at least 1 argument, not 0"}});
}

TEST(TextFunctions, Format_OfGiganticFields_Fails) {
  for (const char* call : {R"("{:99999999999}", 1)", R"("{:2147483647}", 1)", R"("{:1000001}", "a")",
                           R"("{:.2000000000f}", 0.0)", R"("{:.2000000000a}", 1.5)", R"("{:.2000000000e}", 1.5)",
                           R"("{:{}}", 1, 2000000000)", R"("{:.{}f}", 1.5, 99999999999L)", R"("{1:{0}}", 1000001, 7)",
                           R"("{} {:5.{}f}", 1, 0.0, 2000000000)", R"("{0:{0}}", 2000000000)"})
    EXPECT_EQ(output_of("format(" + std::string(call) + ")"), "!format: a width or precision is more than 1000000")
        << call;
  expect_outputs({{R"(print(len(format("{:1000000}", 1)), len(format("{:.1000000f}", 0.0))))", "1000000 1000002"},
                  {R"(print(format("{} {{:2000000}}", 5000000)))", "5000000 {:2000000}"}});
}

TEST(TextFunctions, Join_WritesValuesAsPrintDoes) {
  expect_outputs(
      {{R"(print(join(["a", 1, 2.0, [3, "b"], nil, w"π"], ", ")))", "a, 1, 2.0, [3, \"b\"], nil, π"},
       {R"(print(join([1, 2, 3]), join([1, 2], nil), join([1], "--"), join([1, 2], "--")))", "123 12 1 1--2"},
       {R"(print(len(join([])), len(join([], ",")), join(["k": 1, 2], "+"), join(["", ""], ",")))", "0 0 2+1 ,"},
       {R"(print(join(["a", "b"], w"≈")))", "a≈b"},
       {"join(5)", "!join: it takes a table, not an int"},
       {"join([], 5)", "!join: it takes a string, not an int"},
       {"join(nil)", "!join: it takes a table, not nil"}});
}

TEST(TextFunctions, Split_BySeparator_KeepsEmptyPieces) {
  expect_outputs({{R"(print(split("a,b,,c,", ","), split(",", ","), split("abc", ","), split("", ",")))",
                   R"(["a", "b", "", "c", ""] ["", ""] ["abc"] [""])"},
                  {R"(print(split("a--b---c", "--"), split("aaa", "aa"), split("a b", " "), split("a\r\nb", "\n")))",
                   R"(["a", "b", "-c"] ["", "a"] ["a", "b"] ["a\r", "b"])"},
                  {R"(print(split("1≈2≈3", "≈"), split(w"aπb", "π"), split("a,b", w",")))",
                   R"(["1", "2", "3"] ["a", "b"] ["a", "b"])"},
                  {R"(print(type(split(w"a", ",")[0]), join(split("a,b", ","), ",")))", "string a,b"},
                  {R"(split("a", ""))", "!split: the separator is empty"},
                  {R"(split("a", 5))", "!split: it takes a string, not an int"},
                  {R"(split(nil))", "!split: it takes a string, not nil"}});
}

TEST(TextFunctions, Split_AtBlanks_GivesWords) {
  expect_outputs({{R"(print(split("  one\ttwo\r\n three  "), split(""), split(" \n "), split("x")))",
                   R"(["one", "two", "three"] [] [] ["x"])"},
                  {R"(print(split("ä\u{a0}ö\u{3000}ü"), split(w" a b "), split("a b", nil)))",
                   R"(["ä", "ö", "ü"] ["a", "b"] ["a", "b"])"},
                  {R"(print(split("a\x85b \xa0")))",
                   "[\"a\x85"
                   "b\", \"\xa0\"]"}});
}

TEST(TextFunctions, Find_GivesThePositionOfACharacter) {
  expect_outputs(
      {{R"(print(find("hello", "l"), find("hello", "lo"), find("hello", "z"), find("hello", "hello!")))",
        "2 3 nil nil"},
       {R"(print(find("hello", "l", 2), find("hello", "l", 3), find("hello", "l", 4), find("abc", "a", nil)))",
        "2 3 nil 0"},
       {R"(print(find("πä≈x", "x"), find("πä≈x", "≈", 1), find("πä≈", "ä", 2), find(w"\u{1F600}b", "b")))",
        "3 2 nil 1"},
       {R"(print(find("abc", "", 0), find("abc", "", 3), find("abc", "", 4), find("", ""), find("", "a")))",
        "0 3 nil 0 nil"},
       {R"(print(find("abc", "c", 99), find("abc", "c", 9223372036854775807L), find("a", w"a")))", "nil nil 0"},
       {R"(find("abc", "a", -1))", "!find: the start -1 is negative"},
       {R"(find("abc", "a", 1.0))", "!find: it takes an integer, not a real"},
       {R"(find(5, "a"))", "!find: it takes a string, not an int"},
       {R"(find("a", nil))", "!find: it takes a string, not nil"}});
}

TEST(TextFunctions, PartsOfCharacters_AreNotFound) {
  expect_outputs(
      {{R"(print(find("π", "\x80"), find("\x80π", "\x80"), find("π\x80", "\x80"), find("π", "\xcf")))", "nil 0 1 nil"},
       {R"(print(find("\xcf\xcf\x80", "\xcf"), find("ab\u{1F600}", "\x9f"), find("\x80\x80\x80\x80", "\x80", 3)))",
        "0 nil 3"},
       {R"(print(len(replace("π", "\x80", "")), len(split("ππ", "\x80")), split("a\xff", "\xff")))",
        R"(1 1 ["a", ""])"}});
}

TEST(TextFunctions, Replace_ExchangesEveryOccurrence) {
  expect_outputs(
      {{R"(print(replace("a.b.c", ".", "--"), replace("aaa", "aa", "b"), replace("abc", "x", "y")))", "a--b--c ba abc"},
       {R"(print(replace("abc", "b", ""), len(replace("", "a", "b")), replace("πxπ", "π", w"≈")))", "ac 0 ≈x≈"},
       {R"(print(replace("a", "a", "aa"), replace("one\r\ntwo", "\r\n", "\n") == "one\ntwo"))", "aa 1"},
       {R"(replace("abc", "", "x"))", "!replace: the part to replace is empty"},
       {R"(replace("abc", "a", 1))", "!replace: it takes a string, not an int"},
       {R"(replace("abc", "a"))", "!replace: it takes 3 arguments, not 2"}});
}

TEST(TextFunctions, Trim_TakesBlanksFromBothEnds) {
  expect_outputs({{R"(print(trim("  a b\t\r\n") + "|" + trim("") + "|" + trim(" \n ") + "|" + trim("x")))", "a b|||x"},
                  {R"(print(trim("\u{a0}\u{2003}π\u{3000}\u{85}") + "|", trim(w" w ") + "|"))", "π| w|"},
                  {R"(print(trim("\x85a\xa0") == "\x85a\xa0"))", "1"},
                  {"trim(5)", "!trim: it takes a string, not an int"}});
}

TEST(TextFunctions, UpperAndLower_KnowLettersBeyondAscii) {
  expect_outputs(
      {{R"(print(upper("abc xyz 1π ä é ß я"), lower("ABC XYZ 1Π Ä É Я")))", "ABC XYZ 1Π Ä É ß Я abc xyz 1π ä é я"},
       {R"(print(upper(w"wide"), len(upper("")), upper("\xe4\xff") == "\xe4\xff", lower("\0A") == "\0a"))",
        "WIDE 0 1 1"},
       {"upper(5)", "!upper: it takes a string, not an int"},
       {"lower(nil)", "!lower: it takes a string, not nil"}});
}

}  // namespace
}  // namespace hvm::testing
