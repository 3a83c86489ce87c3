// embedding/embedding.c: loads the module, calls functions, methods and an operator, and destroys what it made
// Each line of its output is a result of the module. The exit status is 0 if all are right and no memory is left.

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include "host.h"

#define INT(x) ((HostValue){.tag = INTEGER, .integer = (x)})
#define RECORDS(...) ((HostValue[]){__VA_ARGS__})
#define NODE(x) ((HostCodeSlot){.tag = SLOT_NODE, .payload = (uintptr_t) & (x)})

// What the module sees of the running script: four variables in a frame that begins at slot 10.
static HostValue variables[4];
static HostValue* read_slot(HostContext* ctx, int slot) { return (void)ctx, &variables[slot]; }
static HostContext context = {.frame = &(HostFrame){.slot_base = 10}, .read = read_slot};

static const FunctionRow* rows;
static int row_count, wrong;

static void expect(const char* what, long answer, long expected) {
  printf("%-28s %ld%s\n", what, answer, answer == expected ? "" : "   WRONG");
  wrong += answer != expected;
}

// PKG_Init passes the module's functions, with the `host` pointer that it got.
static int take_functions(void* host, int count, const FunctionRow* table) {
  rows = table;
  return row_count = host == &context ? count : 0;
}

// Calls a function. The result starts as nil, and is still nil if the function did not write it.
static int call(const char* name, HostValue* args, int nargs, HostValue* result) {
  int i = 0;
  while (i < row_count && strcmp(rows[i].name, name) != 0) ++i;
  *result = NOTHING;
  return i < row_count ? rows[i].function(&context, args, nargs, result) : -1;
}

// Calls a method: it takes pointers to records, while a function takes contiguous records.
static int method(HostValue* self, const char* name, HostValue** args, int nargs, HostValue* result) {
  *result = NOTHING;
  return self->tag == OBJECT && self->any->manager->method(&context, self, name, args, nargs, result, 0);
}

// Prints the elements of an array. `served` is the return value of the call that made it.
static void expect_array(const char* what, int served, HostValue* array, const char* expected) {
  HostValue text = NOTHING;
  const int right = served == 1 && method(array, "dump", NULL, 0, &text) && strcmp(text.text, expected) == 0;
  printf("%-28s %s%s\n", what, text.tag == STRING ? text.text : "no array", right ? "" : "   WRONG");
  wrong += !right;
  HVM_FreeObjectContent(&context, &text);
}

// A quotation, double(2, n), as a tree: the module reads kind and extents from it. If a table follows as the second
// argument, the shape and the elements come from the table, which the module walks itself.
static void quote(HostValue* zeros, HostValue* halves) {
  variables[3] = INT(3);
  HostCodeNode n = {.kind = CELL, .value = {.tag = SLOT_VARIABLE, .payload = 12}};
  HostCodeNode two = {.kind = CELL, .link = NODE(n), .value = {.tag = SLOT_INTEGER, .payload = 2}};
  HostCodeNode named = {.kind = CALL, .link = {.tag = SLOT_TEXT, .payload = (uintptr_t) "double"}, .value = NODE(two)};
  HostCodeNode root = {.kind = QUOTATION, .link = NODE(named)};
  HostCode code = {.root = &root, .frame_base = 1};
  HostHashItem items[2] = {{.key = INT(0), .value = {.tag = REAL, .real = 0.5}},
                           {.key = INT(1), .value = {.tag = REAL, .real = 1.5}}};
  HostValue args[2] = {{.tag = CODE, .code = &code}, {.tag = TABLE, .table = &(HostHash){NULL, 0, items, 2}}};
  expect_array("xarray(@double(2, n))", call("xarray", args, 1, zeros), zeros, "[[0.0,0.0,0.0],[0.0,0.0,0.0]]");
  expect_array("xarray(@double, [0.5, 1.5])", call("xarray", args, 2, halves), halves, "[0.5,1.5]");
}

int main(int argc, char** argv) {
  void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW) : NULL;
  if (library == NULL) return fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "usage: embedding MODULE"), 2;
  const PackageInit package = {dlsym(library, "PKG_Init")};
  if (package.symbol == NULL) return fprintf(stderr, "%s\n", dlerror()), 2;
  expect("PKG_Init", package.init(&context, take_functions), 1);
  expect("functions", row_count, 93);
  expect("types", host_types(), 4);

  HostValue made[8], *a = &made[0], *b = &made[1], *c = &made[2], *shape = &made[3], *sum = &made[4], none;
  expect_array("a = xarange(5)", call("xarange", RECORDS(INT(5)), 1, a), a, "[0.0,1.0,2.0,3.0,4.0]");
  expect_array("b = xzeros(2, 3)", call("xzeros", RECORDS(INT(2), INT(3)), 2, b), b, "[[0.0,0.0,0.0],[0.0,0.0,0.0]]");
  expect_array("xlinspace(0, 10, 5)", call("xlinspace", RECORDS(INT(0), INT(10), INT(5)), 3, c), c, "[0,2,5,7,10]");
  const int shaped = method(b, "shape", NULL, 0, shape);
  expect("b.shape()[1]", shaped ? HVM_HashSetInt(&context, shape->table, 1)->integer64 : 0, 3);
  expect("b.reshape(4, 2), declined", method(b, "reshape", (HostValue*[]){&INT(4), &INT(2)}, 2, &none), 0);
  expect("b.reshape(3, 2)", method(b, "reshape", (HostValue*[]){&INT(3), &INT(2)}, 2, &none), 1);
  expect_array("b", 1, b, "[[0.0,0.0],[0.0,0.0],[0.0,0.0]]");
  *sum = NOTHING;
  const int added = a->tag == OBJECT && a->any->manager->op(&context, 95, a, &INT(1), sum);
  expect_array("a + 1", added, sum, "[1.0,2.0,3.0,4.0,5.0]");
  quote(&made[5], &made[6]);
  if (call("xerf", a, 1, &made[7])) expect("calls of the host's erf", interp_calls(), 5);
  expect("xzeros(), too few", call("xzeros", NULL, 0, &none), 0);
  expect("  tag of the result, nil", none.tag, NIL);
  expect("xrandint(1), a stub", call("xrandint", RECORDS(INT(1)), 1, &none), 1);
  expect("  tag of the result, nil", none.tag, NIL);

  for (int i = 0; i < 8; ++i) HVM_FreeObjectContent(&context, &made[i]);
  expect("blocks alive", host_blocks(), 0);
  return wrong == 0 ? 0 : 1;
}
