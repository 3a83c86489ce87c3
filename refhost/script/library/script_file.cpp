// script/library/script_file.cpp: scripts from files and from the standard input

#include "script/library/script_file.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <new>
#include <string_view>
#include <system_error>

#include "script/data/descriptor.hpp"
#include "script/data/waiting.hpp"

namespace hvm {
namespace {

std::string text_in(const Descriptor& file, const std::string& path) {
  std::string text;
  std::vector<char> chunk(std::size_t{1} << 16);
  while (true) {
    await_input(file.number());
    const ssize_t count = uninterrupted([&] { return read(file.number(), chunk.data(), chunk.size()); });
    if (count < 0)
      throw FileError(fmt::format("the script {} cannot be read: {}", path, std::generic_category().message(errno)));
    if (count == 0) return text;
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
}

/// Runs `read`, and names the script when memory runs out.
template <class Read>
SourcePtr named(const std::string& name, Read read) {
  try {
    return read();
  } catch (const std::bad_alloc&) {
    throw std::runtime_error(name + ": out of memory while the script is read");
  }
}

}  // namespace

std::filesystem::path program_folder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

std::filesystem::path data_folder() {
  std::error_code error;
  const std::filesystem::path home = program_folder();
  const std::filesystem::path installed = home / HVM_WAY_TO_LIBRARIES;
  return std::filesystem::exists(installed, error) ? installed.lexically_normal()
                                                   : home.parent_path() / "share" / "hvm";
}

SourcePtr read_script(const std::string& path, Origin origin) {
  return named(path, [&] {
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
      throw FileError(fmt::format("{} is a directory, not a script", path));
    const Descriptor file(open_to_read(path));
    if (!file.is_open())
      throw FileError(fmt::format("the script {} cannot be opened: {}", path, std::generic_category().message(errno)));
    return std::make_shared<SourceText>(path, text_in(file, path), origin);
  });
}

std::string library_file(const std::string& name) { return (data_folder() / (name + ".hvm")).string(); }

// A fn stands at the outermost level, and so at the beginning of its line.
std::string library_with(const std::string& function) {
  const std::string beginning = fmt::format("fn {}(", function);
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(data_folder(), error)) {
    std::string library = entry.path().stem().string();
    if (entry.path().extension() != ".hvm" || function.rfind(library + '_', 0) == 0) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    for (std::string line; std::getline(file, line);)
      if (line.compare(0, beginning.size(), beginning) == 0) return library;
  }
  return {};
}

std::vector<std::string> library_functions(const std::string& library) {
  constexpr std::string_view beginning = "fn ";
  const std::string own = library + '_';
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(data_folder(), error)) {
    if (entry.path().filename() != library + ".hvm") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    for (std::string line; std::getline(file, line);)
      if (line.compare(0, beginning.size(), beginning) == 0 && line.compare(beginning.size(), own.size(), own) != 0)
        names.push_back(line.substr(beginning.size(), line.find('(') - beginning.size()));
  }
  return names;
}

SourcePtr read_standard_input() {
  return named("<stdin>", [] {
    return std::make_shared<SourceText>("<stdin>", std::string{std::istreambuf_iterator<char>(std::cin), {}});
  });
}

}  // namespace hvm
