// refhost/cli/module_faulting.c: a module that ends the process when it starts

#include <stdlib.h>

__attribute__((visibility("default"))) int PKG_Init(void* host, void* functions) {
  (void)host;
  (void)functions;
  abort();
}
