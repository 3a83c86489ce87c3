// refhost/cli/module_without_init.c: a library that is no module

__attribute__((visibility("default"))) int PKG_Start(void) { return 1; }
