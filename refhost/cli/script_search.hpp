// cli/script_search.hpp: the scripts that --test names

#pragma once

#include <string>
#include <vector>

namespace hvm {

struct FoundScripts {
  std::vector<std::string> scripts;     // each once, in the order of their names
  std::vector<std::string> unreadable;  // a sentence for each folder that cannot be read
};

/// The scripts that `paths` name: files, and every `*.hvm` below folders. With a `filter` only those stay whose path,
/// counted from the folder that was named, has a part that fits it: a shell pattern, whose `*` also fits `/`. Throws
/// `FileError` for a path that leads nowhere.
FoundScripts find_scripts(const std::vector<std::string>& paths, const std::string& filter);

}  // namespace hvm
