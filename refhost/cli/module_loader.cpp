// cli/module_loader.cpp: finding, checking and loading a module

#include "cli/module_loader.hpp"

#include <dlfcn.h>
#include <fmt/format.h>
#include <link.h>

#include <algorithm>
#include <filesystem>

#include "cli/elf_file.hpp"
#include "host/host_operations.hpp"
#include "script/library/script_file.hpp"
#include "script/module/array_module.hpp"
#include "script/module/exception_text.hpp"
#include "script/module/fault_report.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

constexpr const char* interpreter_library = "libHVMInterp.so";
constexpr const char* interpreter_version = "HVMINTERP_1";

[[noreturn]] void fail(const std::string& path, const std::string& cause) {
  throw ModuleError(fmt::format("the module {} cannot be loaded: {}", path, cause));
}

std::vector<std::string> loaded_libraries() {
  std::vector<std::string> paths;
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* list) {
        static_cast<std::vector<std::string>*>(list)->emplace_back(info->dlpi_name);
        return 0;
      },
      &paths);
  return paths;
}

std::string last_loader_error() {
  const char* text = dlerror();
  return text ? text : "the loader gives no reason";
}

/// The file behind a handle of the loader.
std::string path_of(void* library) {
  link_map* map = nullptr;
  const bool is_known = dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 && map;
  return is_known ? map->l_name : interpreter_library;
}

/// Whether `library` has the interpreter's version node and, under it, both functions. A library without any versions
/// would let the look-up succeed, so its file is read as well.
bool has_version_node(void* library) {
  const std::vector<std::string> versions = defined_versions(path_of(library));
  const bool is_defined = std::find(versions.begin(), versions.end(), interpreter_version) != versions.end();
  return is_defined && dlvsym(library, "lgamma", interpreter_version) && dlvsym(library, "erf", interpreter_version);
}

/// Without the version node, the module's lgamma and erf would bind to the C library's. The library that is opened
/// here stays open, and the module gets the same one.
void check_interpreter(const std::string& module) {
  void* library = dlopen(interpreter_library, RTLD_NOW | RTLD_LOCAL);
  if (!library) library = dlopen((fs::path(module).parent_path() / interpreter_library).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) fail(module, fmt::format("it needs {}, which is not found", interpreter_library));
  if (has_version_node(library)) return;
  fail(module, fmt::format("{} has no lgamma and erf of version {}, so that the C library's would be called instead",
                           path_of(library), interpreter_version));
}

void check_file(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) fail(path, "there is no such file");
  if (!fs::is_regular_file(status)) fail(path, "it is not a regular file");
  try {
    const std::vector<std::string> needed = needed_libraries(path);
    if (std::find(needed.begin(), needed.end(), interpreter_library) != needed.end()) check_interpreter(path);
  } catch (const ElfError& problem) {
    fail(path, problem.what());
  }
}

/// Calls `PKG_Init`. What it throws becomes a `ModuleError`.
int initialized(arrayfold::PackageInit init, Module& module) {
  const SourceText place(module.path, "");
  const RunningMark mark(&place, 0, true);
  try {
    return init(&module.functions, &ModuleFunctions::register_rows);
  } catch (...) {
    fail(module.path, fmt::format("PKG_Init threw {}", current_exception_text()));
  }
}

arrayfold::PackageInit opened(const std::string& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) fail(path, last_loader_error());
  void* symbol = dlsym(library, "PKG_Init");
  if (!symbol) fail(path, "it exports no PKG_Init");
  return arrayfold::load<arrayfold::PackageInit>(&symbol);
}

}  // namespace

Module load_module(const std::string& path) {
  Module module;
  module.path = fs::absolute(path).lexically_normal();
  const std::vector<std::string> before = loaded_libraries();
  check_file(module.path);
  const arrayfold::PackageInit init = opened(module.path);
  if (initialized(init, module) == 0) fail(module.path, "PKG_Init returns 0: the module does not start");
  for (const std::string& library : loaded_libraries())
    if (std::find(before.begin(), before.end(), library) == before.end())
      module.libraries.push_back(fs::weakly_canonical(library));
  return module;
}

std::string version_of(const Module& module) {
  try {
    return version_note(module.path, fs::path(module.path).stem());
  } catch (const ElfError&) {
    return {};
  }
}

std::string default_module_path() {
  std::error_code error;
  const fs::path home = program_folder();
  const fs::path installed = (home / HVM_WAY_TO_MODULE).lexically_normal();
  const fs::path built = home.parent_path() / "lib";
  for (const fs::path& folder : {home, installed, built})
    if (fs::exists(folder / array_module_file, error)) return folder / array_module_file;
  throw ModuleError(fmt::format("there is no {0} in {1}, {2} or {3}; name a module with --module", array_module_file,
                                home.string(), installed.string(), built.string()));
}

}  // namespace hvm
