/* coverage/figures.h: how the files of a process hand over what writes their figures
 *
 * A program and each library that it loads count for themselves. */

#pragma once

struct FigureWriter {
  void (*write)(void);  /* adds the figures so far to those on disk, and starts again from zero */
  struct FigureWriter* next;
};

/* Defined in programs. In a program that does not define them, libraries write their figures at a regular end alone. */
__attribute__((weak, visibility("default"))) void arrayfold_coverage_add(struct FigureWriter* writer);
__attribute__((weak, visibility("default"))) void arrayfold_coverage_remove(const struct FigureWriter* writer);
