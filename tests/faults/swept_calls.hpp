// faults/swept_calls.hpp: the calls that are swept
//
// Each of these makes its calls through faults/swept_module.hpp, into the module and with failing memory where it is
// their turn.

#pragma once

#include <cstdint>
#include <string>

#include "faults/sweep.hpp"

namespace arrayfold::test {

/// Every function with numbers, with arrays of every kind and of 0 to 6 dimensions, and with both.
void call_functions(Sweep& sweep);
/// Every method of arrays of every kind and of 0 to 6 dimensions.
void call_methods(Sweep& sweep);
/// Every operator of such arrays with an array, with a number, and in place; elements, read and written.
void apply_operators(Sweep& sweep);
/// xarray of every kind, in every way in which it is told shapes and elements of 0 to 6 dimensions.
void read_arrays(Sweep& sweep);
/// The calls of the table of calls.
void make_recorded_calls(Sweep& sweep, const std::string& table);
/// All calls of the scripts in a folder.
void run_scripts(Sweep& sweep, const std::string& folder);

}  // namespace arrayfold::test
