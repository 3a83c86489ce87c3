// refhost/cli/faults_test.cpp: a module that ends the process, and what is said of the script before it does

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

struct FaultRow {
  const char* how;
  int signal;
  const char* report;
};

TEST(Faults, InsideTheModule_AreReportedWithTheLineBeforeTheSameSignalEndsTheProcess) {
  const Workplace place;
  for (const FaultRow& row :
       {FaultRow{"fpe", SIGFPE, "SIGFPE"}, FaultRow{"segv", SIGSEGV, "SIGSEGV"}, FaultRow{"bus", SIGBUS, "SIGBUS"},
        FaultRow{"ill", SIGILL, "SIGILL"}, FaultRow{"abort", SIGABRT, "SIGABRT"},
        FaultRow{"overflow", SIGSEGV, "SIGSEGV"}, FaultRow{"terminate", SIGABRT, "std::terminate was called\n"},
        FaultRow{"throw", SIGABRT, "std::terminate was called with an exception of type toy::OwnError\n"}}) {
    const std::string script =
        place.write("fault.hvm", std::string("print(\"before\")\nfn f()\n  toy_end(\"") + row.how + "\")\nend\nf()");
    const Outcome outcome = run_toy({script});
    EXPECT_EQ(outcome.signal, row.signal) << row.how;
    EXPECT_EQ(outcome.out, "before\n") << row.how;
    EXPECT_EQ(outcome.err.rfind("hvm: " + script + ":3: the module ended the process: " + row.report, 0), 0u)
        << row.how << ": " << outcome.err;
  }
}

TEST(Faults, WhenAnObjectDies_AreReportedWithTheStatement) {
  const Outcome outcome = run_toy({"-e", "a = toy_int(1)\ntoy_end_with(a)\n\na = 0"});
  EXPECT_EQ(outcome.signal, SIGSEGV);
  EXPECT_EQ(outcome.err.rfind("hvm: <command line>:4: the process ends outside of a call of the module: SIGSEGV", 0),
            0u)
      << outcome.err;
}

TEST(Faults, AreReportedOnce) {
  const Outcome outcome = run_toy({"-e", "toy_end(\"terminate\")"});
  EXPECT_EQ(outcome.err, "hvm: <command line>:1: the module ended the process: std::terminate was called\n");
}

}  // namespace
}  // namespace hvm::testing
