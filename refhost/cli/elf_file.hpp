// cli/elf_file.hpp: what the head of a library file says, before anything of it runs

#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace hvm {

/// Why a file is no library that this process could load.
class ElfError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The names of the libraries that a shared object asks for. Throws `ElfError` when the file cannot be read, or is no
/// shared object for this machine.
std::vector<std::string> needed_libraries(const std::string& path);

/// The names of the symbol versions that a shared object defines. Throws `ElfError` as above.
std::vector<std::string> defined_versions(const std::string& path);

}  // namespace hvm
