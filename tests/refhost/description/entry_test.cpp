// refhost/description/entry_test.cpp: a page as its entry, and each of its faults with its line

#include "description/entry.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace hvm::description {
namespace {

const std::string page_text = R"page(# xone

Gives one.

## Synopsis

```text
xone(a)
xone(a, n)
xone(a, n, d0, ...)
```

## Examples

## Arguments

| Name | Accepts | Default | Meaning |
| --- | --- | --- | --- |
| `a` | double array, square matrix | | the numbers |
| `n` | number, read as int, 1 or more | 50 | how many |
| `d0`, ... | int | none | extents |

## Result

A number, of
every kind.

**Surprise: it is one.** It is always one,
whatever comes.

More.

## Failures

| When | What happens | Remedy |
| --- | --- | --- |
| no argument | the call fails | |
| `a` is no object | the call fails | pass an array |
| `n` is negative | throws std::bad_alloc: std::bad_alloc | pass `0` |

## See also
)page";

const Described function = {"xone", "reduce", "working", CallForm::function, 1, "docs/functions/xone.md"};

std::string changed(std::string text, const std::string& old, const std::string& fresh) {
  const std::size_t found = text.find(old);
  EXPECT_NE(found, std::string::npos) << old;
  return text.replace(found, old.size(), fresh);
}

Json entry(const std::string& text, const Described& described = function) {
  return entry_of(read_page("one.md", text), described);
}

/// The fault of the page with `old` replaced.
std::string fault(const std::string& old, const std::string& fresh, const Described& described = function) {
  try {
    entry(changed(page_text, old, fresh), described);
    return "none";
  } catch (const PageFault& fault) {
    return fault.what();
  }
}

TEST(Entries, HoldWhatThePageSays) {
  EXPECT_EQ(entry(page_text), Json::parse(R"json({
    "name": "xone", "family": "reduce", "status": "working", "summary": "Gives one.",
    "synopsis": ["xone(a)", "xone(a, n)", "xone(a, n, d0, ...)"], "least_arguments": 1, "most_arguments": null,
    "arguments": [
      {"name": "a", "accepts": "double array, square matrix", "kinds": ["double array"],
       "dimensions": {"least": 2, "most": 2}, "square": true, "default": null, "meaning": "the numbers"},
      {"name": "n", "accepts": "number, read as int, 1 or more", "kinds": ["int", "int64", "real"], "read_as": "int",
       "least": 1, "default": "50", "meaning": "how many"},
      {"name": "d0", "accepts": "int", "kinds": ["int"], "repeats": true, "default": "none", "meaning": "extents"}],
    "result": "A number, of every kind.",
    "failures": [
      {"when": "no argument", "condition": {"arguments_below": 1}, "outcome": "fails"},
      {"when": "`a` is no object", "condition": {"of": ["a"], "kind_not_in": ["object"]}, "outcome": "fails",
       "remedy": "pass an array"},
      {"when": "`n` is negative", "condition": {"of": ["n"], "below": 0}, "outcome": "throws",
       "exception": "std::bad_alloc: std::bad_alloc", "remedy": "pass `0`"}],
    "surprises": [{"title": "it is one.", "text": "It is always one, whatever comes."}],
    "page": "docs/functions/xone.md"})json"));
}

TEST(Entries, KeepTheOrderOfTheirKeys) {
  const std::string text = entry(page_text).dump();
  EXPECT_LT(text.find("\"name\""), text.find("\"family\""));
  EXPECT_LT(text.find("\"synopsis\""), text.find("\"arguments\""));
  EXPECT_LT(text.find("\"failures\""), text.find("\"page\""));
}

TEST(Entries, WithoutAnArgumentThatRepeats_HaveAGreatestCount) {
  const Json one = entry(changed(page_text, "| `d0`, ... | int | none | extents |\n", ""));
  EXPECT_EQ(one["most_arguments"], 2);
}

TEST(Entries, WithoutATableOfArguments_TakeNone) {
  std::string text = changed(page_text, "xone(a)\nxone(a, n)\nxone(a, n, d0, ...)", "xone()");
  const std::size_t start = text.find("| Name"), end = text.find("\n## Result");
  text.replace(start, end - start, "None.\n");
  const std::size_t rows = text.find("| `a` is no object"), last = text.find("\n## See also");
  text.replace(rows, last - rows, "");
  Described described = function;
  described.minimum = 0;
  EXPECT_EQ(entry(text, described)["most_arguments"], 0);
}

TEST(Entries, OfMethods_HaveTheirArrayApart) {
  std::string text = changed(page_text, "# xone", "# one");
  text = changed(text, "xone(a)\nxone(a, n)\nxone(a, n, d0, ...)", "a.one()\na.one(n, d0, ...)");
  const Described method = {"one", "object", "working", CallForm::method, -1, "one.md"};
  const Json one = entry(text, method);
  EXPECT_EQ(one["receiver"]["name"], "a");
  EXPECT_EQ(one["arguments"].size(), 2u);
  EXPECT_EQ(one["least_arguments"], 0);
}

