// script/picture/gnuplot.hpp: running gnuplot

#pragma once

#include <string>

namespace hvm {

/// What gnuplot writes to its standard output for these commands. It reads no file of the user's settings. Throws
/// `PictureError` when it is not installed, or fails.
std::string output_of_gnuplot(const std::string& commands);

}  // namespace hvm
