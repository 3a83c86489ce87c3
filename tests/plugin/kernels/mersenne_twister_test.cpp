// kernels/mersenne_twister_test.cpp: the random engine, on every target, against the standard library's

#include "kernels/mersenne_twister.hpp"

#include <random>

#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

TEST(MersenneTwister, DrawsWhatTheStandardEngineDraws) {
  on_each_target([] {
    for (const std::uint32_t seed : {MersenneTwister::default_seed, 0u, 1u, 0xFFFFFFFFu}) {
      MersenneTwister engine(seed);
      std::mt19937 standard(seed);
      // More than the state is long, many times.
      for (int i = 0; i < 20000; ++i) ASSERT_EQ(engine(), standard()) << "draw " << i << " of seed " << seed;
    }
  });
}

TEST(MersenneTwister, HasTheStandardEnginesTypeAndRange) {
  EXPECT_TRUE((std::is_same_v<MersenneTwister::result_type, std::mt19937::result_type>));
  EXPECT_EQ(MersenneTwister::min(), std::mt19937::min());
  EXPECT_EQ(MersenneTwister::max(), std::mt19937::max());
}

// C++ fixes the ten thousandth output of the default seed.
TEST(MersenneTwister, DrawsTheOutputThatTheStandardNames) {
  MersenneTwister engine;
  for (int i = 1; i < 10000; ++i) engine();
  EXPECT_EQ(engine(), 4123659995u);
}

}  // namespace
}  // namespace arrayfold::test
