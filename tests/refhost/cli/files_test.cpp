// refhost/cli/files_test.cpp: files, the standard input and the terminal, from scripts

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string quoted(const std::string& path) { return "\"" + path + "\""; }

// ---- The standard input

TEST(StandardInput, HoldsDataForAScriptFromAFileOrTheCommandLine) {
  const Workplace place;
  const std::string script = place.write("a.hvm", "t = read_csv(\"-\"); print(t); print(read_text(\"-\") == \"\")");
  EXPECT_EQ(run_toy({script}, "a,b\n1,x\n").out, "[\"a\": [1], \"b\": [\"x\"]]\n1\n");
  EXPECT_EQ(run_toy({"-e", "print(read_lines(\"-\"))"}, "one\r\ntwo").out, "[\"one\", \"two\"]\n");
}

TEST(StandardInput, ThatHoldsTheScript_HoldsNoData) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"-"}}) {
    const Outcome outcome = run_toy(arguments, "print(1)\nread_text(\"-\")");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "1\n");
    EXPECT_THAT(outcome.err, HasSubstr("<stdin>:2:1: error: read_text: the standard input holds the script"));
  }
}

TEST(StandardInput, ItsErrorsNameIt) {
  EXPECT_THAT(run_toy({"-e", "read_csv(\"-\")"}, "a,b\n1").err,
              HasSubstr("error: read_csv: the standard input: row 1 (line 2): 1 cell instead of 2"));
}

// ---- Closed streams

TEST(ClosedStreams, AreNotReplacedByFilesThatAScriptOpens) {
  const Workplace place;
  const std::string path = quoted(place.path() + "/f");
  Conditions conditions;
  conditions.out = Stream::closed;
  EXPECT_EQ(run_toy({"-e", "write_text(" + path + ", \"text\"); print(1)"}, conditions).status, 1);
  conditions.out = Stream::file;
  EXPECT_EQ(run_toy({"-e", "print(read_text(" + path + "))"}, conditions).out, "text\n");
  conditions.has_input = false;
  const std::string reads = "read_text(" + path + ")\ntry read_text(\"-\") catch e print(e) end";
  EXPECT_EQ(run_toy({"-e", reads}, conditions).out, "read_text: the standard input: Bad file descriptor\n");
}

// ---- Permissions

TEST(Files, ThatMayNotBeReadOrWritten_AreErrors) {
  const Workplace place;
  const std::string path = place.write("f", "old");
  Conditions user;
  user.obeys_permissions = true;
  chmod(path.c_str(), 0);
  EXPECT_THAT(run_toy({"-e", "read_text(" + quoted(path) + ")"}, user).err, HasSubstr("f: Permission denied"));
  chmod(path.c_str(), 0444);
  EXPECT_THAT(run_toy({"-e", "write_text(" + quoted(path) + ", \"new\")"}, user).err,
              HasSubstr("write_text: " + path + ": Permission denied"));
  EXPECT_EQ(run_toy({"-e", "print(read_text(" + quoted(path) + "))"}, user).out, "old\n");
}

TEST(Files, InAFolderThatMayNotBeWritten_AreNotReplaced) {
  const Workplace place;
  const std::string path = place.write("folder/f", "old");
  const std::string folder = std::filesystem::path(path).parent_path();
  Conditions user;
  user.obeys_permissions = true;
  chmod(folder.c_str(), 0555);
  for (const std::string& written : {path, folder + "/new"})
    EXPECT_THAT(run_toy({"-e", "write_text(" + quoted(written) + ", \"new\")"}, user).err,
                HasSubstr(written + ": no file can be made in its folder: Permission denied"));
  chmod(folder.c_str(), 0755);
  EXPECT_EQ(run_toy({"-e", "print(read_text(" + quoted(path) + "))"}).out, "old\n");
}

// ---- Memory

using FilesInMemory = LimitedMemory;

