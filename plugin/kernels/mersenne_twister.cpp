// kernels/mersenne_twister.cpp: the next state and outputs of MT19937, for each processor target

#include "kernels/mersenne_twister.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/mersenne_twister.cpp"
#include <hwy/foreach_target.h>

#include "kernels/dispatch.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

using Words = hn::ScalableTag<std::uint32_t>;

/// word = distant ^ A(upper bit of word, lower bits of next), for `count` words. `distant` is ahead of the words, or
/// behind them by more than a register.
void twist(std::uint32_t* words, const std::uint32_t* distant, std::size_t count) {
  for_each_register(Words(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const auto upper = hn::And(hn::LoadU(tag, words + i), hn::Set(tag, 0x80000000u));
    const auto lower = hn::And(hn::LoadU(tag, words + i + 1), hn::Set(tag, 0x7FFFFFFFu));
    const auto joined = hn::Or(upper, lower);
    const auto odd = hn::Eq(hn::And(joined, hn::Set(tag, 1u)), hn::Set(tag, 1u));
    const auto twisted = hn::Xor(hn::ShiftRight<1>(joined), hn::IfThenElseZero(odd, hn::Set(tag, 0x9908B0DFu)));
    hn::StoreU(hn::Xor(hn::LoadU(tag, distant + i), twisted), tag, words + i);
  });
}

void renew(std::uint32_t* state, std::size_t size, std::uint32_t* outputs) {
  constexpr std::size_t distance = 397;
  twist(state, state + distance, size - distance);
  twist(state + size - distance, state, distance - 1);
  // The last word is followed by the first.
  std::uint32_t last[] = {state[size - 1], state[0]};
  twist(last, state + distance - 1, 1);
  state[size - 1] = last[0];

  for_each_register(Words(), size, [=](auto tag, std::size_t i) HWY_ATTR {
    auto word = hn::LoadU(tag, state + i);
    word = hn::Xor(word, hn::ShiftRight<11>(word));
    word = hn::Xor(word, hn::And(hn::ShiftLeft<7>(word), hn::Set(tag, 0x9D2C5680u)));
    word = hn::Xor(word, hn::And(hn::ShiftLeft<15>(word), hn::Set(tag, 0xEFC60000u)));
    hn::StoreU(hn::Xor(word, hn::ShiftRight<18>(word)), tag, outputs + i);
  });
}

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

constexpr decltype(&HWY_STATIC_DISPATCH(renew)) renew_by_target[] = ARRAYFOLD_LOOPS(renew);

MersenneTwister::MersenneTwister(std::uint32_t seed) {
  state_[0] = seed;
  for (std::uint32_t i = 1; i < size; ++i) state_[i] = 1812433253u * (state_[i - 1] ^ (state_[i - 1] >> 30)) + i;
}

void MersenneTwister::renew() {
  renew_by_target[target_index()](state_, size, outputs_);
  drawn_ = 0;
}

}  // namespace arrayfold
#endif
