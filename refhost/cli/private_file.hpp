// cli/private_file.hpp: files that hvm keeps for its user

#pragma once

#include <string>
#include <string_view>

namespace hvm {

/// Makes a folder, with those above it, that only its owner can use. One that exists stays as it is.
void make_private_folder(const std::string& folder);

/// Writes a text to an open file. Returns false, with an error in `errno`, when a part of it is not written.
bool write_all(int file, std::string_view text);

}  // namespace hvm
