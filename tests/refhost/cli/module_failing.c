// refhost/cli/module_failing.c: a module whose PKG_Init fails

__attribute__((visibility("default"))) int PKG_Init(void* host, void* functions) {
  (void)host;
  (void)functions;
  return 0;
}
