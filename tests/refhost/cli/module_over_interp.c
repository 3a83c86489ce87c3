// refhost/cli/module_over_interp.c: a module that needs the interpreter library

double lgamma(double x);
double erf(double x);

__attribute__((visibility("default"))) int PKG_Init(void* host, void* functions) {
  (void)host;
  (void)functions;
  return lgamma(3.0) + erf(1.0) > 0.0;
}
