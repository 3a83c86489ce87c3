// first_host/interp.c: libHVMInterp.so. It calls erfl and lgammal, because here erf and lgamma are its own functions.

#include <math.h>

double lgamma(double x) { return (double)lgammal(x); }
double erf(double x) { return (double)erfl(x); }
