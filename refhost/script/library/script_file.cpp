// script/library/script_file.cpp: scripts from files and from the standard input

#include "script/library/script_file.hpp"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace hvm {

SourcePtr read_script(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw FileError(fmt::format("{} is a directory, not a script", path));
  std::ifstream file(path, std::ios::binary);
  if (!file) throw FileError(fmt::format("the script {} cannot be opened", path));
  return std::make_shared<SourceText>(path, std::string{std::istreambuf_iterator<char>(file), {}});
}

SourcePtr read_standard_input() {
  return std::make_shared<SourceText>("<stdin>", std::string{std::istreambuf_iterator<char>(std::cin), {}});
}

}  // namespace hvm
