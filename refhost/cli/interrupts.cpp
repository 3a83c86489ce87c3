// cli/interrupts.cpp: Ctrl-C at the prompt
//
// The handlers only read plain memory, and call write, clock_gettime, timer_settime, pthread_kill, sigaction and raise.

#include "cli/interrupts.hpp"

#include <pthread.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <system_error>

#include "cli/names.hpp"
#include "script/module/fault_report.hpp"
#include "script/stop/interruption.hpp"

namespace hvm {
namespace {

constexpr long tick_nanoseconds = 100'000'000;
constexpr std::int64_t milliseconds_until_told = 1000;
constexpr std::int64_t milliseconds_until_end = 500;  // a key that is held down does not end hvm
constexpr std::int64_t never = -1;

std::atomic<Interpreter*> running{nullptr};
std::atomic<std::int64_t> pressed_at{never};  // in milliseconds
std::atomic<std::int64_t> told_at{never};
pthread_t main_thread;
timer_t timer;

std::int64_t milliseconds() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

void set_timer(long nanoseconds) {
  itimerspec period = {};
  period.it_interval.tv_nsec = nanoseconds;
  period.it_value.tv_nsec = nanoseconds;
  timer_settime(timer, 0, &period, nullptr);
}

/// Writes to the terminal, from a signal handler.
class Line {
 public:
  Line& operator<<(const char* text) { return append(text, std::strlen(text)); }
  Line& append(const char* text, std::size_t size) {
    for (std::size_t i = 0; i < size && size_ < sizeof(bytes_); ++i) bytes_[size_++] = text[i];
    return *this;
  }
  void put() const { [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, bytes_, size_); }

 private:
  char bytes_[256];
  std::size_t size_ = 0;
};

/// The name of the function whose call stands at the running place; empty where there is another expression.
std::string_view called_name() {
  const RunningPlace* place = running_place;
  if (!place || !place->source) return {};
  const std::string& text = place->source->text();
  std::size_t end = place->offset;
  while (end < text.size() && is_in_name(text[end])) ++end;
  if (end >= text.size() || text[end] != '(') return {};
  return std::string_view(text).substr(place->offset, end - place->offset);
}

void tell() {
  told_at = milliseconds();
  const std::string_view name = called_name();
  Line line;
  line << "\nwaiting for ";
  if (name.empty())
    line << (running_place && running_place->is_in_module ? "the module" : "the statement");
  else
    line.append(name.data(), name.size());
  (line << (name.empty() && !(running_place && running_place->is_in_module) ? " to end" : " to return")
        << "; press Ctrl-C again to end hvm\n")
      .put();
}

void end_process_by(int signal) {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  raise(signal);
}

/// Whether another thread got the signal; the main thread gets it then.
bool is_passed_on(int signal) {
  if (pthread_equal(pthread_self(), main_thread)) return false;
  pthread_kill(main_thread, signal);
  return true;
}

void press(int signal) {
  const int error = errno;
  Interpreter* interpreter = running;
  if (!is_passed_on(signal) && interpreter) {
    interpreter->interrupt();
    if (pressed_at == never) {
      pressed_at = milliseconds();
      set_timer(tick_nanoseconds);
    } else if (told_at == never) {
      tell();
    } else if (milliseconds() - told_at >= milliseconds_until_end) {
      end_process_by(signal);
    }
  }
  errno = error;
}

void tick(int signal) {
  const int error = errno;
  Interpreter* interpreter = running;
  if (!is_passed_on(signal) && interpreter && pressed_at != never) {
    interpreter->interrupt();
    if (told_at == never && milliseconds() - pressed_at >= milliseconds_until_told) tell();
  }
  errno = error;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART | SA_ONSTACK;
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGALRM);
  sigaction(signal, &action, nullptr);
}

}  // namespace

Interrupts::Interrupts() {
  main_thread = pthread_self();
  sigevent event = {};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = SIGALRM;
  if (timer_create(CLOCK_MONOTONIC, &event, &timer) != 0)
    throw std::system_error(errno, std::generic_category(), "there is no timer");
  handle(SIGALRM, tick);
  handle(SIGINT, press);
}

Interrupts::~Interrupts() {
  handle(SIGINT, SIG_DFL);
  timer_delete(timer);
  handle(SIGALRM, SIG_DFL);
}

Interrupts::Run::Run(Interpreter& interpreter) noexcept {
  pressed_at = never;
  told_at = never;
  is_interruption_requested = false;
  running = &interpreter;
}

Interrupts::Run::~Run() {
  running = nullptr;
  if (pressed_at != never) set_timer(0);
  is_interruption_requested = false;
}

}  // namespace hvm
