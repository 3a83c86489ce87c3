// refhost/script/toy_module.hpp: a small module to test a host with
//
// Its arrays have the type names of the arrayfold module and simple contents: elements are doubles, an int array
// truncates them.
//   toy_int(extents...), toy_double(extents...)   arrays that count 0, 1, 2, ...
//   toy_bool(extents...)        the same under the name of the bool type
//   toy_nothing()               returns no value
//   toy_fail()                  fails
//   toy_count(args...)          how many arguments came
//   toy_second(a, b)            its second argument
//   toy_throw("runtime", words) throws; also "own", "number"
//   toy_end("fpe")              ends the process; also "segv", "bus", "ill", "abort", "exit", "terminate", "throw",
//                               "overflow"
//   toy_end_with(a)             ends the process when the array dies
//   toy_serve_elements(flag)    whether element opcodes work, or return false
//   toy_set(a, i, x)            writes an element past the host
//   toy_deep(n)                 a table in a table, n deep
//   toy_wait(milliseconds)      waits, whatever signals come
//   toy_leak()                  takes memory of the host and loses it
//   xarange(args...), xarray(args...)   how many arguments came

#pragma once

#include "host/host_operations.hpp"

extern "C" __attribute__((visibility("default"))) int PKG_Init(void* host, arrayfold::RegisterFunctions functions);
