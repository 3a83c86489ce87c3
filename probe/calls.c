// probe/calls.c: arguments, operands and index lists as a module reads them
//
// Wrong records and index lists may end the process that reads them, so a child reads them.

#include "calls.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "operations.h"

// The call at hand, for the check without parameters that runs in the child.
static struct {
  const char* name;
  HostValue* records;
  HostValue** pointers;
  int nargs;
  int opcode;
  HostValue *left, *right, *result;
} call;

static char text[400];

static void add(const char* format, ...) __attribute__((format(printf, 1, 2)));
static void add(const char* format, ...) {
  const size_t length = strlen(text);
  va_list values;
  va_start(values, format);
  vsnprintf(text + length, sizeof text - length, format, values);
  va_end(values);
}

static void add_string(HostValue* value) {
  enter("HVM_AsString", operations.HVM_AsString != NULL && operations.HVM_StringLen != NULL);
  add("\"%.*s\"", operations.HVM_StringLen(value), operations.HVM_AsString(value));
}

static void add_value(HostValue* value) {
  if (value == NULL)
    add("null");
  else if (value->tag == HOST_TAG_INTEGER)
    add("%d", value->integer);
  else if (value->tag == HOST_TAG_INTEGER64)
    add("%lld", (long long)value->integer64);
  else if (value->tag == HOST_TAG_REAL)
    add("%.17g", value->real);
  else if (value->tag == HOST_TAG_STRING || value->tag == HOST_TAG_WIDE_STRING)
    add_string(value);
  else if (value->tag == HOST_TAG_OBJECT)
    add("object");
  else if (value->tag == HOST_TAG_NIL)
    add("nil");
  else
    add("tag %d", value->tag);
}

static void describe_function(void) {
  add("function(");
  for (int i = 0; i < call.nargs; ++i) add("%s", i > 0 ? ", " : ""), add_value(&call.records[i]);
  add(")");
  unchecked("%s", text);
}

static void describe_method(void) {
  add("method %s(", call.name);
  for (int i = 0; i < call.nargs; ++i) add("%s", i > 0 ? ", " : ""), add_value(call.pointers[i]);
  add(")");
  unchecked("%s", text);
}

static void add_indices(const HostIndexList* list) {
  const int is_elsewhere = list->packed_size % 2 == 1;
  const uint64_t count = list->packed_size / 2;
  if (count < 1 || count > 8) broken("the index list has %llu indices", (unsigned long long)count);
  const HostIndexEntry* entries = (const HostIndexEntry*)(const void*)list->entries;
  if (is_elsewhere) entries = list->elsewhere;
  add("[");
  for (uint64_t i = 0; i < count; ++i) add("%s", i > 0 ? ", " : ""), add_value(entries[i].value);
  add("]%s", is_elsewhere ? " elsewhere" : "");
}

static void describe_operator(void) {
  add("operator %d: ", call.opcode);
  add_value(call.left);
  add(" ");
  if (call.opcode == HOST_OPCODE_READ_ELEMENT || call.opcode == HOST_OPCODE_WRITE_ELEMENT)
    add_indices((const HostIndexList*)(const void*)call.right);
  else
    add("and "), add_value(call.right);
  if (call.opcode == HOST_OPCODE_WRITE_ELEMENT) add(" = "), add_value(call.result);
  unchecked("%s", text);
}

static Outcome described(void (*describe)(void)) {
  *text = '\0';
  return run_isolated(describe);
}

Outcome described_function(HostValue* args, int nargs) {
  call.records = args;
  call.nargs = nargs;
  return described(describe_function);
}

Outcome described_method(const char* name, HostValue** args, int nargs) {
  call.name = name;
  call.pointers = args;
  call.nargs = nargs;
  return described(describe_method);
}

Outcome described_operator(int opcode, HostValue* left, HostValue* right, HostValue* result) {
  call.opcode = opcode;
  call.left = left;
  call.right = right;
  call.result = result;
  return described(describe_operator);
}
