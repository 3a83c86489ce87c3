// refhost/description/conditions_test.cpp: the sentences of the columns When and What happens

#include "description/conditions.hpp"

#include <ostream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace hvm::description {
namespace {

const std::vector<std::string> arguments = {"a", "b", "c", "n"};

Json condition(const std::string& sentence) { return read_condition(sentence, arguments); }

/// What the exception for this sentence says.
std::string fault(const std::string& sentence) {
  try {
    const Json read = condition(sentence);
    return "read as " + read.dump();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

struct Phrase {
  const char* sentence;
  const char* condition;
};

void PrintTo(const Phrase& phrase, std::ostream* out) { *out << phrase.sentence; }

class Phrases : public ::testing::TestWithParam<Phrase> {};

TEST_P(Phrases, AreReadAsTheirCondition) {
  EXPECT_EQ(condition(GetParam().sentence), Json::parse(GetParam().condition)) << GetParam().sentence;
}

INSTANTIATE_TEST_SUITE_P(Counts, Phrases,
                         ::testing::Values(Phrase{"no argument", R"({"arguments_below": 1})"},
                                           Phrase{"fewer than one argument", R"({"arguments_below": 1})"},
                                           Phrase{"fewer than three arguments", R"({"arguments_below": 3})"},
                                           Phrase{"fewer than 2 arguments", R"({"arguments_below": 2})"},
                                           Phrase{"more than three arguments", R"({"arguments_above": 3})"},
                                           Phrase{"every call", R"({"always": true})"},
                                           Phrase{"every other call", R"({"always": true})"}));

INSTANTIATE_TEST_SUITE_P(
    Kinds, Phrases,
    ::testing::Values(
        Phrase{"`a` is no object", R"({"of": ["a"], "kind_not_in": ["object"]})"},
        Phrase{"`a` or `b` is no object", R"({"of": ["a", "b"], "kind_not_in": ["object"]})"},
        Phrase{"`a`, `b` or `c` is no number", R"({"of": ["a", "b", "c"], "kind_not_in": ["int", "int64", "real"]})"},
        Phrase{"`b` is no number or array",
               R"({"of": ["b"], "kind_not_in": ["int", "int64", "real", "int array", "int64 array", "double array",
                   "bool array"]})"},
        Phrase{"an argument is no number", R"({"of": "any", "kind_not_in": ["int", "int64", "real"]})"},
        Phrase{"an argument is a table", R"({"of": "any", "kind_in": ["table"]})"},
        Phrase{"`a` is a table", R"({"of": ["a"], "kind_in": ["table"]})"},
        Phrase{"`a` is an int or int64 array", R"({"of": ["a"], "kind_in": ["int array", "int64 array"]})"},
        Phrase{"`a` or `b` is a bool array", R"({"of": ["a", "b"], "kind_in": ["bool array"]})"},
        Phrase{"`a` and `b` are bool arrays",
               R"({"all": [{"of": ["a"], "kind_in": ["bool array"]}, {"of": ["b"], "kind_in": ["bool array"]}]})"},
        Phrase{"`a` and `b` are of different kinds", R"({"of": ["a", "b"], "kinds_differ": true})"}));

INSTANTIATE_TEST_SUITE_P(
    Shapes, Phrases,
    ::testing::Values(
        Phrase{"`a` has no dimension", R"({"of": ["a"], "dimensions_below": 1})"},
        Phrase{"`a` has fewer than two dimensions", R"({"of": ["a"], "dimensions_below": 2})"},
        Phrase{"`a` or `b` has more than 2 dimensions", R"({"of": ["a", "b"], "dimensions_above": 2})"},
        Phrase{"`a` has another number of dimensions than two", R"({"of": ["a"], "dimensions_not": 2})"},
        Phrase{"`a` has no elements", R"({"of": ["a"], "empty": true})"},
        Phrase{"the last two extents of `a` differ", R"({"of": ["a"], "not_square": true})"},
        Phrase{"the first extents of `a` and `b` differ", R"({"of": ["a", "b"], "first_extents_differ": true})"},
        Phrase{"`b` has fewer rows than `a`", R"({"of": ["b", "a"], "fewer_rows": true})"},
        Phrase{"`b` has fewer elements than `a` along its first dimension", R"({"of": ["b", "a"], "shorter": true})"},
        Phrase{"`a` or `b` has no elements under a first extent that is not 0, as in shape (2, 0)",
               R"({"of": ["a", "b"], "empty_rows": true})"},
        Phrase{"the extents of `a` and `b` that are summed over differ",
               R"({"of": ["a", "b"], "summed_extents_differ": true})"},
        Phrase{"the shapes of `a` and `b` do not broadcast", R"({"of": ["a", "b"], "no_broadcast": true})"}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, Phrases,
    ::testing::Values(Phrase{"`n` is negative", R"({"of": ["n"], "below": 0})"},
                      Phrase{"an extent is negative", R"({"of": "any", "below": 0})"},
                      Phrase{"an argument is negative", R"({"of": "any", "below": 0})"},
                      Phrase{"an extent is beyond 32 bits", R"({"of": "any", "beyond_32_bits": true})"},
                      Phrase{"an argument is beyond 32 bits", R"({"of": "any", "beyond_32_bits": true})"},
                      Phrase{"`n` is 0", R"({"of": ["n"], "equals": 0})"},
                      Phrase{"`n` is beyond 32 bits", R"({"of": ["n"], "beyond_32_bits": true})"},
                      Phrase{"`a` is an int or int64 array, and `b` is 0",
                             R"({"all": [{"of": ["a"], "kind_in": ["int array", "int64 array"]},
                                         {"of": ["b"], "equals": 0}]})"}));

INSTANTIATE_TEST_SUITE_P(Memory, Phrases,
                         ::testing::Values(Phrase{"no memory for the result", R"({"no_memory": true})"},
                                           Phrase{"the result does not fit into memory", R"({"no_memory": true})"},
                                           Phrase{"the results or a copy of the elements do not fit into memory",
                                                  R"({"no_memory": true})"}));

INSTANTIATE_TEST_SUITE_P(OnlyWhatHappenedTells, Phrases,
                         ::testing::Values(Phrase{"`a` is singular", R"({"told": true})"},
                                           Phrase{"the moon is full", R"({"told": true})"},
                                           Phrase{"`a` is singular, and `b` is 0", R"({"told": true})"},
                                           Phrase{"as of `xarange(0, 2147483647, 2)`", R"({"told": true})"},
                                           Phrase{"an extent is no int", R"({"told": true})"}));

TEST(Sentences, NameArgumentsOfThePageAlone) {
  EXPECT_EQ(fault("`d` is no number"), "`d` is no argument of the page");
  EXPECT_EQ(fault("`a` or `start` is negative"), "`start` is no argument of the page");
  EXPECT_EQ(fault("`rank` is too high"), "`rank` is no argument of the page");
}

TEST(Sentences, NameKindsThatThereAre) {
  EXPECT_EQ(fault("`a` is no matrix"), "'matrix' is no kind of value");
  EXPECT_EQ(fault("`a` is a double arrays"), "'double arrays' is no kind of value");
  EXPECT_EQ(fault("an argument is a float"), "'float' is no kind of value");
  EXPECT_EQ(fault("`a` and `b` are float arrays"), "'float array' is no kind of value");
}

TEST(Sentences, CountInWordsThatThereAre) {
  EXPECT_EQ(fault("fewer than many arguments"), "'many' is no count");
  EXPECT_EQ(fault("`a` has more than twenty dimensions"), "'twenty' is no count");
}

TEST(Outcomes, AreThoseOfTheList) {
  EXPECT_EQ(read_outcome("the call fails").name, "fails");
  EXPECT_EQ(read_outcome("gives nothing").name, "nothing");
  EXPECT_EQ(read_outcome("hvm refuses the call").name, "refused");
  EXPECT_EQ(read_outcome("ends the process").name, "ends");
  EXPECT_EQ(read_outcome("the call fails").exception, "");
}

TEST(Outcomes, ThatThrow_HaveTypeAndWords) {
  const Outcome outcome = read_outcome("throws std::runtime_error: Dot: shape mismatch.");
  EXPECT_EQ(outcome.name, "throws");
  EXPECT_EQ(outcome.exception, "std::runtime_error: Dot: shape mismatch.");
}

TEST(Outcomes, OutsideOfTheList_AreFaults) {
  for (const char* cell : {"", "0", "The call fails", "the call fails.", "throws", "throws std::bad_alloc",
                           "throws std::bad_alloc: ", "gives nil"}) {
    try {
      read_outcome(cell);
      FAIL() << cell;
    } catch (const std::invalid_argument& error) {
      EXPECT_THAT(error.what(), ::testing::HasSubstr("'" + std::string(cell) + "' is none of: the call fails"));
    }
  }
}

}  // namespace
}  // namespace hvm::description
