// script/picture/matrix_text.hpp: a matrix as text, a character or two for each element

#pragma once

#include "script/picture/figure.hpp"

namespace hvm {

/// The figure of a matrix in lines of text: dark characters are large numbers, `?` is no finite one. Throws
/// `PictureError` when no element is finite. Requires: the form is `matrix`.
std::string matrix_text(const Figure& figure, TextSize size);

}  // namespace hvm
