// script/picture/gnuplot_commands.hpp: a figure in the commands of gnuplot

#pragma once

#include <string>

#include "script/picture/figure.hpp"

namespace hvm {

/// What the picture is drawn on.
struct Canvas {
  enum class Form { text, svg, png, pdf };
  Form form = Form::text;
  int width = 79;  // in characters or pixels
  int height = 20;
};

/// Commands that write the picture to the standard output. Texts of the figure stand in them as quoted texts, so that
/// gnuplot draws them and never runs them. Throws `PictureError` when the figure has no finite point.
std::string gnuplot_commands(const Figure& figure, const Canvas& canvas);

}  // namespace hvm
