// refhost/script/data/output_file_test.cpp: files that are replaced, and what is left when that fails

#include "script/data/output_file.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "folder.hpp"
#include "script/data/data_error.hpp"

namespace hvm::testing {
namespace {

namespace fs = std::filesystem;

void write_file(const std::string& path, const std::string& text) {
  OutputFile file(path);
  file.write(text);
  file.finish();
}

/// The message of the error, without the path in front.
std::string error_of_writing(const std::string& path, const std::string& text = "new") {
  try {
    write_file(path, text);
    return "no error";
  } catch (const DataError& error) {
    const std::string message = error.what();
    return message.rfind(path + ": ", 0) == 0 ? message.substr(path.size() + 2) : "without its path: " + message;
  }
}

unsigned mode_of(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(OutputFile, AtLinksInACircle_IsAnError) {
  const Folder folder;
  fs::create_symlink("b", folder / "a");
  fs::create_symlink("a", folder / "b");
  EXPECT_EQ(error_of_writing(folder / "a"), "Too many levels of symbolic links");
}

TEST(OutputFile, ANewFileHasTheModeThatTheMaskLeaves) {
  const Folder folder;
  const mode_t mask = umask(027);
  write_file(folder / "f", "text");
  umask(mask);
  EXPECT_EQ(folder.read("f"), "text");
  EXPECT_EQ(mode_of(folder / "f"), 0640u);
  EXPECT_EQ(folder.file_count(), 1u);
}

TEST(OutputFile, AReplacedFileKeepsItsMode) {
  const Folder folder;
  folder.write("f", "old and longer");
  ASSERT_EQ(chmod((folder / "f").c_str(), 0751), 0);
  write_file(folder / "f", "new");
  EXPECT_EQ(folder.read("f"), "new");
  EXPECT_EQ(mode_of(folder / "f"), 0751u);
  EXPECT_EQ(folder.file_count(), 1u);
}

TEST(OutputFile, AReplacedFileKeepsItsOwner) {
  if (geteuid() != 0)
    GTEST_SKIP() << "only the superuser gives files away, so that nobody else has a file of another owner to keep";
  const Folder folder;
  folder.write("f", "old");
  ASSERT_EQ(chown((folder / "f").c_str(), 1234, 4321), 0);
  write_file(folder / "f", "new");
  struct stat status = {};
  ASSERT_EQ(stat((folder / "f").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 1234u);
  EXPECT_EQ(status.st_gid, 4321u);
}

TEST(OutputFile, ASymbolicLinkStaysAndItsTargetIsReplaced) {
  const Folder folder;
  fs::create_directory(folder / "below");
  folder.write("below/target", "old");
  fs::create_symlink("below/target", folder / "link");
  fs::create_symlink(folder / "link", folder / "second");
  write_file(folder / "second", "new");
  EXPECT_EQ(folder.read("below/target"), "new");
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_TRUE(fs::is_symlink(folder / "second"));
  fs::create_symlink("below/missing", folder / "dangling");
  write_file(folder / "dangling", "made");
  EXPECT_EQ(folder.read("below/missing"), "made");
  EXPECT_TRUE(fs::is_symlink(folder / "dangling"));
  fs::create_symlink("circle", folder / "circle");
  EXPECT_EQ(error_of_writing(folder / "circle"), "Too many levels of symbolic links");
}

TEST(OutputFile, WithoutTheEndTheOldFileStaysAndNothingElse) {
  const Folder folder;
  folder.write("f", "old");
  {
    OutputFile file(folder / "f");
    file.write(std::string(1'000'000, 'x'));
    EXPECT_EQ(folder.file_count(), 2u);
    EXPECT_EQ(folder.read("f"), "old");
  }
  EXPECT_EQ(folder.read("f"), "old");
  EXPECT_EQ(folder.file_count(), 1u);
}

TEST(OutputFile, WithoutRoomTheOldFileStaysAndNothingElse) {
  const Folder folder;
  folder.write("f", "old");
  const pid_t child = fork();
  if (child == 0) {
    // A file may not grow beyond the limit. Without this the signal would end the process.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {500'000, 500'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    _exit(error_of_writing(folder / "f", std::string(2'000'000, 'x')) == "File too large" ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(folder.read("f"), "old");
  EXPECT_EQ(folder.file_count(), 1u);
}

TEST(OutputFile, WhatCannotBeWritten_IsAnErrorWithTheReasonOfTheSystem) {
  const Folder folder;
  folder.write("f", "old");
  EXPECT_EQ(error_of_writing("/dev/full"), "No space left on device");
  EXPECT_EQ(error_of_writing(folder / ""), "Is a directory");
  EXPECT_EQ(error_of_writing(folder / "missing/f"), "no file can be made in its folder: No such file or directory");
  EXPECT_EQ(error_of_writing(folder / "f/g"), "Not a directory");
  EXPECT_EQ(error_of_writing(folder / std::string(300, 'n')), "File name too long");
  EXPECT_EQ(error_of_writing(""), "No such file or directory");
  EXPECT_EQ(folder.file_count(), 1u);
}

TEST(OutputFile, ANameOfTheGreatestLengthIsReplaced) {
  const Folder folder;
  const std::string name(255, 'n');
  write_file(folder / name, "one");
  write_file(folder / name, "two");
  EXPECT_EQ(folder.read(name), "two");
  EXPECT_EQ(folder.file_count(), 1u);
}

TEST(OutputFile, APipeIsWrittenDirectly) {
  const Folder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string read_text;
  std::thread reader([&] { read_text = folder.read("pipe"); });
  const std::string text(3'000'000, 'x');
  write_file(path, text);
  reader.join();
  EXPECT_TRUE(read_text == text);
  EXPECT_TRUE(fs::is_fifo(path));
  write_file("/dev/null", text);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(OutputFile, TheFileOfTheStandardOutputIsNotReplaced) {
  const Folder folder;
  folder.write("f", "");
  const pid_t child = fork();
  if (child == 0) {
    dup2(open((folder / "f").c_str(), O_WRONLY), STDOUT_FILENO);
    const bool names_print = error_of_writing(folder / "f").find("'print'") != std::string::npos;
    const bool also_by_device = error_of_writing("/dev/stdout").find("'print'") != std::string::npos;
    _exit(names_print && also_by_device ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace hvm::testing
