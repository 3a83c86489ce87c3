// faults/swept_module.hpp: the module behind functions and callbacks that repeat each call with failing memory
//
// The program stands before the host's HVM_NewAnyMan, so that the types of the module get callbacks of the program's;
// its functions have one here for each. Where no sweep is under way, all of them pass calls on.

#pragma once

#include <string>

#include "faults/sweep.hpp"
#include "host/host_operations.hpp"

namespace arrayfold::test {

/// The function of a name: calls of it are swept.
EntryFunction swept_function(const std::string& name);

/// While this lives, calls of the module are swept.
class Sweeping {
 public:
  explicit Sweeping(Sweep& sweep);
  ~Sweeping();
  Sweeping(const Sweeping&) = delete;
  Sweeping& operator=(const Sweeping&) = delete;
};

}  // namespace arrayfold::test
