// cli/private_file.cpp: files that hvm keeps for its user

#include "cli/private_file.hpp"

#include <filesystem>
#include <system_error>

namespace hvm {

void make_private_folder(const std::string& folder) {
  std::error_code error;
  if (!folder.empty() && std::filesystem::create_directories(folder, error))
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
}

}  // namespace hvm
