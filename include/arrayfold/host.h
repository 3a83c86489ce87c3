/* arrayfold/host.h: the contract between a scripting host and its modules, in C11
 *
 * A host is written from this file: it provides the 46 functions at its end, in two libraries, and calls what a module
 * registers. A module is written from it as well. All functions are C functions, so the name of a prototype is the name
 * of its symbol. The page docs/host-contract.md explains what stands here only in short.
 *
 * Records are little-endian and packed. Fields called `host...` belong to the host: modules do not read them. The
 * compiler warns where the address of a field is taken, because the field may be unaligned: copy the field instead.
 *
 * In C++ this file replaces host/host_value.hpp and host/host_operations.hpp; a source includes either it or those.
 */

#ifndef ARRAYFOLD_HOST_H
#define ARRAYFOLD_HOST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
typedef char16_t HostWide;
#define HOST_ASSERT(condition) static_assert(condition, "the contract fixes the layout")
#define HOST_NOTHROW noexcept
#else
typedef uint_least16_t HostWide; /* a 16-bit character: char16_t, without its header */
#define HOST_ASSERT(condition) _Static_assert(condition, "the contract fixes the layout")
#define HOST_NOTHROW
#endif
#define HOST_PACKED __attribute__((packed))
#define HOST_AT(record, field, offset) HOST_ASSERT(offsetof(record, field) == (offset))

/* ---- Values */

/* What a record holds. Tags without a name here are the host's own. */
enum HostTag {
  HOST_TAG_INTEGER = 0,           /* integer */
  HOST_TAG_REAL = 1,              /* real */
  HOST_TAG_STRING = 2,            /* text with a terminator; HVM_StringLen gives its length */
  HOST_TAG_SCALAR_4 = 4,          /* nothing to release */
  HOST_TAG_TABLE = 5,             /* table */
  HOST_TAG_STRING_RECORD = 6,     /* string_record; in the items of a table, a key of this tag is skipped */
  HOST_TAG_NIL = 10,              /* nothing, as in a new slot of a table */
  HOST_TAG_CONVERTED_STRING = 11, /* text in a form of the host: characters through HVM_AsString alone */
  HOST_TAG_CODE = 13,             /* code, an argument that was passed unevaluated */
  HOST_TAG_OBJECT = 16,           /* object */
  HOST_TAG_MATRIX = 17,           /* a matrix of the host */
  HOST_TAG_SCALAR_18 = 18,        /* nothing to release */
  HOST_TAG_INTEGER64 = 20,        /* integer64 */
  HOST_TAG_WIDE_STRING = 24,      /* wide_text, with its length from HVM_StringLen */
  HOST_TAG_TWO_WORDS = 25,        /* sixteen bytes, from the payload to `rest` */
  HOST_TAG_SCALAR_80 = 80,        /* nothing to release */
  HOST_TAG_SCALAR_81 = 81         /* nothing to release */
};

/* Who releases what a record holds. */
enum HostLifetime {
  HOST_LIFETIME_NONE = 0,      /* nothing to release */
  HOST_LIFETIME_TEMPORARY = 1, /* the owner of the record, when it drops the record */
  HOST_LIFETIME_PLAIN = 2      /* copied bit by bit, unchanged */
};

struct HostHash;
struct HostCode;
struct HostAny;
struct HostStringRecord;

/* Every value: 18 bytes, copied as a whole. An array of records has a stride of 18 bytes. */
typedef struct HOST_PACKED HostValue {
  uint8_t tag;
  union {
    int32_t integer;
    int64_t integer64;
    double real;
    const char* text;
    const HostWide* wide_text;
    struct HostHash* table;
    struct HostStringRecord* string_record;
    struct HostCode* code;
    struct HostAny* object;
    void* pointer;
    uint8_t payload[8];
  };
  uint32_t owned; /* tags 2, 11 and 24 of a temporary: nonzero if HVM_Free takes the payload */
  uint8_t rest[4];
  uint8_t lifetime;
} HostValue;
HOST_ASSERT(sizeof(HostValue) == 18);
HOST_AT(HostValue, payload, 1);
HOST_AT(HostValue, owned, 9);
HOST_AT(HostValue, rest, 13);
HOST_AT(HostValue, lifetime, 17);

/* The text of tag 6. Its characters begin at `text` and continue behind the record, up to a terminator. */
typedef struct HOST_PACKED HostStringRecord {
  uint8_t host_head[16];
  int32_t length;
  uint8_t host_words[16];
  char text[1];
} HostStringRecord;
HOST_AT(HostStringRecord, length, 16);
HOST_AT(HostStringRecord, text, 36);

