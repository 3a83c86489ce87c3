// probe/operations.h: the host's 46 functions, as a module finds them. One that the host lacks is null.

#pragma once

#include <arrayfold/host.h>

typedef struct Operations {
#define OPERATION(name) __typeof__(&(name)) name;
  HOST_OPERATIONS(OPERATION, OPERATION)
#undef OPERATION
  double (*lgamma)(double x);
  double (*erf)(double x);
  const char* kernel_error;       // why libHVMkrnl.so is not found, otherwise null
  const char* interpreter_error;  // the same for libHVMInterp.so
  int has_versions;               // whether libHVMInterp.so has any version node
} Operations;

extern Operations operations;

void find_operations(void);
