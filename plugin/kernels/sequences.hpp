// kernels/sequences.hpp: elements computed from their position

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// Writes `value` into `count` elements.
void fill(double* out, std::size_t count, double value);

/// Writes start, start + step and so on, in wrapping 32-bit arithmetic, as doubles.
void count_up(double* out, std::size_t count, std::int32_t start, std::int32_t step);

/// The loop of `space_evenly`.
template <class T>
struct EvenSpacing {
  void (*write)(T* out, std::size_t count, double first, double step);
};

/// The loops for double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<EvenSpacing>* const even_spacing_by_target[];

/// Writes first + i * step for each position i, computed in doubles. Numbers are rounded to float, and `truncated` to
/// integers.
template <class T>
void space_evenly(T* out, std::size_t count, double first, double step) {
  even_spacing_by_target[target_index()]->of<T>().write(out, count, first, step);
}

}  // namespace arrayfold
