// first_host/rest.c: the other operations, so that the module loads. A call of one ends the process.

#include <arrayfold/host.h>
#include <stdlib.h>

void first_host_lacks_it(void) { abort(); }
#define LACKS(name) __asm__(".weak " #name "\n.set " #name ", first_host_lacks_it");
HOST_OPERATIONS(LACKS, LACKS)