/* ---- Objects */

/* A type of objects. What follows the name is the host's. */
typedef struct HOST_PACKED AnyMan {
  const char* name;
} AnyMan;
HOST_ASSERT(sizeof(AnyMan) == 8);

/* An object: its type, and the content that the type's create callback returned. */
typedef struct HOST_PACKED HostAny {
  uint32_t host_word;
  uint32_t state; /* the module writes 200 here and does not read it */
  AnyMan* manager;
  void* content;
} HostAny;
HOST_ASSERT(sizeof(HostAny) == 24);
HOST_AT(HostAny, state, 4);
HOST_AT(HostAny, manager, 8);
HOST_AT(HostAny, content, 16);

/* ---- Tables */

/* An entry. The slots that operations return are the addresses of `value`. */
typedef struct HOST_PACKED HostHashItem {
  HostValue key; /* in `items` of a table: with tag 6 or 10, the item is skipped */
  HostValue value;
  uint8_t host_words[8];
} HostHashItem;
HOST_ASSERT(sizeof(HostHashItem) == 44);
HOST_AT(HostHashItem, value, 18);
HOST_AT(HostHashItem, host_words, 36);

/* A table. An entry is either in the ordered part, `index`, or in `items`. While a module reads a table, the host may
 * change it, but not end it. */
typedef struct HOST_PACKED HostHash {
  HostHashItem** index;
  int32_t index_count;
  uint8_t host_word[4];
  HostHashItem* items;
  int32_t item_count;
} HostHash;
HOST_AT(HostHash, index_count, 8);
HOST_AT(HostHash, items, 16);
HOST_AT(HostHash, item_count, 24);

/* ---- Contexts and expressions */

/* The frame of the running function. */
typedef struct HOST_PACKED HostFrame {
  uint8_t host_head[16];
  uint32_t slot_base;
  uint8_t host_words[44];
  uint32_t copy_strings; /* 0: a module may refer to literal text instead of copying it */
} HostFrame;
HOST_AT(HostFrame, slot_base, 16);
HOST_AT(HostFrame, copy_strings, 64);

typedef struct HostContextRecord HostContextRecord;
typedef HostContextRecord* HostContext;

/* `callee` is the payload of a call node's link. Returns 0 if the call fails. `args` is null if `nargs` is 0. */
typedef int (*HostCallFunction)(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result);
/* Returns the record of a variable. `slot` is the slot of the node - frame->slot_base + code->frame_base; for a node of
 * kind 86 it is the slot of the node, unchanged. */
typedef HostValue* (*HostReadSlot)(HostContext ctx, int slot);

/* The first argument of every call. It is opaque apart from these fields. */
struct HOST_PACKED HostContextRecord {
  uint8_t host_head[56];
  HostFrame* frame;
  uint8_t host_word[8];
  HostCallFunction call_function;
  HostReadSlot read_slot;
};
HOST_ASSERT(sizeof(HostContextRecord) == 88);
HOST_AT(HostContextRecord, frame, 56);
HOST_AT(HostContextRecord, call_function, 72);
HOST_AT(HostContextRecord, read_slot, 80);

/* What a slot of a node holds. */
enum HostSlotTag {
  HOST_SLOT_NODE = 0,        /* node, which may be null */
  HOST_SLOT_ABSENT = 1,      /* marks an element without a key */
  HOST_SLOT_STRING = 2,      /* text */
  HOST_SLOT_INTEGER = 3,     /* integer */
  HOST_SLOT_REAL = 4,        /* real */
  HOST_SLOT_VARIABLE = 5,    /* slot */
  HOST_SLOT_INTEGER64 = 7,   /* integer64 */
  HOST_SLOT_WIDE_STRING = 10 /* wide_text */
};

struct HostCodeNode;

/* One of the two slots of a node. */
typedef struct HOST_PACKED HostCodeSlot {
  uint32_t tag;
  uint8_t host_word[4];
  union {
    struct HostCodeNode* node;
    const char* text;
    const HostWide* wide_text;
    int32_t integer;
    int64_t integer64;
    double real;
    uint32_t slot;
    uint8_t payload[8];
  };
  uint32_t length; /* of literal text, with its terminator; 0 if it is not recorded */
  uint8_t host_tail[4];
} HostCodeSlot;
HOST_ASSERT(sizeof(HostCodeSlot) == 24);
HOST_AT(HostCodeSlot, payload, 8);
HOST_AT(HostCodeSlot, length, 16);

