// accuracy/peers.hpp: other libraries that compute the same functions

#pragma once

#include <string>
#include <vector>

namespace arrayfold::accuracy {

struct Peer {
  const char* library;
  double (*function)(double);
};

/// The C library's function, and SLEEF's with a bound of one unit in the last place where that library is installed.
/// None for a function that has no name of its own there.
std::vector<Peer> peers_of(const std::string& name);

}  // namespace arrayfold::accuracy
