// probe/isolated.h: checks in processes of their own, so that a host that crashes in one cannot end the others

#pragma once

#include <stddef.h>

typedef enum Verdict { KEPT, BROKEN, UNCHECKED } Verdict;

typedef struct Outcome {
  Verdict verdict;
  char finding[1000];  // what was seen, empty if the promise is kept
  char operation[40];  // the operation in or after which the process ended, empty if it did not
} Outcome;

// Runs `check` in a child of this process. The promise is kept if `check` returns.
Outcome run_isolated(void (*check)(void));

// ---- For checks. Each of the two ends the process of the check.

_Noreturn void broken(const char* format, ...) __attribute__((format(printf, 1, 2)));
_Noreturn void unchecked(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Notes which operation comes next. If it does not exist, the check ends as unchecked.
void enter(const char* operation, int exists);
