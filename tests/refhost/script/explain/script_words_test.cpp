// refhost/script/explain/script_words_test.cpp: parts of a script as its text has them

#include "script/explain/script_words.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace hvm::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ScriptWords, ArgumentsEndAtCommas_ButNotWithinBracketsStringsAndComments) {
  EXPECT_THAT(argument_texts("f(a, [1, 2], g(b, c))"), ElementsAre("a", "[1, 2]", "g(b, c)"));
  EXPECT_THAT(argument_texts(R"(f("a\", b", c))"), ElementsAre(R"("a\", b")", "c"));
  EXPECT_THAT(argument_texts("f(a,  # b, c)\n  d)"), ElementsAre("a", "# b, c)\n  d"));
  EXPECT_THAT(argument_texts("f( )"), IsEmpty());
  EXPECT_THAT(argument_texts("f"), IsEmpty());
}

}  // namespace
}  // namespace hvm::testing
