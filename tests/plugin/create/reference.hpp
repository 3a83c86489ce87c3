// create/reference.hpp: the array library's own shuffle, evenly spaced numbers and identity matrix
//
// The library's templates are compiled in reference.cpp alone.

#pragma once

#include <random>

#include "support/test_array.hpp"

namespace arrayfold::test {

/// The array shuffled row by row with the draws of an engine.
TestArray library_shuffle(const TestArray& array, std::mt19937& engine);
TestArray library_linspace(Kind kind, const Number& start, const Number& stop, std::size_t count);
TestArray library_eye(std::size_t rows, std::size_t columns);

}  // namespace arrayfold::test