/* The kinds of nodes that a module reads. The table in docs/host-contract.md says what their slots hold. */
enum HostNodeKind {
  HOST_NODE_CALL = 3,
  HOST_NODE_SELECTION = 4,
  HOST_NODE_LITERAL_OPEN = 7,
  HOST_NODE_LITERAL_CLOSE = 8,
  HOST_NODE_LITERAL_ITEM = 9,
  HOST_NODE_SLOT_LIST = 10,
  HOST_NODE_NAME_WRAPPER = 11,
  HOST_NODE_ARRAY_LITERAL = 45,
  HOST_NODE_NAME = 77,
  HOST_NODE_VARIABLE_NAME = 86,
  HOST_NODE_LIST_CELL = 105,
  HOST_NODE_DATA_ROW = 106,
  HOST_NODE_SLOT_LIST_INNER = 108,
  HOST_NODE_QUOTATION = 109,
  HOST_NODE_RANGE = 112,
  HOST_NODE_LABELLED = 388
};

/* A node of an expression. */
typedef struct HOST_PACKED HostCodeNode {
  uint8_t host_head[8];
  uint32_t kind;
  uint8_t host_word[4];
  HostCodeSlot link;
  HostCodeSlot value;
} HostCodeNode;
HOST_ASSERT(sizeof(HostCodeNode) == 64);
HOST_AT(HostCodeNode, kind, 8);
HOST_AT(HostCodeNode, link, 16);
HOST_AT(HostCodeNode, value, 40);

/* A named symbol of an expression. */
typedef struct HOST_PACKED HostSymbol {
  uint8_t host_head[24];
  const char* text;
} HostSymbol;
HOST_AT(HostSymbol, text, 24);

/* An expression (tag 13), and the frame in which it was written. */
typedef struct HOST_PACKED HostCode {
  uint8_t host_head[8];
  HostCodeNode* root; /* a quotation */
  uint8_t host_words[16];
  uint32_t frame_base;
} HostCode;
HOST_AT(HostCode, root, 8);
HOST_AT(HostCode, frame_base, 32);

/* ---- The index list of an element access, a[i, j]: opcodes 36865 and 36866 get it in place of the right operand
 *
 *   offset  0                8                        24                       40
 *           +----------------+------------------------+------------------------+---
 *           | packed_size    | entry 0: value, host's | entry 1: value, host's | ...    the entries in the list:
 *           +----------------+------------------------+------------------------+---     packed_size = 2 * count
 *
 *           +----------------+-----------+
 *           | packed_size    | elsewhere |----> entry 0, entry 1, ...                    the entries elsewhere:
 *           +----------------+-----------+                                              packed_size = 2 * count + 1
 *
 * One to eight entries of 16 bytes. Each begins with the pointer to the record of an index, a number.
 */

typedef struct HOST_PACKED HostIndexEntry {
  HostValue* value;
  uint8_t host_word[8];
} HostIndexEntry;
HOST_ASSERT(sizeof(HostIndexEntry) == 16);

typedef struct HOST_PACKED HostIndexList {
  uint64_t packed_size;
  union {
    HostIndexEntry* elsewhere;
    uint8_t entries[8]; /* the beginning of entry 0 */
  };
} HostIndexList;
HOST_ASSERT(sizeof(HostIndexList) == 16);
HOST_AT(HostIndexList, entries, 8);

/* ---- What a module gives to the host */

/* The operators. The last two take an index list, and on writing `result` is the value. */
enum HostOpcode {
  HOST_OPCODE_LESS_EQUAL = 81,
  HOST_OPCODE_GREATER_EQUAL = 82,
  HOST_OPCODE_NOT_EQUAL = 83,
  HOST_OPCODE_LESS = 84,
  HOST_OPCODE_GREATER = 85,
  HOST_OPCODE_EQUAL = 86,
  HOST_OPCODE_ADD = 95,
  HOST_OPCODE_SUBTRACT = 96,
  HOST_OPCODE_MULTIPLY = 97,
  HOST_OPCODE_DIVIDE = 98,
  HOST_OPCODE_REMAINDER = 99,
  HOST_OPCODE_READ_ONE_INDEX = 101,
  HOST_OPCODE_READ_ELEMENT = 36865,
  HOST_OPCODE_WRITE_ELEMENT = 36866
};

/* Eight bits, true if any of them is set. */
typedef uint8_t HostBool;

/* A function of scripts. `args` are `nargs` contiguous records. Returns 0 if the call fails, otherwise 1; `result` is
 * then either written or untouched. A call that fails leaves it untouched. A C++ exception may pass. */
typedef int (*EntryFunction)(HostContext ctx, HostValue* args, int nargs, HostValue* result);

