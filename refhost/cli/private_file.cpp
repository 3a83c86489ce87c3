// cli/private_file.cpp: files that hvm keeps for its user

#include "cli/private_file.hpp"

#include <filesystem>
#include <system_error>

#include "script/data/descriptor.hpp"

namespace hvm {

void make_private_folder(const std::string& folder) {
  std::error_code error;
  if (!folder.empty() && std::filesystem::create_directories(folder, error))
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
}

bool write_all(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = uninterrupted([&] { return write(file, text.data(), text.size()); });
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace hvm
