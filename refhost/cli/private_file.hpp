// cli/private_file.hpp: files that hvm keeps for its user

#pragma once

#include <string>

namespace hvm {

/// Makes a folder, with those above it, that only its owner can use. One that exists stays as it is.
void make_private_folder(const std::string& folder);

}  // namespace hvm
