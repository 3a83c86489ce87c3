// binning/binnings.hpp: the functions of binning

#pragma once

#include "support/array_results.hpp"

namespace arrayfold::test {

/// All that give an array.
inline constexpr const char* binnings[] = {"xhistogram", "xhistogram_bin_edges", "xbincount", "xdigitize"};

inline bool reads_second_array(const std::string& name) {
  return name == "xhistogram_bin_edges" || name == "xdigitize";
}

}  // namespace arrayfold::test
