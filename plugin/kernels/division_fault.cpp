// kernels/division_fault.cpp: ending the process as a fault of the processor would

#include "kernels/division_fault.hpp"

#include <csignal>
#include <cstdlib>

namespace arrayfold {

void end_by_division_fault() {
  std::raise(SIGFPE);
  // The host ignores or blocks the signal, or its handler has returned. A fault ends the process all the same.
  std::signal(SIGFPE, SIG_DFL);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGFPE);
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  std::raise(SIGFPE);
  std::abort();
}

}  // namespace arrayfold
