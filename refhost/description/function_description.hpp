// description/function_description.hpp: the pages of a module's functions as one document for machines

#pragma once

#include <string>
#include <vector>

#include "description/entry.hpp"

namespace hvm::description {

/// What of a module has pages.
struct ModulePages {
  std::string version;
  std::vector<Described> functions, methods, operations;
};

/// The text of functions.json, or what is wrong with the pages.
struct Description {
  std::string text;                 // empty when a page is at fault
  std::vector<std::string> faults;  // a line for each page at fault: `FILE:LINE: what is wrong`
};

/// Reads the pages in the folder `pages`. The same pages give the same bytes.
Description description_of(const ModulePages& module, const std::string& pages);

}  // namespace hvm::description