TEST_F(FilesInMemory, LargerThanTheMemory_AreErrors) {
  const Workplace place;
  std::string csv = "a,b\n";
  while (csv.size() < 30'000'000) csv += "12345.678,text of a cell\n";
  const std::string table = place.write("table.csv", csv);
  std::string json = "[0";
  while (json.size() < 30'000'000) json += ",[1.5,\"text\"]";
  const std::string list = place.write("list.json", json + "]");
  Conditions conditions;
  conditions.memory = 100'000'000;
  const std::string old = place.write("old", "old");
  for (const std::string& script :
       {"read_csv(" + quoted(table) + ")", "read_lines(" + quoted(table) + ")",
        "t = read_text(" + quoted(table) + "); u = t + t; v = u + u", "parse_json(read_text(" + quoted(list) + "))",
        "t = []; for i in range(700000) do t[i] = i end; write_text(" + quoted(old) +
            ", to_json([t, t, t, t, t, t, t, t]))"}) {
    const Outcome outcome = run_toy({"--leaks", "-e", script}, conditions);
    EXPECT_EQ(outcome.status, 1) << script << outcome.signal;
    EXPECT_THAT(outcome.err, HasSubstr("error: out of memory")) << script;
    EXPECT_THAT(outcome.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 0 blocks, 0 records, 0 pieces"));
  }
  conditions.memory = 0;
  EXPECT_EQ(run_toy({"-e", "print(read_text(" + quoted(old) + "))"}).out, "old\n");
}

// ---- Room

TEST(Files, WithoutRoom_StayAsTheyWere) {
  const Workplace place;
  const std::string path = place.write("folder/f", "old");
  Conditions conditions;
  conditions.file_size = 100'000;
  const Outcome outcome = run_toy(
      {"-e", "s = \"0123456789\"; for i in range(20) do s += s end; write_text(" + quoted(path) + ", s)"}, conditions);
  EXPECT_EQ(outcome.status, 1) << outcome.signal;
  EXPECT_THAT(outcome.err, HasSubstr("write_text: " + path + ": File too large"));
  EXPECT_EQ(run_toy({"-e", "print(read_text(" + quoted(path) + "))"}).out, "old\n");
  const std::filesystem::directory_iterator files(std::filesystem::path(path).parent_path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

// ---- Arrays of the module

TEST(Files, HoldArrays) {
  const Workplace place;
  const std::string path = quoted(place.path() + "/f.csv");
  const std::string first = place.write("a.csv", "x,y,z\n1,2.5,-3\n4,,6\n");
  const Outcome outcome = run_hvm({"--leaks", "-e",
                                   "a = read_csv_array(" + quoted(first) +
                                       ")\n"
                                       "print(type(a), a)\n"
                                       "print(read_csv_array(" +
                                       quoted(first) +
                                       ", [\"columns\": [\"z\", 0]]))\n"
                                       "write_csv(" +
                                       path +
                                       ", a)\n"
                                       "print(read_text(" +
                                       path +
                                       "))\n"
                                       "print(read_csv_array(" +
                                       path +
                                       ", [\"header\": false])[0, 2])\n"
                                       "write_csv(" +
                                       path +
                                       ", xarray(@int, [[1, 2], [3, 4]]), [\"header\": [\"p\", \"q\"]])\n"
                                       "print(read_csv(" +
                                       path +
                                       "))\n"
                                       "write_csv(" +
                                       path +
                                       ", xarray(@double, [1, 2]) <= 1)\n"
                                       "print(read_lines(" +
                                       path +
                                       "))\n"
                                       "print(to_json([\"a\": a, \"b\": xarray(@int, [1, 2])]))\n"
                                       "print(read_csv_array(" +
                                       quoted(place.write("e.csv", "x,y\n")) + ").shape())\n"});
  EXPECT_EQ(outcome.out,
            "$xdoublearray double(2, 3) [[1.0, 2.5, -3.0], [4.0, nan, 6.0]]\n"
            "double(2, 2) [[-3.0, 1.0], [6.0, 4.0]]\n"
            "1.0,2.5,-3.0\n4.0,nan,6.0\n\n"
            "-3.0\n"
            "[\"p\": [1, 3], \"q\": [2, 4]]\n"
            "[\"1\", \"0\"]\n"
            "{\"a\":[[1.0,2.5,-3.0],[4.0,null,6.0]],\"b\":[1,2]}\n"
            "[0, 2]\n");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
}

// ---- The terminal

/// What the standard error shows while hvm reads an input that takes more than a second to come.
std::string shown_while_reading(const std::string& last_line, bool at_terminal) {
  int shown[2] = {-1, -1};
  int input[2] = {-1, -1};
  const bool is_ready = at_terminal ? openpty(&shown[0], &shown[1], nullptr, nullptr, nullptr) == 0 : pipe(shown) == 0;
  if (!is_ready || pipe(input) != 0) throw std::system_error(errno, std::generic_category());
  const std::string module = module_path("toy_module");
  const pid_t child = fork();
  if (child == 0) {
    unsetenv("NO_COLOR");
    setenv("TERM", "xterm", 1);
    dup2(input[0], STDIN_FILENO);
    dup2(shown[1], STDERR_FILENO);
    for (const int descriptor : {input[0], input[1], shown[0], shown[1]}) close(descriptor);
    execl(HVM_PROGRAM, HVM_PROGRAM, "--module", module.c_str(), "-e", "t = read_csv(\"-\")", nullptr);
    _exit(127);
  }
  close(shown[1]);
  close(input[0]);
  const auto write_line = [&](const std::string& line, useconds_t pause) {
    EXPECT_EQ(write(input[1], line.data(), line.size()), static_cast<ssize_t>(line.size()));
    usleep(pause);
  };
  write_line("a,b\n", 1'100'000);
  write_line("1,2\n", 300'000);
  write_line(last_line, 300'000);
  close(input[1]);
  waitpid(child, nullptr, 0);
  std::string text;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(shown[0], bytes, sizeof(bytes))) > 0;)
    text.append(bytes, static_cast<std::size_t>(count));
  close(shown[0]);
  return text;
}

TEST(Progress, IsShownAtATerminalAndCleared) {
  const std::string line = "reading the standard input: ";
  const std::string last = line + "column 1 of 2";
  EXPECT_EQ(shown_while_reading("3,4\n", true),
            "\r" + line + "8 bytes\r" + line + "12 bytes\r" + last + "\r" + std::string(last.size(), ' ') + "\r");
}

TEST(Progress, IsClearedBeforeAnError) {
  EXPECT_THAT(shown_while_reading("3,4,5\n", true),
              HasSubstr("14 bytes\r                                    \r<command "
                        "line>:1:5: \x1b[1;31merror:\x1b[0m read_csv: the standard input: row 2"));
}

TEST(Progress, CountsLongTextInMegabytes) {
  std::string rows;
  for (int i = 0; i < 15'000; ++i) rows += "3,4\n";
  EXPECT_THAT(shown_while_reading(rows, true), HasSubstr("\rreading the standard input: 0.1 MB"));
}

TEST(Progress, IsNotShownElsewhere) { EXPECT_EQ(shown_while_reading("3,4\n", false), ""); }

}  // namespace
}  // namespace hvm::testing
