// runtime/neighbours_arrays.hpp: arrays of a host that has the array library, too, with other settings

#pragma once

#include <string>

namespace neighbours {

/// The sum of the elements of a sorted product, which the host computes with its own arrays.
double sum_of_own_arrays(int n);
/// What the host's own library says of shapes that do not broadcast.
std::string own_broadcast_error();

}  // namespace neighbours
