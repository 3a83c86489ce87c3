// script/module/fault_report.cpp: the report when a module ends the process
//
// The signal handler only reads plain memory and calls write, sigaction and raise.

#include "script/module/fault_report.hpp"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <vector>

#include "script/module/exception_text.hpp"

namespace hvm {

const RunningPlace* running_place = nullptr;

namespace {

volatile sig_atomic_t is_reported = 0;

struct Fault {
  int signal;
  const char* text;
};
constexpr std::array<Fault, 5> faults{{{SIGFPE, "SIGFPE: a division of integers by zero or beyond their range"},
                                       {SIGSEGV, "SIGSEGV: an access outside of its memory"},
                                       {SIGBUS, "SIGBUS: an access that the memory does not allow"},
                                       {SIGILL, "SIGILL: an instruction that the processor does not know"},
                                       {SIGABRT, "SIGABRT: it aborted"}}};

/// A line of text in a fixed buffer, written at once. What does not fit is dropped.
class Line {
 public:
  Line& operator<<(const char* text) {
    for (; *text != '\0' && size_ < sizeof(bytes_); ++text) bytes_[size_++] = *text;
    return *this;
  }
  Line& operator<<(std::size_t number) {
    char digits[24] = {};
    char* first = digits + sizeof(digits) - 1;
    do *--first = static_cast<char>('0' + number % 10);
    while ((number /= 10) != 0);
    return *this << first;
  }
  void put() const {
    const ssize_t written = write(STDERR_FILENO, bytes_, size_);
    static_cast<void>(written);
  }

 private:
  char bytes_[1024];
  std::size_t size_ = 0;
};

void begin(Line& line) {
  line << "hvm: ";
  const RunningPlace* place = running_place;
  if (place && place->source)
    line << place->source->name().c_str() << ":" << place->source->line(place->offset) << ": ";
  line << (place && place->is_in_module ? "the module ended the process: "
                                        : "the process ends outside of a call of the module: ");
}

void report_signal(int signal) {
  if (!is_reported) {
    is_reported = 1;
    Line line;
    begin(line);
    for (const Fault& fault : faults)
      if (fault.signal == signal) line << fault.text;
    (line << "\n").put();
  }
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  raise(signal);
}

[[noreturn]] void report_terminate() {
  Line line;
  begin(line);
  line << "std::terminate was called";
  if (std::current_exception()) line << " with an exception of type " << current_exception_type().c_str();
  (line << "\n").put();
  is_reported = 1;
  std::abort();
}

/// Room for the handler where the stack itself has run out.
void use_alternate_stack() {
  static std::vector<char> room(static_cast<std::size_t>(64) * 1024);
  stack_t stack = {};
  stack.ss_sp = room.data();
  stack.ss_size = room.size();
  sigaltstack(&stack, nullptr);
}

}  // namespace

void install_fault_report() {
  use_alternate_stack();
  struct sigaction action = {};
  action.sa_handler = report_signal;
  action.sa_flags = SA_ONSTACK | SA_NODEFER;
  for (const Fault& fault : faults) sigaction(fault.signal, &action, nullptr);
  std::set_terminate(report_terminate);
}

}  // namespace hvm
