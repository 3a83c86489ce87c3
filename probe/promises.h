// probe/promises.h: what a host promises, and the check of each promise

#pragma once

#include <arrayfold/host.h>

#include "isolated.h"

typedef struct Promise {
  const char* sentence;  // as in docs/host-contract.md
  void (*check)(void);
  enum { ANY_LAYOUT, OWN_LAYOUT, DECIDES_LAYOUT } layout;  // of records: the check needs it, or not, or tests it
} Promise;

// Promises about one subject, in a file of their own.
typedef struct PromiseGroup {
  const Promise* first;
  int count;
} PromiseGroup;

extern const PromiseGroup library_promises, record_promises, number_promises, text_promises, object_promises,
    table_promises, heap_promises, memory_promises;

// A promise by its number, counted from 0; null behind the last one.
const Promise* promise_at(int i);
int promise_count(void);

// Registers the types of objects with which promises are checked. Called once, by PKG_Init. False if the host cannot.
int register_types(void);

// Registers one type. Requires: register_types was true.
AnyMan* register_type(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op);

// The context for the checks: that of the call by which a script asks for them.
void use_context(HostContext ctx);
