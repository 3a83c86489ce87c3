// first_host/main.c: a host in about 70 lines. It loads the module and prints xsum(xarange(5)).
//
//   gcc -shared -fPIC -o libHVMkrnl.so kernel.c rest.c
//   gcc -shared -fPIC -o libHVMInterp.so interp.c -lm -Wl,--version-script=hvminterp.map
//   gcc -o first_host main.c -Wl,--no-as-needed,-rpath,'$ORIGIN' libHVMkrnl.so libHVMInterp.so

#include <arrayfold/host.h>
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

static HostContextRecord context;  // of zeros: nothing here evaluates expressions
static EntryFunction xarange, xsum;

static int take_functions(void* host, int count, const FunctionRow* table) {
  for (int i = 0; i < count; ++i) {
    if (strcmp(table[i].name, "xarange") == 0) xarange = table[i].function;
    if (strcmp(table[i].name, "xsum") == 0) xsum = table[i].function;
  }
  return host == &context;
}

int main(int argc, char** argv) {
  void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW) : NULL;
  void* symbol = library != NULL ? dlsym(library, "PKG_Init") : NULL;
  if (symbol == NULL) return fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "usage: first_host MODULE"), 2;
  PackageInit init;
  memcpy(&init, &symbol, sizeof init);
  init(&context, take_functions);
  if (xarange == NULL || xsum == NULL) return fprintf(stderr, "%s is another module\n", argv[1]), 2;

  HostValue five = {.tag = HOST_TAG_INTEGER, .integer = 5};
  HostValue numbers = {.tag = HOST_TAG_NIL}, sum = {.tag = HOST_TAG_NIL};
  xarange(&context, &five, 1, &numbers);
  xsum(&context, &numbers, 1, &sum);
  HVM_FreeObjectContent(&context, &numbers);
  printf("%g\n", sum.real);
  return sum.tag != HOST_TAG_REAL;
}
