// binning/binnings.hpp: the functions of binning

#pragma once

#include <string>
#include <vector>

#include "support/array_results.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {

/// All that give an array.
inline const std::vector<std::string> binnings = working_functions_of("binning");

inline bool reads_second_array(const std::string& name) {
  return name == "xhistogram_bin_edges" || name == "xdigitize";
}

}  // namespace arrayfold::test
