// first_host/interp.c: libHVMInterp.so. The functions cannot call themselves by these names.

#include <math.h>

double lgamma(double x) { return (double)lgammal(x); }
double erf(double x) { return (double)erfl(x); }
