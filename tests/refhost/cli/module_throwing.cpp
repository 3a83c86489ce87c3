// refhost/cli/module_throwing.cpp: a module that throws when it starts

#include <stdexcept>

extern "C" __attribute__((visibility("default"))) int PKG_Init(void*, void*) {
  throw std::runtime_error("no room today");
}
