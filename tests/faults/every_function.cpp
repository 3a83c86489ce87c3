// faults/every_function.cpp: at its end the program has run every function of the module with failing memory

#include <gtest/gtest.h>

#include "support/functions.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

class EveryFunction : public ::testing::Environment {
  void TearDown() override {
    if (::testing::GTEST_FLAG(filter) != "*") return;  // some of the tests alone
    for (const auto& function : all_functions())
      EXPECT_EQ(Module::asked().count(function.name), 1u) << "no fault test runs " << function.name;
  }
};

// The framework owns it.
[[maybe_unused]] ::testing::Environment* const every_function = ::testing::AddGlobalTestEnvironment(new EveryFunction);

}  // namespace
}  // namespace arrayfold::test
