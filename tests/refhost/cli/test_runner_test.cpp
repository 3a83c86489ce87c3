// refhost/cli/test_runner_test.cpp: hvm --test, a process for each script below a directory

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

TEST(TestRunner, OfADirectory_CountsTheScriptsBelow) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1");
  place.write("b/c.hvm", "print(1) # expect: 2");
  place.write("b/d.hvm", "print(1) # expect: 1");
  place.write("b/e.txt", "no script");
  const Outcome outcome = run_toy({"--test", place.path()});
  EXPECT_EQ(outcome.out, place.path() + "/b/c.hvm:1: expected 2; got 1\n2 passed, 1 failed\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, OfAnEmptyDirectory_DoesNotPass) {
  const Workplace place;
  EXPECT_EQ(run_toy({"--test", place.path()}).status, 1);
}

TEST(TestRunner, ScriptsDoNotSeeEachOther) {
  const Workplace place;
  place.write("a.hvm", "x = 1");
  place.write("b.hvm", "print(x) # expect error: there is no variable 'x'");
  EXPECT_EQ(run_toy({"--test", place.path()}).out, "2 passed, 0 failed\n");
}

TEST(TestRunner, AScriptThatEndsTheProcess_FailsAlone) {
  const Workplace place;
  const std::string fatal = place.write("a.hvm", "print(1) # expect: 1\ntoy_end(\"segv\")");
  place.write("b.hvm", "print(1) # expect: 1");
  const Outcome outcome = run_toy({"--test", place.path()});
  EXPECT_EQ(outcome.out, fatal + ": ended by signal 11\n1 passed, 1 failed\n");
  EXPECT_THAT(outcome.err, HasSubstr(fatal + ":2: the module ended the process: SIGSEGV"));
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, WhatAScriptLeavesInTheModule_IsNotThereForTheNext) {
  const Workplace place;
  place.write("a.hvm", "toy_leak()");
  place.write("b.hvm", "print(1) # expect: 1");
  const Outcome outcome = run_toy({"--leaks", "--test", place.path()});
  EXPECT_EQ(outcome.out, "1 passed, 1 failed\n");
  EXPECT_THAT(outcome.err, HasSubstr("1 blocks"));
  EXPECT_THAT(outcome.err, HasSubstr("0 blocks"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(run_toy({"--test", place.path()}).out, "2 passed, 0 failed\n");
}

TEST(TestRunner, AScriptBeyondTheTimeLimit_FailsAlone) {
  const Workplace place;
  const std::string endless = place.write("a.hvm", "while 1\nend");
  place.write("b.hvm", "print(1) # expect: 1");
  const Outcome outcome = run_toy({"--time-limit", "0.2", "--test", place.path()});
  EXPECT_EQ(outcome.out, endless + ": took longer than 0.2 s\n1 passed, 1 failed\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, TheTimeLimit_MayBeLiftedAndMustBeANumber) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1");
  EXPECT_EQ(run_toy({"--time-limit", "0", "--test", place.path()}).out, "1 passed, 0 failed\n");
  EXPECT_EQ(run_toy({"--time-limit", "-1", "--test", place.path()}).status, 2);
  EXPECT_EQ(run_toy({"--time-limit", "soon", "--test", place.path()}).status, 2);
  EXPECT_EQ(run_toy({"--time-limit", "1", "-e", "print(1)"}).status, 2);
}

TEST(TestRunner, AFolderThatCannotBeRead_IsReportedAndFails) {
  const Workplace place;
  place.write("a/a.hvm", "print(1) # expect: 1");
  place.write("b/b.hvm", "print(1) # expect: 1");
  place.write("c/c.hvm", "print(1) # expect: 1");
  const std::string closed = place.path() + "/b";
  std::filesystem::permissions(closed, std::filesystem::perms::none);
  Conditions conditions;
  conditions.obeys_permissions = true;
  const Outcome outcome = run_toy({"--test", place.path()}, conditions);
  std::filesystem::permissions(closed, std::filesystem::perms::owner_all);
  EXPECT_EQ(outcome.out, closed + ": the folder cannot be read: Permission denied\n2 passed, 0 failed\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, AScriptThatCannotBeRead_FailsAlone) {
  const Workplace place;
  const std::string closed = place.write("a.hvm", "print(1) # expect: 1");
  place.write("b.hvm", "print(1) # expect: 1");
  std::filesystem::permissions(closed, std::filesystem::perms::none);
  Conditions conditions;
  conditions.obeys_permissions = true;
  const Outcome outcome = run_toy({"--test", place.path()}, conditions);
  EXPECT_EQ(outcome.out, "1 passed, 1 failed\n");
  EXPECT_THAT(outcome.err, HasSubstr("the script " + closed + " cannot be opened: Permission denied"));
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, OutputThatCannotBeWritten_GivesStatusOne) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1");
  Conditions conditions;
  conditions.out = Stream::full;
  EXPECT_EQ(run_toy({"--test", place.path()}, conditions).status, 1);
}

/// Reads from a pipe until nobody can write into it any more, or `wanted` has come. False after twenty seconds.
bool read_until(int pipe_end, const std::string& wanted = "") {
  std::string text;
  while (wanted.empty() || text.find(wanted) == std::string::npos) {
    pollfd waiting{pipe_end, POLLIN, 0};
    if (poll(&waiting, 1, 20000) != 1) return false;
    char bytes[256];
    const ssize_t count = read(pipe_end, bytes, sizeof(bytes));
    if (count <= 0) return wanted.empty();
    text.append(bytes, static_cast<std::size_t>(count));
  }
  return true;
}

TEST(TestRunner, ItsEndBySignal_EndsTheRunningScript) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 2");
  place.write("b.hvm", "while 1\nend");
  const std::string module = module_path("toy_module");
  for (const int signal : {SIGTERM, SIGKILL}) {
    int output[2] = {-1, -1};
    ASSERT_EQ(pipe(output), 0);
    const pid_t child = fork();
    if (child == 0) {
      dup2(output[1], STDOUT_FILENO);
      close(output[0]);
      close(output[1]);
      execl(HVM_PROGRAM, HVM_PROGRAM, "--module", module.c_str(), "--test", place.path().c_str(), nullptr);
      _exit(127);
    }
    close(output[1]);
    // The second script begins right behind the report on the first one.
    EXPECT_TRUE(read_until(output[0], "got 1\n"));
    usleep(200000);
    kill(child, signal);
    waitpid(child, nullptr, 0);
    // The pipe ends when hvm and the script's process have.
    EXPECT_TRUE(read_until(output[0])) << "the script goes on";
    close(output[0]);
  }
}

}  // namespace
}  // namespace hvm::testing
