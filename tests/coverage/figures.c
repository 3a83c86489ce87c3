/* coverage/figures.c: the part of every program and library that writes its own figures */

#include "figures.h"

#include <gcov.h>

static void write_figures(void) {
  __gcov_dump();
  __gcov_reset();
}

static struct FigureWriter writer = {write_figures, 0};

__attribute__((constructor)) static void add(void) {
  if (arrayfold_coverage_add) arrayfold_coverage_add(&writer);
}

__attribute__((destructor)) static void remove_again(void) {
  if (arrayfold_coverage_remove) arrayfold_coverage_remove(&writer);
}
