// refhost/cli/module_unresolved.c: a module that calls what no library has

int HVM_OfAnotherWorld(void);

__attribute__((visibility("default"))) int PKG_Init(void* host, void* functions) {
  (void)host;
  (void)functions;
  return HVM_OfAnotherWorld();
}
