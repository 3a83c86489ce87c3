// refhost/cli/module_refusing.c: a module that refuses to start

__attribute__((visibility("default"))) int PKG_Init(void* host, void* functions) {
  (void)host;
  (void)functions;
  return 0;
}
