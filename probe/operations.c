// probe/operations.c: finding the host's functions by their names
//
// A module is linked to its host's libraries, and the loader does not open it over a host that lacks a function or a
// version. The probe looks everything up itself, in the same order: in what the process has loaded, then in the
// library.

#define _GNU_SOURCE
#include "operations.h"

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "isolated.h"

Operations operations;

static const char interpreter_version[] = "HVMINTERP_1";

// A file that is cut off may end the process that loads it, so a child opens the library first.
static const char* tried;
static void try_library(void) {
  char step[40];
  snprintf(step, sizeof step, "loading %s", tried);
  enter(step, 1);
  dlopen(tried, RTLD_LAZY | RTLD_LOCAL);
}

// The library stays open, as it does under a module.
static void* opened(const char* name, const char** error) {
  tried = name;
  const Outcome outcome = run_isolated(try_library);
  if (outcome.verdict == BROKEN) {
    *error = strdup(outcome.finding);
    return NULL;
  }
  void* library = dlopen(name, RTLD_LAZY | RTLD_LOCAL);
  const char* reason = library != NULL ? NULL : dlerror();
  *error = reason != NULL ? strdup(reason) : NULL;
  return library;
}

static void* found(void* library, const char* name) {
  void* symbol = dlsym(RTLD_DEFAULT, name);
  return symbol != NULL || library == NULL ? symbol : dlsym(library, name);
}

// Functions and data have pointers of one size here, and no conversion between them.
static void store(void* place, void* symbol) { memcpy(place, &symbol, sizeof symbol); }

void find_operations(void) {
  void* kernel = opened("libHVMkrnl.so", &operations.kernel_error);
#define FIND(name) store(&operations.name, found(kernel, #name));
  HOST_OPERATIONS(FIND, FIND)
#undef FIND
  void* interpreter = opened("libHVMInterp.so", &operations.interpreter_error);
  if (interpreter == NULL) return;
  // In a library without any version node the loader finds a name under every version.
  operations.has_versions = dlvsym(interpreter, "erf", "ARRAYFOLD_PROBE_0") == NULL;
  store(&operations.lgamma, dlvsym(interpreter, "lgamma", interpreter_version));
  store(&operations.erf, dlvsym(interpreter, "erf", interpreter_version));
}
