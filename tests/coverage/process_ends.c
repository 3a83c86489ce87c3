/* coverage/process_ends.c: what ends a process without a return from main writes the figures first
 *
 * These functions of a program stand in front of the C library's, also for the libraries that it loads. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include "figures.h"

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

static void write_all(void) {
  const int error = errno;
  for (const struct FigureWriter* writer = writers; writer; writer = writer->next) writer->write();
  errno = error;
}

static int has_default_action(int signal) {
  struct sigaction action;
  return sigaction(signal, 0, &action) == 0 && action.sa_handler == SIG_DFL;
}

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

void _exit(int status) {
  write_all();
  NEXT(_exit)(status);
  __builtin_unreachable();
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

int execv(const char* path, char* const words[]) {
  write_all();
  return NEXT(execv)(path, words);
}
