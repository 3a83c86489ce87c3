// self_contained/fortran_strings.cpp: the one function of the Fortran runtime that LAPACK calls
//
// LAPACK joins the letters of its options into one string. In the static Fortran runtime this function comes with the
// input and output of Fortran, and that library is not compiled for use in shared libraries.

#include <algorithm>
#include <cstddef>

namespace arrayfold {
namespace {

/// Copies as much of a text as there is room for, and returns the rest of the room.
char* append(char* out, char* end, const char* text, std::size_t size) {
  return std::copy_n(text, std::min(size, static_cast<std::size_t>(end - out)), out);
}

}  // namespace

/// Fortran's `//`: the second text follows the first, and blanks fill what is left of `out`. By gfortran's calling
/// convention lengths are of std::size_t.
extern "C" void _gfortran_concat_string(std::size_t size, char* out, std::size_t first_size, const char* first,
                                        std::size_t second_size, const char* second);

extern "C" void _gfortran_concat_string(std::size_t size, char* out, std::size_t first_size, const char* first,
                                        std::size_t second_size, const char* second) {
  char* const end = out + size;
  out = append(out, end, first, first_size);
  out = append(out, end, second, second_size);
  std::fill(out, end, ' ');
}

}  // namespace arrayfold
