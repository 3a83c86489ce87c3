// self_contained/processor_targets_test.cpp: the module for closed hosts takes the target that Highway's library takes

#include <hwy/base.h>
#include <hwy/targets.h>

#include <dlfcn.h>

#include <csignal>
#include <cstdint>

#include <gtest/gtest.h>

namespace {

// Every target gives the same results: a wrong one would only cost time.
TEST(ProcessorTargets, AreThoseOfHighwaysLibrary) {
  void* const library = dlopen("libhwy.so.1", RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  void* const symbol = dlsym(library, "_ZN3hwy16SupportedTargetsEv");
  ASSERT_NE(symbol, nullptr) << dlerror();
  const auto of_library = reinterpret_cast<std::int64_t (*)()>(symbol);
  ASSERT_NE(of_library, &hwy::SupportedTargets);
  EXPECT_EQ(hwy::SupportedTargets() & HWY_TARGETS, of_library() & HWY_TARGETS);
  EXPECT_EQ(hwy::SupportedTargets() & ~HWY_TARGETS, 0) << "loops of these targets are not compiled";
}

TEST(ProcessorTargets, TheChosenOne_IsChosenOnce) {
  EXPECT_EQ(&hwy::GetChosenTarget(), &hwy::GetChosenTarget());
  EXPECT_FALSE(hwy::GetChosenTarget().IsInitialized());
}

TEST(ProcessorTargetsDeathTest, AFailedAssertionOfTheHeaders_EndsTheProcessWithItsWords) {
  EXPECT_EXIT(hwy::Abort("vectors.h", 7, "%d lanes of %s", 3, "floats"), ::testing::KilledBySignal(SIGABRT),
              "vectors.h:7: 3 lanes of floats");
}

}  // namespace
