// embedding/interp.c: libHVMInterp.so, the host's lgamma and erf, under the symbol version that interp.map names
// A call of `lgamma` or `erf` would be a call of these very functions; the long double forms have other names.

#include <math.h>
#include "host.h"

static int calls;
int interp_calls(void) { return calls; }
double lgamma(double x) { return ++calls, (double)lgammal(x); }
double erf(double x) { return ++calls, (double)erfl(x); }
