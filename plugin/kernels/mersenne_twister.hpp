// kernels/mersenne_twister.hpp: the random engine MT19937
//
// M. Matsumoto and T. Nishimura, "Mersenne Twister", ACM Transactions on Modeling and Computer Simulation 8 (1998). The
// outputs are those of std::mt19937. That one renews its state with a branch on a random bit, unless the compiler may
// use wide registers everywhere, and then takes three times as long.

#pragma once

#include <cstddef>
#include <cstdint>

namespace arrayfold {

/// A uniform random bit generator for the distributions of the standard library.
class MersenneTwister {
 public:
  // Distributions compute by the type of an output: it is that of std::mt19937.
  using result_type = std::uint_fast32_t;
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return 0xFFFFFFFF; }
  static constexpr std::uint32_t default_seed = 5489;

  explicit MersenneTwister(std::uint32_t seed = default_seed);

  result_type operator()() {
    if (drawn_ == size) renew();
    return outputs_[drawn_++];
  }

 private:
  static constexpr std::size_t size = 624;

  /// The next `size` outputs.
  void renew();

  std::uint32_t state_[size];
  std::uint32_t outputs_[size];
  std::size_t drawn_ = size;
};

}  // namespace arrayfold