typedef struct FunctionRow {
  const char* name;
  EntryFunction function;
} FunctionRow;
HOST_ASSERT(sizeof(FunctionRow) == 16);
HOST_AT(FunctionRow, function, 8);

/* Takes the rows, which are valid while the module is loaded. The result is ignored. */
typedef int (*RegisterFunctions)(void* host, int count, const FunctionRow* table);
/* The one function that a module exports: PKG_Init. It registers functions and types, and returns 1. */
typedef int (*PackageInit)(void* host, RegisterFunctions register_functions);

/* Makes the content of a new object. Returns null when out of memory. */
typedef void* (*CreateCallback)(void);
/* Ends the content of an object, once. `content` may be null. */
typedef void (*DestroyCallback)(HostContext ctx, void* content);
/* `args` are `nargs` pointers to records, unlike the records of a function. Returns false if the method fails. */
typedef HostBool (*MethodCallback)(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                                   HostValue* result, int flag);
/* Either operand may be null or no object. Returns false if the type does not combine the operands. */
typedef HostBool (*OperatorCallback)(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result);

/* ---- The 44 operations of libHVMkrnl.so
 *
 * HOST_OPERATIONS(USED, UNUSED) lists them: USED(name) for each that arrayfold.so imports, UNUSED(name) for each that
 * it does not. A host provides all 44, because other modules may import any. The module also imports both functions of
 * libHVMInterp.so, so it imports 42 of the 46.
 *
 * No operation throws. Pointers to records, tables and objects are not null, unless a comment says so.
 */

/* clang-format off */
#define HOST_OPERATIONS(USED, UNUSED) \
  USED(HVM_AnyCheck) USED(HVM_GetAny) USED(HVM_NewAny) USED(HVM_SetTypeAny) USED(HVM_NewAnyMan) \
  USED(HVM_RegisterAnyMan) \
  USED(HVM_NumberCheck) USED(HVM_AsInt) USED(HVM_AsInt64) USED(HVM_AsDouble) USED(HVM_AsBool) \
  USED(HVM_AsString) USED(HVM_StringCheckAll) USED(HVM_StringLen) \
  USED(HVM_SetInt) USED(HVM_SetInt64) USED(HVM_SetReal) USED(HVM_SetString) USED(HVM_SetStringEx) \
  USED(HVM_SetWString) USED(HVM_SetWStringEx) USED(HVM_SetConstStringEx) USED(HVM_SetConstWStringEx) \
  USED(HVM_ForceTable) USED(HVM_NewHash) USED(HVM_HashSetInt) USED(HVM_HashSet) USED(HVM_HashGetInt) \
  USED(HVM_HashGet) USED(HVM_HashGetBounds) USED(HVM_GetGlobalNilObj) \
  USED(HVM_NewObject) USED(HVM_NewObjects) USED(HVM_FreeObj) USED(HVM_FreeObjs) USED(HVM_FreeObjectContent) \
  USED(HVM_DupObject) \
  USED(HVM_Malloc) USED(HVM_Free) USED(HVM_Realloc2) UNUSED(HVM_ReallocNoLeak) UNUSED(HVM_GCFreeTable) \
  UNUSED(HVM_FreeMatrix) UNUSED(HVM_DelStrm)
/* clang-format on */

/* Objects and their types. The caller owns what HVM_NewAny returns until HVM_SetTypeAny passes it to a record. */

/* True if HVM_GetAny can give an object, which only a record of tag 16 has. */
HostBool HVM_AnyCheck(HostValue* value);
/* The object of a record that passed HVM_AnyCheck; the record still owns it. */
HostAny* HVM_GetAny(HostValue* value);
/* Calls the create callback of a registered type. Null for an unknown name, or if create returns null. */
HostAny* HVM_NewAny(HostContext ctx, const char* type_name, int64_t zero_1, int64_t zero_2);
/* Releases what `value` holds, and makes it own `any`, which may be null: the host decides what it then holds. */
void HVM_SetTypeAny(HostContext ctx, HostValue* value, HostAny* any);
/* A manager whose first field is `name`, or points to a copy of that text. The host owns the manager. */
AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void* null);
/* Makes the type known by its name. */
void HVM_RegisterAnyMan(const char* name, AnyMan* man);

/* Numbers. */

/* True for every value that the next four convert. Takes a record of any kind. */
HostBool HVM_NumberCheck(HostValue* value);
/* Takes a record of any kind, too: for what is no number, the host chooses the result. */
int HVM_AsInt(HostValue* value);
/* These require that HVM_NumberCheck is true. */
int64_t HVM_AsInt64(HostValue* value);
double HVM_AsDouble(HostValue* value);
/* The same. False for zero, true for other numbers. */
HostBool HVM_AsBool(HostValue* value);

