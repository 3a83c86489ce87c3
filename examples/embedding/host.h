// embedding/host.h: the host's records, laid out by their offsets. A module does not use fields called `host`.

#pragma once

#include <stddef.h>
#include <stdint.h>

#define AT(record, field) offsetof(record, field)
#define PACKED __attribute__((packed))
#define NOTHING ((HostValue){.tag = NIL, .lifetime = 1})

typedef struct HostContext HostContext;

// clang-format off
// The record of every value. It is packed: an array of values has a stride of 18 bytes.
typedef struct PACKED {
  uint8_t tag;
  union { int32_t integer; int64_t integer64; double real; char* text;
          struct HostHash* table; struct HostCode* code; struct HostAny* any; };
  uint32_t owned, rest;
  uint8_t lifetime;  // 1: whoever drops the record releases what it holds; 0: there is nothing to release
} HostValue;
enum ValueTag { INTEGER = 0, REAL = 1, STRING = 2, TABLE = 5, NIL = 10, CODE = 13, OBJECT = 16, INTEGER64 = 20 };
_Static_assert(sizeof(HostValue) == 18 && AT(HostValue, integer) == 1 && AT(HostValue, any) == 1, "HostValue");
_Static_assert(AT(HostValue, owned) == 9 && AT(HostValue, lifetime) == 17, "HostValue");

// An object type: four callbacks and a manager. The contract defines only the name in the manager.
typedef void* Create(void);
typedef void Destroy(HostContext* ctx, void* content);
typedef uint8_t Method(HostContext* ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                       HostValue* result, int flag);
typedef uint8_t Operator(HostContext* ctx, int opcode, HostValue* left, HostValue* right, HostValue* result);
typedef struct { const char* name; Create* create; Destroy* destroy; Method* method; Operator* op; } AnyMan;
typedef struct HostAny { uint32_t host, state; AnyMan* manager; void* content; } HostAny;
_Static_assert(AT(HostAny, state) == 4 && AT(HostAny, manager) == 8 && AT(HostAny, content) == 16, "HostAny");

// A table: an ordered part, which this host leaves empty, and the items. A slot is an item's value.
typedef struct PACKED { HostValue key, value; uint8_t host[8]; } HostHashItem;
typedef struct HostHash { HostHashItem** index; int32_t indexed; HostHashItem* items; int32_t item_count; } HostHash;
_Static_assert(sizeof(HostHashItem) == 44 && AT(HostHashItem, value) == 18, "HostHashItem");
_Static_assert(AT(HostHash, items) == 16 && AT(HostHash, item_count) == 24, "HostHash");

// An unevaluated expression: a tree of nodes with two slots each, and the frame in which it was written.
typedef struct { uint32_t tag; uint64_t payload; uint32_t length; } HostCodeSlot;
typedef struct { uint64_t host; uint32_t kind; HostCodeSlot link, value; } HostCodeNode;
typedef struct HostCode { uint64_t host; HostCodeNode* root; uint64_t host_words[2]; uint32_t frame_base; } HostCode;
enum { SLOT_NODE = 0, SLOT_TEXT = 2, SLOT_INTEGER = 3, SLOT_VARIABLE = 5, CALL = 3, CELL = 105, QUOTATION = 109 };
_Static_assert(AT(HostCodeNode, kind) == 8 && AT(HostCodeNode, link) == 16, "HostCodeNode");
_Static_assert(AT(HostCodeNode, link.payload) == 24 && AT(HostCodeNode, value) == 40, "HostCodeNode");
_Static_assert(AT(HostCodeNode, value.payload) == 48 && AT(HostCodeNode, value.length) == 56, "HostCodeNode");
_Static_assert(AT(HostCode, root) == 8 && AT(HostCode, frame_base) == 32, "HostCode");

// Every call gets a context. It is opaque, except for access to the variables and functions of the running script.
typedef int CallFunction(void* callee, HostContext* ctx, HostValue* args, int nargs, HostValue* result);
typedef HostValue* ReadSlot(HostContext* ctx, int slot);
typedef struct { uint64_t host[2]; uint32_t slot_base, host_words[11], copy_strings; } HostFrame;
struct HostContext { uint64_t host[7]; HostFrame* frame; uint64_t host_word; CallFunction* call; ReadSlot* read; };
_Static_assert(AT(HostFrame, slot_base) == 16 && AT(HostFrame, copy_strings) == 64, "HostFrame");
_Static_assert(AT(HostContext, call) == 72 && AT(HostContext, read) == 80, "HostContext");

// A row of the table that a module registers, and the one function that it exports, in the form that dlsym gives.
typedef struct { const char* name; int (*function)(HostContext*, HostValue* args, int, HostValue*); } FunctionRow;
_Static_assert(sizeof(FunctionRow) == 16 && AT(FunctionRow, function) == 8, "FunctionRow");
typedef int TakeFunctions(void* host, int count, const FunctionRow* rows);
typedef union { void* symbol; int (*init)(void* host, TakeFunctions* take); } PackageInit;
// clang-format on

// What the program calls in the two libraries: two operations, and three functions of this host.
HostValue* HVM_HashSetInt(HostContext* ctx, HostHash* hash, int key);
void HVM_FreeObjectContent(HostContext* ctx, HostValue* value);
int host_types(void);    // types registered so far
int host_blocks(void);   // blocks of memory handed out and not given back
int interp_calls(void);  // calls of lgamma and erf so far
