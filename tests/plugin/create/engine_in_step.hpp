// create/engine_in_step.hpp: where the module's random engine stands
//
// One engine draws for all of a process, and no function returns its position. A test finds it: it draws two numbers
// and walks an engine of its own, from the algorithm's seed on, to the place that gives the same two. From there the
// two go in step, in whatever order tests run.

#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "support/module_test.hpp"
#include "support/same.hpp"

namespace arrayfold::test {

class RandomTest : public ModuleTest {
 protected:
  void SetUp() override { ASSERT_TRUE(walk_to(two_drawn())) << "the module draws from some other engine"; }

  /// Each test ends in step, too.
  void TearDown() override { expect_in_step("at the end"); }

  /// An engine in the state of the module's.
  static std::mt19937& engine() {
    static std::mt19937 mine;
    return mine;
  }

  /// Both engines stand at the same place, which moves on by two draws.
  void expect_in_step(const std::string& when) const {
    for (const double drawn : two_drawn()) EXPECT_EQ(drawn, uniform(engine())) << when;
  }

  template <class Engine>
  static double uniform(Engine& drawn_from) {
    return std::uniform_real_distribution<double>(0.0, 1.0)(drawn_from);
  }

  std::vector<double> two_drawn() const { return elements_of<XTDouble>(call("xrand", {Value(2)}).result); }

 private:
  /// Outputs of an engine, once more.
  struct Replay {
    using result_type = std::mt19937::result_type;
    static constexpr result_type min() { return std::mt19937::min(); }
    static constexpr result_type max() { return std::mt19937::max(); }
    result_type operator()() { return *next++; }
    const result_type* next;
  };

  /// Leaves the engine behind the first place from here on where these two come out.
  static bool walk_to(const std::vector<double>& drawn) {
    constexpr int farthest = 5'000'000;
    std::mt19937::result_type outputs[4] = {};
    for (int n = 1; n < farthest; ++n) {
      std::copy(outputs + 1, outputs + 4, outputs);
      outputs[3] = engine()();
      Replay replay{outputs};
      if (n >= 4 && uniform(replay) == drawn[0] && uniform(replay) == drawn[1]) return true;
    }
    return false;
  }
};

}  // namespace arrayfold::test
