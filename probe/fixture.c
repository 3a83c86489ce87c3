// probe/fixture.c: records, types and objects for the checks

#include "fixture.h"

#include <string.h>

HostContext context;
void use_context(HostContext ctx) { context = ctx; }

HostValue nil(void) {
  HostValue value;
  memset(&value, 0, sizeof value);
  value.tag = HOST_TAG_NIL;
  value.lifetime = HOST_LIFETIME_TEMPORARY;
  return value;
}

HostValue integer(int32_t x) {
  HostValue value = nil();
  value.tag = HOST_TAG_INTEGER;
  value.integer = x;
  return value;
}

HostValue integer64(int64_t x) {
  HostValue value = nil();
  value.tag = HOST_TAG_INTEGER64;
  value.integer64 = x;
  return value;
}

HostValue real(double x) {
  HostValue value = nil();
  value.tag = HOST_TAG_REAL;
  value.real = x;
  return value;
}

const HostWide wide_text[4] = {'w', 0xE9, 0x20AC, 0};

// ---- Types and objects

const char type_name[7] = "$probe";
const char other_name[12] = "$probeother";
const char barren_name[13] = "$probebarren";

Content contents[64];
int made, destroyed, strange;
Content others[4];
int others_made;
AnyMan* manager;
Outcome registration;

static void* create(void) { return made < COUNT(contents) ? &contents[made++] : NULL; }
static void* create_other(void) { return others_made < COUNT(others) ? &others[others_made++] : NULL; }
static void* create_nothing(void) { return NULL; }

static void destroy(HostContext ctx, void* content) {
  (void)ctx;
  Content* const known = content;
  strange += known < contents || known >= contents + made || known->is_destroyed;
  if (known < contents || known >= contents + made) return;
  known->is_destroyed = 1;
  ++destroyed;
}

static void destroy_other(HostContext ctx, void* content) { (void)ctx, (void)content; }

static HostBool method(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                       HostValue* result, int flag) {
  (void)ctx, (void)self, (void)name, (void)args, (void)nargs, (void)result, (void)flag;
  return 0;
}

static HostBool operate(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  (void)ctx, (void)opcode, (void)left, (void)right, (void)result;
  return 0;
}

AnyMan* register_type(const char* name, CreateCallback make, DestroyCallback end, MethodCallback call,
                      OperatorCallback op) {
  AnyMan* man = HOST(HVM_NewAnyMan)(name, make, end, call, op, NULL);
  if (man != NULL) HOST(HVM_RegisterAnyMan)(name, man);
  return man;
}

static void make_types(void) {
  manager = register_type(type_name, create, destroy, method, operate);
  register_type(other_name, create_other, destroy_other, method, operate);
  register_type(barren_name, create_nothing, destroy_other, method, operate);
}

static void try_types(void) {
  make_types();
  if (manager == NULL) broken("HVM_NewAnyMan returned null");
}

// A host that crashes here does so in a child first; then the types are not registered.
int register_types(void) {
  registration = run_isolated(try_types);
  if (registration.verdict == KEPT) make_types();
  return registration.verdict == KEPT;
}

HostAny* new_object(void) {
  if (registration.verdict != KEPT) unchecked("there is no type: %s", registration.finding);
  const int before = made;
  HostAny* any = HOST(HVM_NewAny)(context, type_name, 0, 0);
  if (any == NULL || made != before + 1) unchecked("HVM_NewAny makes no object");
  return any;
}

Content* put_object(HostValue* value) {
  HostAny* any = new_object();
  HOST(HVM_SetTypeAny)(context, value, any);
  return &contents[made - 1];
}

void expect_destroyed(const Content* content, const char* when) {
  if (!content->is_destroyed) broken("an object was not destroyed %s", when);
  if (strange > 0) broken("destroy was called with another content, or twice");
}

void expect_alive(const Content* content, const char* when) {
  if (content->is_destroyed) broken("an object was destroyed %s", when);
}

// ---- Values of the host

void expect_tag(const char* operation, const HostValue* value, int tag) {
  if (value->tag != tag) broken("%s stored a record of tag %d, not %d", operation, value->tag, tag);
}

void expect_text(const char* setter, HostValue* value, const char* expected) {
  const int length = (int)strlen(expected);
  if (HOST(HVM_StringLen)(value) != length)
    broken("%s stored %d characters instead of %d", setter, HOST(HVM_StringLen)(value), length);
  const char* text = HOST(HVM_AsString)(value);
  if (text == NULL || memcmp(text, expected, (size_t)length) != 0) broken("%s stored other characters", setter);
  for (int i = 0; value->tag == HOST_TAG_WIDE_STRING && i < length; ++i)
    if (value->wide_text[i] != (HostWide)expected[i]) broken("%s stored other wide characters", setter);
}

HostHash* table_in(HostValue* value) {
  HOST(HVM_ForceTable)(context, value, 4);
  if (value->tag != HOST_TAG_TABLE || value->table == NULL) unchecked("HVM_ForceTable makes no table");
  return value->table;
}

HostValue* slot_of(HostHash* table, int key) {
  HostValue* slot = HOST(HVM_HashSetInt)(context, table, key);
  if (slot == NULL) broken("HVM_HashSetInt returned null for the key %d", key);
  return slot;
}

void set_entry(HostHash* table, int key, int x) {
  HostValue* slot = slot_of(table, key);
  HOST(HVM_SetInt)(context, slot, x);
}

int is_absent(const HostValue* slot) { return slot == NULL || slot == HOST(HVM_GetGlobalNilObj)(); }
