// install/host/host.cpp: a host outside of the project, written against the installed headers
//
// Usage: host MODULE
//
// It loads the module over the host libraries that lie beside it, and prints the number of its functions.

#include <dlfcn.h>

#include <cstdio>

#include "host/host_operations.hpp"
#include "host/host_value.hpp"

namespace {

int take(void* host, int count, const arrayfold::FunctionRow*) {
  *static_cast<int*>(host) += count;
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  void* module = argc == 2 ? dlopen(argv[1], RTLD_NOW) : nullptr;
  void* symbol = module ? dlsym(module, "PKG_Init") : nullptr;
  if (!symbol) return std::fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "usage: host MODULE"), 1;
  int functions = 0;
  if (arrayfold::load<arrayfold::PackageInit>(&symbol)(&functions, take) != 1) return 1;
  std::printf("%d functions\n", functions);
  return 0;
}
