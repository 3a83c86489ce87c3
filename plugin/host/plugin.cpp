// host/plugin.cpp: the function table, and PKG_Init, through which the host learns it and the four array types

#include "host/entry.hpp"
#include "object/type_callbacks.hpp"

namespace arrayfold {

#define FUNCTION(name, family, minimum, status) Outcome name(const Call& call);
#include "host/functions.def"
#undef FUNCTION

namespace {

#define FUNCTION(name, family, minimum, status) {#name, &entry<&name, minimum>},
constexpr FunctionRow function_table[] = {
#include "host/functions.def"
};
#undef FUNCTION

constexpr int function_count = sizeof(function_table) / sizeof(FunctionRow);

}  // namespace
}  // namespace arrayfold

/// Hands the host the functions, then each type in turn. `host` is the host's own and is only passed on. Always 1:
/// neither registration tells whether it succeeded.
extern "C" __attribute__((visibility("default"))) int PKG_Init(void* host,
                                                               arrayfold::RegisterFunctions register_functions) {
  using namespace arrayfold;
  register_functions(host, function_count, function_table);
  for (const ObjectType& type : object_types()) {
    AnyMan* man = HVM_NewAnyMan(type.name, type.create, type.destroy, type.method, type.op, nullptr);
    HVM_RegisterAnyMan(type.name, man);
  }
  return 1;
}

static_assert(std::is_same_v<decltype(&PKG_Init), arrayfold::PackageInit>, "hosts call it by this type");