/* Text. */

/* The characters of a text, with a terminator; the host owns them. Takes a record of any kind: for what is no text, the
 * result is null or a text that the host chooses. */
const char* HVM_AsString(HostValue* value);
/* True for every form of text. */
HostBool HVM_StringCheckAll(HostValue* value);
/* The number of characters, without a terminator. */
int HVM_StringLen(HostValue* value);

/* Setters. Each releases what the record holds, and then stores a number, or text that the record owns. */

void HVM_SetInt(HostContext ctx, HostValue* value, int x);
void HVM_SetInt64(HostContext ctx, HostValue* value, int64_t x);
void HVM_SetReal(HostContext ctx, HostValue* value, double x);
/* A copy of the text up to its terminator. */
void HVM_SetString(HostContext ctx, HostValue* value, const char* text);
/* A copy of `length` characters; there need not be a terminator. */
void HVM_SetStringEx(HostContext ctx, HostValue* value, const char* text, int length);
void HVM_SetWString(HostContext ctx, HostValue* value, const HostWide* text);
void HVM_SetWStringEx(HostContext ctx, HostValue* value, const HostWide* text, int length);
/* `length` characters that outlive the record, so that it may refer to them. The context is null. */
void HVM_SetConstStringEx(HostContext null, HostValue* value, const char* text, int length);
void HVM_SetConstWStringEx(HostContext null, HostValue* value, const HostWide* text, int length);

/* Tables. A slot belongs to its table, and may move when a new key is added. */

/* Releases what `value` holds, and makes it a table of tag 5. `capacity` is a hint. */
void HVM_ForceTable(HostContext ctx, HostValue* value, int capacity);
/* A new table, which the caller stores in a record of tag 5. */
HostHash* HVM_NewHash(HostContext ctx, int capacity);
/* The slot of a key, never null. A new one holds nil with lifetime 1. */
HostValue* HVM_HashSetInt(HostContext ctx, HostHash* hash, int key);
HostValue* HVM_HashSet(HostContext ctx, HostHash* hash, HostValue* key);
/* The slot of a key; null or the global nil object if the key is absent. The context is null. */
HostValue* HVM_HashGetInt(HostHash* hash, int key);
HostValue* HVM_HashGet(HostContext null, HostHash* hash, HostValue* key);
/* Writes the largest integer key to `*high`. */
void HVM_HashGetBounds(HostHash* hash, int* low, int* high);
/* Always the same record. It holds nil. */
HostValue* HVM_GetGlobalNilObj(void);

/* Records on the host's heap. */

/* A nil record, and `count` of them; the caller gives them back through the next two. */
HostValue* HVM_NewObject(void);
HostValue* HVM_NewObjects(int64_t count);
/* Free the records and what they hold. */
void HVM_FreeObj(HostContext ctx, HostValue* object);
void HVM_FreeObjs(HostContext ctx, HostValue* objects, int64_t count);
/* Releases what a record holds, and leaves lifetime 1 in a slot of a table. The host may leave the tag, because the
 * caller overwrites the record. */
void HVM_FreeObjectContent(HostContext ctx, HostValue* value);
/* A deep copy: tables and text are copied. The destination holds nil or a scalar. */
void HVM_DupObject(HostContext ctx, HostValue* destination, HostValue* source, uint8_t one);

/* Memory. Sizes have 64 bits. A null result means that there is no memory. */

void* HVM_Malloc(int64_t size);
void HVM_Free(void* pointer);
/* Moves the content, as far as it fits. If there is no memory, the old block stays as it is. */
void* HVM_Realloc2(void* pointer, int64_t new_size, int64_t old_size);
/* The same, but if there is no memory, the host decides about the old block. The reference host frees it. */
void* HVM_ReallocNoLeak(void* pointer, int64_t new_size);

/* Frees a new table that no record holds, and what its slots hold. */
void HVM_GCFreeTable(HostHash* hash);
/* Free what has lost its last reference. No operation makes a matrix or a stream. */
void HVM_FreeMatrix(void* matrix);
void HVM_DelStrm(void* stream);

/* ---- The 2 functions of libHVMInterp.so
 *
 * Both have the version node HVMINTERP_1, by which modules refer to them, and the meaning of the C library's functions.
 * The declarations are those of <math.h>.
 */

double lgamma(double x) HOST_NOTHROW;
double erf(double x) HOST_NOTHROW;

#ifdef __cplusplus
}
#endif

#endif
