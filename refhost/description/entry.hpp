// description/entry.hpp: a page as its entry in the description

#pragma once

#include <string>

#include "description/page.hpp"
#include "description/vocabulary.hpp"

namespace hvm::description {

/// How a page is called in scripts, which decides what its synopsis looks like.
enum class CallForm { function, method, operation };

/// What is known of a function beside its page.
struct Described {
  std::string name;  // the title of the page
  std::string family;
  std::string status;  // working or stub
  CallForm form;
  int minimum;       // the smallest argument count; -1 when it is known from the page alone
  std::string page;  // the path of the page in the project
};

/// The entry of a page. Throws `PageFault` when the page is not in the form that docs/functions/README.md fixes, or
/// when it contradicts what is known beside it.
Json entry_of(const Page& page, const Described& described);

}  // namespace hvm::description
