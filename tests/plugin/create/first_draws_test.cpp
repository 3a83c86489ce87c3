// create/first_draws_test.cpp: the first random numbers of a process
//
// A program of its own with this one test, since whatever draws moves the engine on for the process.

#include <random>

#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

using FirstDraws = ModuleTest;

TEST_F(FirstDraws, AreTheSameInEveryProcess) {
  // Nothing of this draws.
  EXPECT_EQ(call("xrand", {}).returned, 0);
  EXPECT_EQ(call("xrand", {Value(3), Value("text")}).returned, 0);
  EXPECT_EQ(call("xrand", {Value(0), Value(3)}).returned, 1);
  EXPECT_EQ(call("xrandn", {Value(0)}).returned, 1);
  EXPECT_EQ(call("xrandint", {Value(0), Value(10)}).returned, 1);
  EXPECT_EQ(call("xchoice", {}).returned, 1);
  EXPECT_THROW(call("xrand", {Value(-1)}), std::bad_alloc);
  EXPECT_EQ(call("xshuffle", {array_of<XTInt>(ctx(), {1}, {7})}).returned, 1);
  const auto uniform = elements_of<XTDouble>(call("xrand", {Value(3)}).result);
  EXPECT_EQ(uniform, (std::vector<double>{0.1354770042967805, 0.8350085899945795, 0.96886777112423139}));

  // From here on as an engine of the algorithm's default seed does.
  std::mt19937 engine(5489);
  engine.discard(6);
  std::normal_distribution<double> normal(0.0, 1.0);
  for (const double drawn : elements_of<XTDouble>(call("xrandn", {Value(5)}).result)) EXPECT_EQ(drawn, normal(engine));
}

}  // namespace
}  // namespace arrayfold::test
