// probe/probe_host.c: loads the probe over whatever host libraries the loader finds, and prints its summary
//
// Usage: probe_host PROBE [OFFSET [wrong | bare]]
//
// It calls no operation of the host. OFFSET is where the host has the payload of a record, otherwise 1. With `wrong` it
// then calls a function with text that leads nowhere; with `bare` its context has no frame.

#include <arrayfold/host.h>
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int call(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  (void)callee, (void)ctx, (void)args, (void)nargs, (void)result;
  return 0;
}

static HostValue* read_slot(HostContext ctx, int slot) { return (void)ctx, (void)slot, NULL; }

static const FunctionRow* rows;
static int row_count;

static int take_functions(void* host, int count, const FunctionRow* table) {
  (void)host;
  rows = table;
  return row_count = count;
}

// Prints what a function answers.
static int show(HostContext ctx, const char* name, HostValue* args, int nargs, int offset) {
  uint8_t result[64] = {HOST_TAG_NIL};
  int i = 0;
  while (i < row_count && strcmp(rows[i].name, name) != 0) ++i;
  if (i == row_count || rows[i].function(ctx, args, nargs, (HostValue*)(void*)result) != 1) return 4;
  const char* text;
  memcpy(&text, result + offset, sizeof text);
  printf("%s\n", text);
  return 0;
}

int main(int argc, char** argv) {
  void* library = argc >= 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  void* symbol = library != NULL ? dlsym(library, "PKG_Init") : NULL;
  if (symbol == NULL) return fprintf(stderr, "%s\n", argc >= 2 ? dlerror() : "usage: probe_host PROBE [OFFSET]"), 2;
  PackageInit init;
  memcpy(&init, &symbol, sizeof init);
  if (init(NULL, take_functions) != 1) return 3;

  HostFrame frame = {.slot_base = 0};
  HostContextRecord context = {.frame = &frame, .call_function = call, .read_slot = read_slot};
  if (argc >= 4 && strcmp(argv[3], "bare") == 0) context.frame = NULL;
  const int offset = argc >= 3 ? atoi(argv[2]) : 1;
  int status = show(&context, "probe_summary", NULL, 0, offset);
  if (argc >= 4 && strcmp(argv[3], "wrong") == 0 && status == 0) {
    HostValue wrong = {.tag = HOST_TAG_STRING, .pointer = (void*)8};
    status = show(&context, "probe_call", &wrong, 1, offset);
  }
  return status;
}
