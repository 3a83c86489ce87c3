// cli/script_search.cpp: the scripts that --test names

#include "cli/script_search.hpp"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "cli/safe_text.hpp"
#include "script/library/script_file.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

class ScriptSearch {
 public:
  explicit ScriptSearch(const std::string& filter) : pattern_("*" + filter + "*") {}

  FoundScripts below(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) start(path);
    std::sort(found_.scripts.begin(), found_.scripts.end());
    found_.scripts.erase(std::unique(found_.scripts.begin(), found_.scripts.end()), found_.scripts.end());
    return std::move(found_);
  }

 private:
  void start(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status))
      throw FileError(fmt::format("--test cannot find \"{}\": {}", briefly(path.string()), error.message()));
    if (fs::is_directory(status)) return search(path, "");
    keep(path, path.filename());
  }

  /// `below` is the path of `folder` as seen from the one that was named.
  void search(const fs::path& folder, const fs::path& below) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
      take(*entry, below / entry->path().filename());
    if (error)
      found_.unreadable.push_back(fmt::format("{}: the folder cannot be read: {}", folder.string(), error.message()));
  }

  void take(const fs::directory_entry& entry, const fs::path& below) {
    std::error_code error;
    const bool is_folder = !entry.is_symlink(error) && entry.is_directory(error);
    if (is_folder) return search(entry.path(), below);
    if (entry.is_regular_file(error) && entry.path().extension() == ".hvm") keep(entry.path(), below);
  }

  void keep(const fs::path& script, const fs::path& below) {
    if (fnmatch(pattern_.c_str(), below.c_str(), 0) == 0) found_.scripts.push_back(script.string());
  }

  std::string pattern_;
  FoundScripts found_;
};

}  // namespace

FoundScripts find_scripts(const std::vector<std::string>& paths, const std::string& filter) {
  return ScriptSearch(filter).below(paths);
}

}  // namespace hvm
