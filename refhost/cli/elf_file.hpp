// cli/elf_file.hpp: reading the head of a library file without loading it

#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace hvm {

/// Why this process cannot load a file as a library.
class ElfError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The names of the libraries that a shared object asks for. Throws `ElfError` when the file cannot be read, or is
/// not a shared object for this machine.
std::vector<std::string> needed_libraries(const std::string& path);

/// The names of the symbol versions that a shared object defines. Throws `ElfError` as above.
std::vector<std::string> defined_versions(const std::string& path);

/// The version that a shared object states in a note of this owner; empty without one. Throws `ElfError` as above.
std::string version_note(const std::string& path, const std::string& owner);

}  // namespace hvm
