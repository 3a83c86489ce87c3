// script/picture/drawing.hpp: pictures as text and as files

#pragma once

#include <string>

#include "script/picture/gnuplot_commands.hpp"

namespace hvm {

/// The figure in lines of text, without blanks at their ends. Throws `PictureError`.
std::string drawn_as_text(const Figure& figure, TextSize size);

/// The content of a file with the figure. Throws `PictureError`. Requires: the canvas is none of text.
std::string drawn_for_file(const Figure& figure, const Canvas& canvas);

}  // namespace hvm
