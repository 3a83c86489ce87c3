// refhost/cli/division_test.cpp: integer divisions of the arrayfold module that are faults of the processor

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const char* const divided = "a = xlinspace(-2147483648, -2147483646, 3); l = xlinspace(1L, 3L, 3)\n";

Outcome run_division(const std::string& statement, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"--module", module_path("arrayfold"), "--warnings", "off"});
  options.insert(options.end(), {"-e", divided + statement});
  return run_hvm(options);
}

void expect_fault(const std::string& statement, const std::vector<std::string>& options = {}) {
  const Outcome outcome = run_division(statement, options);
  EXPECT_EQ(outcome.signal, SIGFPE) << statement;
  EXPECT_THAT(outcome.err, StartsWith("hvm: <command line>:2: the module ended the process: SIGFPE")) << statement;
}

TEST(IntegerDivision, ByAZeroAmongTheElements_EndsTheProcessAndIsReportedWithTheLine) {
  for (const char* statement : {"a / xlinspace(0, 2, 3)", "a % xlinspace(0, 2, 3)", "a /= xlinspace(-2, 0, 3)",
                                "a %= xlinspace(-2, 0, 3)", "l / (l - 2)", "l % (l - 2)", "l /= l - 2"})
    expect_fault(statement);
}

TEST(IntegerDivision, BeyondTheRange_EndsTheProcessAndIsReportedWithTheLine) {
  for (const char* statement : {"a / -1", "a % -1", "a /= -1", "a / xlinspace(-1, -1, 1)"}) expect_fault(statement);
}

TEST(IntegerDivision, ByAZeroNumber_IsGuarded) {
  for (const char* statement : {"a / 0", "0 / a", "a % 0.5", "a /= 0", "l %= 0"}) {
    const Outcome outcome = run_division(statement);
    EXPECT_EQ(outcome.status, 1) << statement;
    EXPECT_THAT(outcome.err, HasSubstr("of an integer array with zero")) << statement;
  }
}

TEST(IntegerDivision, ByAZeroNumber_IsTheProcessorsWhenUnchecked) {
  for (const char* statement : {"a / 0", "0 / a", "a % 0.5", "a /= 0", "l %= 0"})
    expect_fault(statement, {"--unchecked"});
}

}  // namespace
}  // namespace hvm::testing
