/* coverage/process_ends.c: what ends a process without a return from main writes the figures first
 *
 * These functions of a program stand in front of the C library's, also for the libraries that it loads. Without the
 * right to write, as on a full disk, the process ends as it would, and its figures are lost. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "figures.h"

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

/* ---- Writing */

static struct FigureWriter* writers = 0;

void arrayfold_coverage_add(struct FigureWriter* writer) {
  writer->next = writers;
  writers = writer;
}

void arrayfold_coverage_remove(const struct FigureWriter* writer) {
  for (struct FigureWriter** place = &writers; *place; place = &(*place)->next)
    if (*place == writer) {
      *place = writer->next;
      return;
    }
}

/* Tests that bound memory or the size of files bound that of the figures, too, until here. */
static void lift_limits(void) {
  const __rlimit_resource_t resources[] = {RLIMIT_AS, RLIMIT_FSIZE};
  for (unsigned i = 0; i < sizeof resources / sizeof *resources; ++i) {
    struct rlimit limits;
    if (getrlimit(resources[i], &limits) != 0) continue;
    limits.rlim_cur = limits.rlim_max;
    setrlimit(resources[i], &limits);
  }
}

/* Runs at a regular end, before the figures are written. */
__attribute__((destructor)) static void prepare_regular_end(void) { lift_limits(); }

static void write_all(void) {
  const int error = errno;
  lift_limits();
  for (const struct FigureWriter* writer = writers; writer; writer = writer->next) writer->write();
  errno = error;
}

/* ---- Signals that end the process from outside */

/* Asks a process to write its figures and to end by SIGKILL, which no process sees coming. */
static int ending_signal(void) { return SIGRTMAX - 1; }

static void write_and_end(int signal) {
  write_all();
  const int last = signal == ending_signal() ? SIGKILL : signal;
  struct sigaction action = {0};
  action.sa_handler = SIG_DFL;
  sigaction(last, &action, 0);
  NEXT(kill)(getpid(), last);  /* comes when the handler returns */
}

static int has_default_action(int signal) {
  struct sigaction action;
  return sigaction(signal, 0, &action) == 0 && action.sa_handler == SIG_DFL;
}

__attribute__((constructor)) static void watch_signals(void) {
  const int signals[] = {SIGHUP, SIGINT, SIGTERM, SIGPIPE, ending_signal()};
  for (unsigned i = 0; i < sizeof signals / sizeof *signals; ++i) {
    if (!has_default_action(signals[i])) continue;
    struct sigaction action = {0};
    action.sa_handler = write_and_end;
    sigfillset(&action.sa_mask);
    sigaction(signals[i], &action, 0);
  }
}

/* ---- Functions in front of the C library's */

static int is_caught_by(pid_t process, int signal) {
  char text[64], line[256];
  unsigned long long caught = 0;
  snprintf(text, sizeof text, "/proc/%d/status", (int)process);
  FILE* const file = fopen(text, "r");
  if (!file) return 0;
  while (fgets(line, sizeof line, file))
    if (sscanf(line, "SigCgt: %llx", &caught) == 1) break;
  fclose(file);
  return (int)(caught >> (signal - 1) & 1);
}

static int has_ended(pid_t child) {
  siginfo_t info = {0};
  return waitid(P_PID, (id_t)child, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == child;
}

int kill(pid_t process, int signal) {
  const int error = errno;
  if (signal == SIGKILL && process > 0 && is_caught_by(process, ending_signal())) {
    NEXT(kill)(process, ending_signal());
    for (int turn = 0; turn < 4000 && !has_ended(process); ++turn) usleep(5000);
  }
  errno = error;
  return NEXT(kill)(process, signal);
}

/* A process that shall end with its parent must not end while it writes. */
int prctl(int option, ...) {
  va_list arguments;
  va_start(arguments, option);
  unsigned long words[4];
  for (unsigned i = 0; i < 4; ++i) words[i] = va_arg(arguments, unsigned long);
  va_end(arguments);
  if (option == PR_SET_PDEATHSIG && (int)words[0] == SIGKILL) words[0] = (unsigned long)ending_signal();
  return NEXT(prctl)(option, words[0], words[1], words[2], words[3]);
}

int raise(int signal) {
  if (has_default_action(signal)) write_all();
  return NEXT(raise)(signal);
}

/* A handler of SIGABRT ends the process by `raise`. */
void abort(void) {
  if (has_default_action(SIGABRT)) write_all();
  NEXT(abort)();
  __builtin_unreachable();
}

void _exit(int status) {
  write_all();
  NEXT(_exit)(status);
  __builtin_unreachable();
}

void _Exit(int status) { _exit(status); }

/* The new program has the limits that were set for it. */
int execv(const char* path, char* const words[]) {
  struct rlimit memory, files;
  const int has_limits = getrlimit(RLIMIT_AS, &memory) == 0 && getrlimit(RLIMIT_FSIZE, &files) == 0;
  write_all();
  if (has_limits) {
    setrlimit(RLIMIT_AS, &memory);
    setrlimit(RLIMIT_FSIZE, &files);
  }
  return NEXT(execv)(path, words);
}

/* These two bounds can be lifted again. */
int setrlimit(__rlimit_resource_t resource, const struct rlimit* limits) {
  struct rlimit now, liftable = *limits;
  const int is_lifted = resource == RLIMIT_AS || resource == RLIMIT_FSIZE;
  if (is_lifted && getrlimit(resource, &now) == 0) liftable.rlim_max = now.rlim_max;
  return NEXT(setrlimit)(resource, &liftable);
}
