// cli/listing.hpp: the functions and types of a module, a line for each

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hvm {

struct ListedName {
  std::string kind;  // function or type
  std::string name;
  std::string sentence;  // what it is; may be empty
};

/// The names that one of the shell patterns fits, in their order; all of them when there are no patterns. Throws
/// `UsageError` for a pattern that fits none.
std::vector<ListedName> fitting_names(const std::vector<ListedName>& names, const std::vector<std::string>& patterns);

/// A line for each: kind and name, and behind them the sentences, one below the other and cut so that the line fits
/// into `columns`; 0 for any length.
std::string listing(const std::vector<ListedName>& names, std::size_t columns);

}  // namespace hvm
