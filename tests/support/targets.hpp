// support/targets.hpp: every processor target that the machine supports
//
// The kernels are compiled for several targets, and Highway chooses among them at run time. Its choice is one for the
// whole process, the module under test included.

#pragma once

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>
#include <hwy/targets.h>

namespace arrayfold::test {

/// Lets the kernels choose among these targets alone; 0 brings the machine's own choice back.
inline void choose_among(std::int64_t targets) {
  hwy::SetSupportedTargetsForTest(targets);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

/// Whether the loops of a target fuse products with sums.
inline bool fuses_products(std::int64_t target) {
#ifdef __x86_64__
  // Highway numbers better targets lower.
  return target <= HWY_AVX2;
#else
  return target != HWY_SCALAR;
#endif
}
/// The same of the target that the kernels choose.
inline bool fuses_products() { return fuses_products(hwy::SupportedAndGeneratedTargets().front()); }

/// Makes the kernels run on one target as long as it lives.
class OnTarget {
 public:
  explicit OnTarget(std::int64_t target) : trace_(__FILE__, __LINE__, hwy::TargetName(target)) { choose_among(target); }
  ~OnTarget() { choose_among(0); }
  OnTarget(const OnTarget&) = delete;
  OnTarget& operator=(const OnTarget&) = delete;

 private:
  testing::ScopedTrace trace_;
};

/// Calls `run()` on each target in turn, the best one first.
template <class Run>
void on_each_target(Run run) {
  const std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
  ASSERT_FALSE(targets.empty());
#ifdef __x86_64__
  ASSERT_EQ(targets.back(), HWY_SCALAR) << "every processor has it";
#endif
  for (const std::int64_t target : targets) {
    const OnTarget chosen(target);
    run();
  }
}

}  // namespace arrayfold::test
