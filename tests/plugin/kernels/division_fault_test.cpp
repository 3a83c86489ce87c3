// kernels/division_fault_test.cpp: ending the process where a division has no quotient, whatever the host does with
// SIGFPE

#include "kernels/division_fault.hpp"

#include <signal.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

namespace arrayfold {
namespace {

const auto faulted = ::testing::KilledBySignal(SIGFPE);

template <class T>
void expect_faults() {
  constexpr T smallest = std::numeric_limits<T>::min();
  // The result is asked for: without it the compiler leaves the division out.
  [[maybe_unused]] volatile T result = 0;
  for (const auto& [dividend, divisor] : {std::pair<T, T>{7, 0}, std::pair<T, T>{smallest, -1}}) {
    EXPECT_EXIT(result = quotient_or_fault<T>(dividend, divisor), faulted, "");
    EXPECT_EXIT(result = remainder_or_fault<T>(dividend, divisor), faulted, "");
  }
  EXPECT_EQ(quotient_or_fault<T>(smallest + 1, -1), std::numeric_limits<T>::max());
  EXPECT_EQ(quotient_or_fault<T>(smallest, 1), smallest);
  EXPECT_EQ(remainder_or_fault<T>(-7, 2), -1);
}

TEST(DivisionFaultDeathTest, OfDivisionsWithoutAQuotient_EndsTheProcess) {
  expect_faults<std::int32_t>();
  expect_faults<std::int64_t>();
}

void return_from_signal(int) {}
[[noreturn]] void leave_process(int) { _Exit(7); }

/// Divides with the signal handled like this.
void divide_with(void (*handler)(int)) {
  signal(SIGFPE, handler);
  end_by_division_fault();
}

TEST(DivisionFaultDeathTest, WithASignalThatIsIgnored_EndsTheProcess) {
  EXPECT_EXIT(divide_with(SIG_IGN), faulted, "");
}

TEST(DivisionFaultDeathTest, WithAHandlerThatReturns_EndsTheProcess) {
  EXPECT_EXIT(divide_with(return_from_signal), faulted, "");
}

TEST(DivisionFaultDeathTest, WithAHandlerThatLeaves_IsTheHandlers) {
  EXPECT_EXIT(divide_with(leave_process), ::testing::ExitedWithCode(7), "");
}

void divide_with_signal_blocked() {
  sigset_t signals;
  sigfillset(&signals);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  end_by_division_fault();
}

TEST(DivisionFaultDeathTest, WithASignalThatIsBlocked_EndsTheProcess) {
  EXPECT_EXIT(divide_with_signal_blocked(), faulted, "");
}

}  // namespace
}  // namespace arrayfold
