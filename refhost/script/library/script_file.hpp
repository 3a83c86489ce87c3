// script/library/script_file.hpp: scripts from files and from the standard input

#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "script/syntax/source_text.hpp"

namespace hvm {

/// A script that cannot be read.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The folder of the running program.
std::filesystem::path program_folder();

/// The folder of what belongs to hvm, the libraries among it: where that is installed with the program, or
/// `../share/hvm` as seen from its folder, where it is built.
std::filesystem::path data_folder();

/// The script in a file. Throws `FileError`, or `std::runtime_error` when memory runs out.
SourcePtr read_script(const std::string& path, Origin origin = Origin::script);
/// The file of a library of this name in the folder `data_folder`; it may be missing.
std::string library_file(const std::string& name);
/// The library that has a fn of this name for scripts; empty when none has. The names that begin with that of their
/// library are its own.
std::string library_with(const std::string& function);
/// The functions that a library has for scripts, in the order of its file; none when there is no such library.
std::vector<std::string> library_functions(const std::string& library);
/// The script that comes through the standard input. Throws `std::runtime_error` when memory runs out.
SourcePtr read_standard_input();

}  // namespace hvm
