// probe/fixture.h: what the checks have in common
//
// A check ends with the first thing that is not as promised, in a process of its own: see isolated.h.

#pragma once

#include <arrayfold/host.h>

#include "isolated.h"
#include "operations.h"
#include "promises.h"

#define COUNT(array) ((int)(sizeof(array) / sizeof *(array)))

// An operation of the host, for a call: HOST(HVM_AsInt)(&value). The check ends here if the host lacks it.
#define HOST(operation) (enter(#operation, operations.operation != NULL), operations.operation)

// The context for the checks: that of the call by which a script asks for them.
extern HostContext context;

// ---- Records as a module makes them

HostValue nil(void);
HostValue integer(int32_t x);
HostValue integer64(int64_t x);
HostValue real(double x);

// Three characters, not all of them ASCII.
extern const HostWide wide_text[4];

// ---- Types, and objects that record when they are destroyed

typedef struct Content {
  int is_destroyed;
} Content;

extern const char type_name[7], other_name[12];
extern const char barren_name[13];  // of a type whose objects get no content

extern Content contents[64];  // of the objects of the first type, in the order of their making
extern int made, destroyed;
extern int strange;  // calls of destroy with another content, or twice with one
extern Content others[4];
extern int others_made;
extern AnyMan* manager;
extern Outcome registration;  // of the types

HostAny* new_object(void);
// Gives a record an object of the first type.
Content* put_object(HostValue* value);

void expect_destroyed(const Content* content, const char* when);
void expect_alive(const Content* content, const char* when);

// ---- Values of the host

void expect_tag(const char* operation, const HostValue* value, int tag);
// If the record holds wide text, its characters are compared, too.
void expect_text(const char* setter, HostValue* value, const char* expected);

// A new table in a record.
HostHash* table_in(HostValue* value);
HostValue* slot_of(HostHash* table, int key);
void set_entry(HostHash* table, int key, int x);
// Whether a slot means that there is no entry.
int is_absent(const HostValue* slot);
