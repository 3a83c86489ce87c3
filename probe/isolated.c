// probe/isolated.c: a check in a child process, and its outcome in memory that parent and child share

#define _GNU_SOURCE
#include "isolated.h"

#include <errno.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// How long a check may take. An emulator may need longer.
static unsigned most_seconds(void) {
  const char* text = getenv("ARRAYFOLD_PROBE_SECONDS");
  const int seconds = text != NULL ? atoi(text) : 0;
  return seconds > 0 ? (unsigned)seconds : 10;
}

typedef struct Shared {
  int has_ended;  // by the check itself
  Outcome outcome;
} Shared;
static Shared* shared;

static _Noreturn void end(Verdict verdict, const char* format, va_list values) {
  shared->outcome.verdict = verdict;
  vsnprintf(shared->outcome.finding, sizeof shared->outcome.finding, format, values);
  shared->has_ended = 1;
  _exit(0);
}

void broken(const char* format, ...) {
  va_list values;
  va_start(values, format);
  end(BROKEN, format, values);
}

void unchecked(const char* format, ...) {
  va_list values;
  va_start(values, format);
  end(UNCHECKED, format, values);
}

void enter(const char* operation, int exists) {
  if (!exists) unchecked("the host has no %s", operation);
  snprintf(shared->outcome.operation, sizeof shared->outcome.operation, "%s", operation);
}

// Signals end the child, without the handlers of the host and without a core file. An alarm ends a check that hangs.
static _Noreturn void run_in_child(void (*check)(void)) {
  static const int signals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGALRM, SIGTRAP};
  for (size_t i = 0; i < sizeof signals / sizeof *signals; ++i) signal(signals[i], SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, NULL);
  setrlimit(RLIMIT_CORE, &(struct rlimit){0, 0});
  alarm(most_seconds());
  check();
  shared->has_ended = 1;
  _exit(0);
}

// The finding about a child that ended before its check did.
static void describe_end(Outcome* outcome, int status) {
  const char* operation = *outcome->operation ? outcome->operation : "the first operation";
  char* text = outcome->finding;
  const size_t size = sizeof outcome->finding;
  outcome->verdict = BROKEN;
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
    snprintf(text, size, "%s did not return within %u seconds", operation, most_seconds());
  else if (WIFSIGNALED(status))
    snprintf(text, size, "the process ended in or after %s: signal %d, %s", operation, WTERMSIG(status),
             strsignal(WTERMSIG(status)));
  else
    snprintf(text, size, "the process ended in or after %s: exit status %d", operation, WEXITSTATUS(status));
}

static Outcome without_child(const char* cause) {
  Outcome outcome = {.verdict = UNCHECKED};
  snprintf(outcome.finding, sizeof outcome.finding, "no process can be made for the check: %s", cause);
  return outcome;
}

Outcome run_isolated(void (*check)(void)) {
  if (shared == NULL) {
    void* memory = mmap(NULL, sizeof *shared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return without_child(strerror(errno));
    shared = memory;
  }
  memset(shared, 0, sizeof *shared);
  fflush(NULL);  // a child that the host ends by exit() writes nothing a second time
  const pid_t child = fork();
  if (child < 0) return without_child(strerror(errno));
  if (child == 0) run_in_child(check);
  int status = 0;  // stays so if the host itself takes the status of all children
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  Outcome outcome = shared->outcome;
  if (!shared->has_ended) describe_end(&outcome, status);
  if (shared->has_ended) *outcome.operation = '\0';
  return outcome;
}
