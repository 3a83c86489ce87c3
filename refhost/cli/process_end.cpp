// cli/process_end.cpp: the end of the process

#include "cli/process_end.hpp"

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>

namespace hvm {

void end_process(int status) {
  rlimit memory = {};
  const bool is_limited = getrlimit(RLIMIT_AS, &memory) == 0 && memory.rlim_cur != RLIM_INFINITY;
  if (is_limited) {
    std::fflush(nullptr);
    std::_Exit(status);
  }
  std::exit(status);
}

}  // namespace hvm
