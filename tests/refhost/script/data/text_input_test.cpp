// refhost/script/data/text_input_test.cpp: files as text, in chunks

#include "script/data/text_input.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "folder.hpp"
#include "script/data/data_error.hpp"

namespace hvm::testing {
namespace {

std::string text_of_file(const std::string& path) {
  TextInput input(path);
  std::string text;
  for (std::string_view part = input.next(); !part.empty(); part = input.next()) text += part;
  return text;
}

/// The message of the error, without the path in front.
std::string error_of_file(const std::string& path) {
  try {
    return "no error, but " + text_of_file(path);
  } catch (const DataError& error) {
    const std::string message = error.what();
    return message.rfind(path + ": ", 0) == 0 ? message.substr(path.size() + 2) : "without its path: " + message;
  }
}

TEST(TextInput, GivesWholeCharactersWhereverAChunkEnds) {
  const Folder folder;
  for (const std::string character : {"\xC3\xA9", "\xE2\x89\x88", "\xF0\x9F\x98\x80"}) {
    std::string text = "a";
    while (text.size() < 1'000'000) text += character;
    TextInput input(folder.write("f", text));
    std::string joined;
    for (std::string_view part = input.next(); !part.empty(); part = input.next()) {
      EXPECT_NE(static_cast<unsigned char>(part.front()) & 0xC0, 0x80) << "a chunk begins inside a character";
      joined += part;
    }
    EXPECT_TRUE(joined == text);
  }
}

TEST(TextInput, SkipsAByteOrderMarkAtTheBeginningAlone) {
  const Folder folder;
  EXPECT_EQ(text_of_file(folder.write("f",
                                      "\xEF\xBB\xBF"
                                      "ab\xEF\xBB\xBF")),
            "ab\xEF\xBB\xBF");
  EXPECT_EQ(text_of_file(folder.write("f", "\xEF\xBB\xBF")), "");
  EXPECT_EQ(text_of_file(folder.write("f", "")), "");
}

TEST(TextInput, BytesThatAreNoText_AreAnErrorWithTheirPlace) {
  const Folder folder;
  EXPECT_EQ(error_of_file(folder.write("f", "a\nb\n\xFFz")), "line 3, character 1: the bytes are not valid UTF-8");
  EXPECT_EQ(error_of_file(folder.write("f", "a\xC3")), "line 1, character 2: the bytes are not valid UTF-8");
  EXPECT_EQ(error_of_file(folder.write("f", "\xED\xA0\x80")), "line 1, character 1: the bytes are not valid UTF-8");
  EXPECT_EQ(error_of_file(folder.write("f", std::string("\xFF\xFE"
                                                        "a\0",
                                                        4))),
            "line 1, character 4: a byte is 0: the file does not hold text");
  EXPECT_EQ(error_of_file(folder.write("f",
                                       "\xFE\xFF"
                                       "aa")),
            "line 1, character 1: the bytes are not valid UTF-8");
  EXPECT_EQ(error_of_file(folder.write("f", std::string(700'000, '\n') + '\0')),
            "line 700001, character 1: a byte is 0: the file does not hold text");
  EXPECT_EQ(error_of_file(folder.write("f", "\xEF\xBB\xBF\xC3\xA9\xFF")),
            "line 1, character 2: the bytes are not valid UTF-8");
  std::string long_line = "a\n";
  for (int i = 0; i < 500'000; ++i) long_line += "\xC3\xA9";
  EXPECT_EQ(error_of_file(folder.write("f", long_line + "\xFF")),
            "line 2, character 500001: the bytes are not valid UTF-8");
}

TEST(TextInput, WhatCannotBeRead_IsAnErrorWithTheReasonOfTheSystem) {
  const Folder folder;
  EXPECT_EQ(error_of_file(folder / "missing"), "No such file or directory");
  EXPECT_EQ(error_of_file(folder / ""), "Is a directory");
  EXPECT_EQ(error_of_file(folder.write("f", "") + "/g"), "Not a directory");
  EXPECT_EQ(error_of_file(""), "No such file or directory");
  EXPECT_EQ(error_of_file(folder / std::string(300, 'n')), "File name too long");
}

TEST(TextInput, AFileThatChangesWhileItIsRead_IsAnError) {
  const Folder folder;
  const std::string path = folder / "f";
  const std::string long_text(1'000'000, 'x');
  const auto read_while = [&](auto change) {
    folder.write("f", long_text);
    TextInput input(path);
    input.next();
    change();
    try {
      while (!input.next().empty()) continue;
    } catch (const DataError& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  const std::string message = path + ": the file changed while it was read";
  EXPECT_EQ(read_while([&] { std::filesystem::resize_file(path, 10); }), message);
  EXPECT_EQ(read_while([&] { std::filesystem::resize_file(path, 500'000); }), message);
  EXPECT_EQ(read_while([&] { std::ofstream(path, std::ios::app) << "more"; }), message);
  EXPECT_EQ(read_while([&] {
              folder.write("f", long_text);
              const timespec times[2] = {{0, UTIME_NOW}, {12345, 0}};
              utimensat(AT_FDCWD, path.c_str(), times, 0);
            }),
            message);
  EXPECT_EQ(read_while([] {}), "no error");
}

TEST(TextInput, ReadsAPipeUntilItsEnd) {
  const Folder folder;
  const std::string path = folder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::thread writer([&] {
    const int pipe = open(path.c_str(), O_WRONLY);
    // A character in two pieces.
    for (const std::string_view piece : {"\xEF\xBB",
                                         "\xBF"
                                         "a\xC3",
                                         "\xA9"
                                         "b"}) {
      EXPECT_EQ(write(pipe, piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
      usleep(20'000);
    }
    close(pipe);
  });
  EXPECT_EQ(text_of_file(path),
            "a\xC3\xA9"
            "b");
  writer.join();
}

TEST(TextInput, AHugeSparseFile_IsRefusedAtItsFirstByte) {
  const Folder folder;
  folder.write("f", "");
  std::filesystem::resize_file(folder / "f", std::uintmax_t{1} << 40);
  EXPECT_EQ(error_of_file(folder / "f"), "line 1, character 1: a byte is 0: the file does not hold text");
}

}  // namespace
}  // namespace hvm::testing
