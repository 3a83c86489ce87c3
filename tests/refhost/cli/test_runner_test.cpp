// refhost/cli/test_runner_test.cpp: hvm --test, a process for each script

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
  const Outcome outcome = run_tests({"--test", place.path()});
  EXPECT_EQ(outcome.out, place.path() + "/b/c.hvm:1: expected 2; got 1\n2 passed, 1 failed\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, OfAnEmptyDirectory_DoesNotPass) {
  const Workplace place;
  EXPECT_EQ(run_tests({"--test", place.path()}).status, 1);
}

TEST(TestRunner, ScriptsDoNotSeeEachOther) {
  const Workplace place;
  place.write("a.hvm", "x = 1");
  place.write("b.hvm", "print(x) # expect error: there is no variable 'x'");
  EXPECT_EQ(run_tests({"--test", place.path()}).out, "2 passed, 0 failed\n");
}

TEST(TestRunner, AScriptThatEndsTheProcess_FailsAlone) {
  const Workplace place;
  const std::string fatal = place.write("a.hvm", "print(1) # expect: 1\ntoy_end(\"segv\")");
  place.write("b.hvm", "print(1) # expect: 1");
  const Outcome outcome = run_tests({"--test", place.path()});
  EXPECT_EQ(outcome.out, fatal + ": ended by signal 11\n1 passed, 1 failed\n");
  EXPECT_THAT(outcome.err, HasSubstr(fatal + ":2: the module ended the process: SIGSEGV"));
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, AScriptWhoseModuleEndsTheProcessWithAGoodStatus_Fails) {
  const Workplace place;
  const std::string fatal = place.write("a.hvm", "print(1) # expect: 1\ntoy_end(\"exit\")\nprint(2) # expect: 3");
  place.write("b.hvm", "print(1) # expect: 1\nexit(0)");
  const Outcome outcome = run_tests({"--test", place.path()});
  EXPECT_EQ(outcome.out, fatal + ": the module ended the process\n1 passed, 1 failed\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, WhatAScriptLeavesInTheModule_IsNotThereForTheNext) {
  const Workplace place;
  place.write("a.hvm", "toy_leak()");
  place.write("b.hvm", "print(1) # expect: 1");
  const Outcome outcome = run_tests({"--leaks", "--test", place.path()});
  EXPECT_EQ(outcome.out, "1 passed, 1 failed\n");
  EXPECT_THAT(outcome.err, HasSubstr("1 blocks"));
  EXPECT_THAT(outcome.err, HasSubstr("0 blocks"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(run_tests({"--test", place.path()}).out, "2 passed, 0 failed\n");
}

TEST(TestRunner, AScriptBeyondTheTimeLimit_FailsAlone) {
  const Workplace place;
  const std::string endless = place.write("a.hvm", "while 1\nend");
  place.write("b.hvm", "print(1) # expect: 1");
  const Outcome outcome = run_tests({"--time-limit", "0.2", "--test", place.path()});
  EXPECT_EQ(outcome.out, endless + ": took longer than 0.2 s\n1 passed, 1 failed\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, TheTimeLimit_MayBeLiftedAndMustBeANumber) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1");
  EXPECT_EQ(run_tests({"--time-limit", "0", "--test", place.path()}).out, "1 passed, 0 failed\n");
  EXPECT_EQ(run_tests({"--time-limit", "-1", "--test", place.path()}).status, 2);
  EXPECT_EQ(run_tests({"--time-limit", "soon", "--test", place.path()}).status, 2);
  EXPECT_EQ(run_toy({"--time-limit", "1", "-e", "print(1)"}).status, 2);
}

TEST(TestRunner, TakesFilesAndFoldersAndRunsEachScriptOnce) {
  const Workplace place;
  const std::string c = place.write("c/c.hvm", "print(1) # expect: 2");
  const std::string a = place.write("a.hvm", "print(1) # expect: 3");
  const std::string text = place.write("b.txt", "print(1) # expect: 4");
  place.write("d.txt", "no script");
  const Outcome outcome = run_tests({"--test", c, text, place.path(), place.path()});
  EXPECT_EQ(outcome.out, a + ":1: expected 3; got 1\n" + text + ":1: expected 4; got 1\n" + c +
                             ":1: expected 2; got 1\n0 passed, 3 failed\n");
}

TEST(TestRunner, Filter_FitsAPartOfThePathBelowTheFolder) {
  const Workplace place;
  for (const char* name : {"sums/xsum.hvm", "sums/xprod.hvm", "xsum.hvm", "other.hvm"})
    place.write(std::string("tests/") + name, "x = 1");
  const std::string folder = place.path() + "/tests";
  const auto passed = [&](const std::string& filter) { return run_tests({"--test", folder, "--filter", filter}).out; };
  EXPECT_EQ(passed("xsum"), "2 passed, 0 failed\n");
  EXPECT_EQ(passed("sums/"), "2 passed, 0 failed\n");
  EXPECT_EQ(passed("s*x[ps]"), "2 passed, 0 failed\n");
  EXPECT_EQ(passed("s/*.hvm"), "2 passed, 0 failed\n");
  EXPECT_EQ(passed("o?her"), "1 passed, 0 failed\n");
  EXPECT_EQ(passed(""), "4 passed, 0 failed\n");
  const std::string none = "no scripts below " + folder + " match ";
  EXPECT_EQ(passed("tests"), none + "\"tests\"\n0 passed, 0 failed\n") << "the folder's own name does not count";
  EXPECT_EQ(passed("["), none + "\"[\"\n0 passed, 0 failed\n");
  EXPECT_EQ(passed("\\"), none + "\"\\\"\n0 passed, 0 failed\n");
  EXPECT_EQ(run_tests({"--test", folder, "--filter", "tests"}).status, 1);
  EXPECT_EQ(run_tests({"--test", folder + "/xsum.hvm", "--filter", "xs"}).out, "1 passed, 0 failed\n");
}

TEST(TestRunner, Verbose_SaysHowEachEndedAndTheSlowest) {
  const Workplace place;
  const std::string a = place.write("a.hvm", "while 1\nend");
  const std::string b = place.write("b.hvm", "x = 1");
  const std::string c = place.write("c.hvm", "print(1) # expect: 2");
  const Outcome outcome = run_tests({"-v", "--time-limit", "0.3", "--jobs", "2", "--test", place.path()});
  const std::string time = "[0-9]+\\.[0-9]+ s";
  EXPECT_THAT(outcome.out,
              ::testing::MatchesRegex(a + ": took longer than 0\\.3 s\nfailed in " + time + ": " + a + "\npassed in " +
                                      time + ": " + b + "\n" + c + ":1: expected 2; got 1\nfailed in " + time + ": " +
                                      c + "\nthe slowest:\n  " + time + ": " + a + "\n  " + time + ": .*\n  " + time +
                                      ": .*\n1 passed, 2 failed\n"));
}

TEST(TestRunner, TheSummaryEndsWithTheTime) {
  const Workplace place;
  place.write("a.hvm", "while 1\nend");
  const std::string out = run_toy({"--time-limit", "1.2", "--test", place.path()}).out;
  EXPECT_THAT(out, ::testing::ContainsRegex("0 passed, 1 failed in [0-9]+\\.[0-9] s\n$"));
  EXPECT_THAT(out, ::testing::Not(HasSubstr("in 0.")));
}

/// Lines of a script that wait until another one has written a file.
std::string wait_for(const std::string& file) {
  return "is_there = 0\nwhile is_there == 0\n  try\n    read_text(\"" + file +
         "\")\n    is_there = 1\n  catch e\n  end\nend\n";
}

TEST(TestRunner, Jobs_RunAtTheSameTimeAndAreReportedInTheOrderOfNames) {
  const Workplace place;
  const std::string file = place.path() + "/from_c";
  const std::string a = place.write("a.hvm", wait_for(file) + "print(1)\n# expect: 2\ntoy_end(\"segv\")");
  const std::string b = place.write("b.hvm", "print(1) # expect: 3");
  const std::string c = place.write("c.hvm", "write_text(\"" + file + "\", \"c\")\ntoy_end(\"abort\")");
  const std::vector<std::string> arguments = {"--time-limit", "20", "--jobs", "2", "--test", place.path()};
  const Outcome outcome = run_tests(arguments);
  EXPECT_EQ(outcome.out, a + ": ended by signal 11\n" + b + ":1: expected 3; got 1\n" + c +
                             ": ended by signal 6\n0 passed, 3 failed\n");
  EXPECT_LT(outcome.err.find(a + ":11: the module ended"), outcome.err.find(c + ":2: the module ended")) << outcome.err;
}

TEST(TestRunner, OneJob_RunsOneScriptAfterTheOther) {
  const Workplace place;
  const std::string file = place.path() + "/from_b";
  const std::string a = place.write("a.hvm", wait_for(file));
  place.write("b.hvm", "write_text(\"" + file + "\", \"b\")");
  EXPECT_EQ(run_tests({"--time-limit", "0.5", "--jobs", "1", "--test", place.path()}).out,
            a + ": took longer than 0.5 s\n1 passed, 1 failed\n");
}

TEST(TestRunner, AScriptThatManyOthersWaitFor_HoldsUpTheirReportsAlone) {
  const Workplace place;
  const std::string file = place.path() + "/written";
  place.write("0.hvm", wait_for(file));
  std::string expected;
  for (int i = 1; i < 600; ++i) {
    const std::string path = place.write(std::to_string(1000 + i) + ".hvm", "print(1) # expect: 2");
    expected += path + ":1: expected 2; got 1\n";
  }
  // The last one that starts before the first one is reported.
  place.write("1255.hvm", "print(1) # expect: 2\nwrite_text(\"" + file + "\", \"\")");
  const std::vector<std::string> arguments = {"--jobs", "8", "--time-limit", "30", "--test", place.path()};
  EXPECT_EQ(run_tests(arguments).out, expected + "1 passed, 599 failed\n");
}

TEST(TestRunner, LongOutputs_AreNotMixed) {
  const Workplace place;
  std::string expected;
  for (const std::string name : {"a", "b", "c", "d"}) {
    const std::string path =
        place.write(name + ".hvm", "for i in range(3000)\n  print(i, \"" + name +
                                       "\")\nend\nprint(1) # expect: " + std::string(200000, name[0]));
    expected += path + ":4: expected " + std::string(200000, name[0]) + "; got 1\n";
  }
  EXPECT_EQ(run_tests({"--jobs", "4", "--test", place.path()}).out, expected + "0 passed, 4 failed\n");
}

TEST(TestRunner, ScriptsFindTheirStandardInputEmpty) {
  const Workplace place;
  place.write("a.hvm", "print(len(read_text(\"/dev/stdin\"))) # expect: 0");
  EXPECT_EQ(run_tests({"--test", place.path()}, "text").out, "1 passed, 0 failed\n");
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
  const Outcome outcome = run_tests({"--test", place.path()}, conditions);
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
  const Outcome outcome = run_tests({"--test", place.path()}, conditions);
  EXPECT_EQ(outcome.out, "1 passed, 1 failed\n");
  EXPECT_THAT(outcome.err, HasSubstr("the script " + closed + " cannot be opened: Permission denied"));
  EXPECT_EQ(outcome.status, 1);
}

TEST(TestRunner, OutputThatCannotBeWritten_GivesStatusOne) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1");
  Conditions conditions;
  conditions.out = Stream::full;
  EXPECT_EQ(run_tests({"--test", place.path()}, conditions).status, 1);
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

/// Starts hvm --test on a folder with a pipe as its standard output, which the processes of the scripts hold open, too.
/// Returns its process; the other end of the pipe is in `output`.
pid_t started_tests(const std::string& folder, const char* jobs, int& output) {
  const std::string module = module_path("toy_module");
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);  // without closing the first one, which the scripts keep
    close(ends[0]);
    execl(HVM_PROGRAM, HVM_PROGRAM, "--module", module.c_str(), "--jobs", jobs, "--test", folder.c_str(), nullptr);
    _exit(127);
  }
  close(ends[1]);
  output = ends[0];
  return child;
}

TEST(TestRunner, ItsEndBySignal_EndsTheRunningScripts) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 2");
  place.write("b.hvm", "while 1\nend");
  place.write("c.hvm", "while 1\nend");
  for (const char* jobs : {"1", "3"})
    for (const int signal : {SIGTERM, SIGINT, SIGKILL}) {
      int output = -1;
      const pid_t child = started_tests(place.path(), jobs, output);
      ASSERT_GT(child, 0);
      EXPECT_TRUE(read_until(output, "got 1\n"));
      usleep(200000);
      kill(child, signal);
      waitpid(child, nullptr, 0);
      // The pipe ends when hvm and the scripts' processes have.
      EXPECT_TRUE(read_until(output)) << "a script goes on";
      close(output);
    }
}

TEST(TestRunner, WorksWhereTheEndOfProcessesIsIgnored) {
  const Workplace place;
  place.write("a.hvm", "x = 1");
  const auto before = signal(SIGCHLD, SIG_IGN);  // hvm inherits it
  int output = -1;
  started_tests(place.path(), "2", output);
  signal(SIGCHLD, before);
  EXPECT_TRUE(read_until(output, "1 passed, 0 failed"));
  close(output);
}

}  // namespace
}  // namespace hvm::testing
