// refhost/script/folder.hpp: scripts over the files of a folder

#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <system_error>

#include "script_run.hpp"

namespace hvm::testing {

/// A folder that is gone when the test is.
class Folder {
 public:
  Folder() : path_(::testing::TempDir() + "hvm-data-XXXXXX") {
    if (!mkdtemp(path_.data())) throw std::system_error(errno, std::generic_category(), path_);
  }
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(*this / name, std::ios::binary) << text;
    return *this / name;
  }
  std::string read(const std::string& name) const {
    std::ifstream file(*this / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::size_t file_count() const {
    const std::filesystem::directory_iterator files(path_);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }

  /// What a script prints over the toy module. `DIR` stands for the folder, in the script and in the output.
  std::string output_of(const std::string& script) const {
    const Counts before = counts();
    const std::string output = replaced(testing::output_of(replaced(script, "DIR", path_)), path_, "DIR");
    EXPECT_TRUE(counts() == before) << "left behind by: " << script;
    return output;
  }

 private:
  static std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
      text.replace(at, from.size(), to);
    return text;
  }

  std::string path_;
};

/// A file and what a script over it prints.
struct FileRow {
  std::string content;
  const char* output;
};

/// Every content, in the file `DIR/f`, makes the script print what the row says.
inline void expect_of_file(const std::string& script, std::initializer_list<FileRow> rows) {
  const Folder folder;
  for (const FileRow& row : rows) {
    folder.write("f", row.content);
    EXPECT_EQ(folder.output_of(script), row.output) << row.content;
  }
}

}  // namespace hvm::testing
