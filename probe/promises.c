// probe/promises.c: all promises, in the order of docs/host-contract.md

#include "promises.h"

#include <stddef.h>

static const PromiseGroup* const groups[] = {&library_promises, &record_promises, &number_promises, &text_promises,
                                             &object_promises,  &table_promises,  &heap_promises,   &memory_promises};

const Promise* promise_at(int i) {
  for (size_t group = 0; i >= 0 && group < sizeof groups / sizeof *groups; i -= groups[group++]->count)
    if (i < groups[group]->count) return &groups[group]->first[i];
  return NULL;
}

int promise_count(void) {
  int count = 0;
  while (promise_at(count) != NULL) ++count;
  return count;
}
