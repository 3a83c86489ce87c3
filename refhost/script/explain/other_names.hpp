// script/explain/other_names.hpp: what the names of other languages and of NumPy are here

#pragma once

#include <string>
#include <string_view>

#include "script/module/module_functions.hpp"

namespace hvm {

/// What takes the place of a name that NumPy or another language has, as the end of a sentence: `; write xamax(a)`.
/// Empty for a name that is not known.
std::string counterpart(std::string_view name);

/// The same for a name that is called as a function. Who knows that functions of arrays begin with x may write `xstd`.
std::string counterpart_of_function(std::string_view name);

/// The same for a function that is called with an array, or as a method of one. A name without a counterpart leads to
/// the function of the module that has an x in front: `; write xmean(a)`.
std::string counterpart_for_arrays(std::string_view name, const ModuleFunctions& module);

struct OtherName {
  std::string_view name;
  std::string_view instead;  // such as `write xamax(a)`
};
struct OtherNames {
  const OtherName* first;
  const OtherName* last;
  const OtherName* begin() const { return first; }
  const OtherName* end() const { return last; }
};
/// All names that have a counterpart, sorted.
OtherNames other_names();

}  // namespace hvm
