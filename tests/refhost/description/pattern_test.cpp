// refhost/description/pattern_test.cpp: regular expressions

#include "description/pattern.hpp"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace hvm::description {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

TEST(Pattern, WholeTexts_Match) {
  const Pattern pattern("fewer than (\\w+) arguments?");
  EXPECT_THAT(pattern.match("fewer than two arguments"), Optional(ElementsAre("fewer than two arguments", "two")));
  EXPECT_FALSE(pattern.match("fewer than two arguments, or none"));
  EXPECT_FALSE(pattern.match("no fewer than two arguments"));
  EXPECT_FALSE(pattern.match(""));
}

TEST(Pattern, Alternatives_GiveTheLongest) {
  const Pattern pattern("(`\\w+`|`\\w+` or `\\w+`) is negative");
  EXPECT_THAT(pattern.match("`a` or `b` is negative"), Optional(ElementsAre("`a` or `b` is negative", "`a` or `b`")));
}

TEST(Pattern, GroupsWithoutPart_AreEmpty) {
  EXPECT_THAT(Pattern("`(\\w+)`(, \\.\\.\\.)?").match("`a`"), Optional(ElementsAre("`a`", "a", "")));
}

TEST(Pattern, MatchesInside_StandInTheirOrder) {
  EXPECT_THAT(Pattern("`(\\w+)`").matches_in("`a` and `long_name`, not c"),
              ElementsAre(ElementsAre("`a`", "a"), ElementsAre("`long_name`", "long_name")));
  EXPECT_THAT(Pattern("`(\\w+)`").matches_in("none"), IsEmpty());
  EXPECT_THAT(Pattern("^a").matches_in("aa"), ElementsAre(ElementsAre("a")));
}

TEST(Pattern, MatchesWithoutCharacters_GoOn) {
  EXPECT_THAT(Pattern("b*").matches_in("ab"), ElementsAre(ElementsAre(""), ElementsAre("b"), ElementsAre("")));
}

TEST(Pattern, WrongExpressions_AreRefused) { EXPECT_THROW(Pattern("(a"), std::invalid_argument); }

}  // namespace
}  // namespace hvm::description