TEST(Entries, OfOperators_HaveAnySynopsis) {
  std::string text = changed(page_text, "# xone", "# add");
  text = changed(text, "xone(a)\nxone(a, n)\nxone(a, n, d0, ...)", "a + n");
  EXPECT_EQ(entry(text, {"add", "object", "working", CallForm::operation, -1, "add.md"})["synopsis"],
            Json::array({"a + n"}));
}

TEST(Entries, TheKindOfAnEarlierArgument_IsNamed) {
  const Json one = entry(changed(page_text, "| int | none", "| number, of the kind of `a` | none"));
  EXPECT_EQ(one["arguments"][2]["kind_of"], "a");
}

TEST(Faults, OfTheTitle) { EXPECT_EQ(fault("# xone", "# xtwo"), "one.md:1: the title is not 'xone'"); }

TEST(Faults, OfTheSynopsis) {
  EXPECT_EQ(fault("```text\nxone(a)\nxone(a, n)\nxone(a, n, d0, ...)\n```", "None."),
            "one.md:5: the section has no block of code");
  EXPECT_EQ(fault("xone(a, n)", "xtwo(a, n)"), "one.md:9: the form does not begin with 'xone('");
  EXPECT_EQ(fault("xone(a)\n", ""), "one.md:8: the shortest form has 2 arguments, and the table 1 without a default");
  EXPECT_EQ(fault("xone(a)\n", "xone(@a(d0, d1), [b, c])\n"),
            "one.md:8: the shortest form has 2 arguments, and the table 1 without a default");
}

TEST(Faults, OfArguments) {
  EXPECT_EQ(fault("| `a` |", "| a |"), "one.md:19: 'a' is no name in backticks, perhaps with ', ...' behind it");
  EXPECT_EQ(fault("square matrix |", "square |"), "one.md:19: not in the vocabulary of Accepts: double array, square");
  EXPECT_EQ(fault("| the numbers |", "| |"), "one.md:19: the argument has no meaning");
  EXPECT_EQ(fault("| `n` |", "| `a` |"), "one.md:20: the argument `a` stands there twice");
  EXPECT_EQ(fault("| `n` |", "| `n`, ... |"), "one.md:21: an argument follows one that repeats");
  EXPECT_EQ(fault("| int | none", "| int, of the kind of `x` | none"), "one.md:21: `x` is no argument before this one");
  EXPECT_EQ(fault("| 50 | how many |", "| | how many |"),
            "one.md:15: the table has 2 arguments without a default, and functions.def 1");
  EXPECT_EQ(fault("| Name | Accepts |", "| Name | Kind |"),
            "one.md:17: the columns of the table are not 'Name | Accepts | Default | Meaning'");
}

TEST(Faults, OfAMethodWithoutItsArray) {
  std::string text = changed(page_text, "# xone", "# one");
  const std::size_t start = text.find("| Name"), end = text.find("\n## Result");
  text.replace(start, end - start, "None.\n");
  try {
    entry(text, {"one", "object", "working", CallForm::method, -1, "one.md"});
    FAIL();
  } catch (const PageFault& fault) {
    EXPECT_STREQ(fault.what(), "one.md:15: a method has a first row for its array");
  }
}

TEST(Faults, OfTheResult) {
  EXPECT_EQ(fault("A number, of\nevery kind.\n\n**Surprise: it is one.** It is always one,\nwhatever comes.\n\nMore.\n",
                  "| a |\n"),
            "one.md:23: the section has no paragraph");
  const std::string form = "one.md:28: a surprise is '**Surprise: title.** text'";
  EXPECT_EQ(fault("it is one.** It", "it is one** It"), form);
  EXPECT_EQ(fault("it is one.** It is always one,\nwhatever comes.", "it is one.**"), form);
  EXPECT_EQ(fault("**Surprise: it", "So: **Surprise: it"),
            "one.md:28: a surprise begins its paragraph with '**Surprise: '");
  EXPECT_EQ(fault("**Surprise: it", "**Surprise it"), "one.md:28: a surprise begins its paragraph with '**Surprise: '");
}

TEST(Faults, OfFailures) {
  EXPECT_EQ(fault("| no argument |", "| |"), "one.md:37: the row has no condition under When");
  EXPECT_EQ(fault("| no argument |", "| `b` is negative |"), "one.md:37: When: `b` is no argument of the page");
  EXPECT_EQ(fault("`a` is no object", "`a` is no matrix"), "one.md:38: When: 'matrix' is no kind of value");
  EXPECT_EQ(
      fault("| the call fails | |", "| fails | |"),
      "one.md:37: What happens: 'fails' is none of: the call fails; gives nothing; throws TYPE: words; hvm refuses "
      "the call; ends the process");
  EXPECT_EQ(fault("| `n` is negative |", "| no argument |"), "one.md:39: the condition stands there twice");
  EXPECT_EQ(fault("| no argument | the call fails | |", "| no argument | the call fails |"),
            "one.md:37: the row has 2 cells, not 3: 'When | What happens | Remedy'");
  EXPECT_EQ(fault("| When |", "| Situation |"),
            "one.md:35: the columns of the table are not 'When | What happens | Remedy'");
}

}  // namespace
}  // namespace hvm::description
