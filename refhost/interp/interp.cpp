// interp/interp.cpp: the interpreter library's lgamma and erf
//
// Both give the C library's values. Inside this library their names mean its own functions, so neither calls the C
// library's by name.

#include <dlfcn.h>
#include <gnu/lib-names.h>
#include <math.h>

#include <cstdlib>

#include "host/host_operations.hpp"

namespace {

using Function = double (*)(double);

// The C library's function, found through a handle of that library: such a search does not see this one. The library is
// loaded in any case, since this one is linked to it, and the handle is never closed.
Function c_library_function(const char* name) noexcept {
  void* library = dlopen(LIBM_SO, RTLD_LAZY | RTLD_LOCAL);
  void* function = library ? dlsym(library, name) : nullptr;
  if (!function) std::abort();
  Function typed;
  static_assert(sizeof(typed) == sizeof(function));
  arrayfold::store<void*>(&typed, function);
  return typed;
}

const Function c_library_erf = c_library_function("erf");

}  // namespace

// The reentrant form: the sign goes to a variable of this call, never to the C library's global one.
double lgamma(double x) noexcept {
  int sign;
  return lgamma_r(x, &sign);
}

double erf(double x) noexcept { return c_library_erf(x); }
