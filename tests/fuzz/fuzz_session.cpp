// fuzz/fuzz_session.cpp: loading the module, calling it, and what must hold after every input

#include "fuzz/fuzz_session.hpp"

#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <new>

namespace arrayfold::fuzz {
namespace {

constexpr std::size_t any_size = std::numeric_limits<std::size_t>::max();

std::size_t largest_block = any_size;
std::int64_t alive = 0;

[[noreturn]] void give_up(const char* words) {
  std::fprintf(stderr, "fuzz: %s\n", words);
  std::abort();
}

int take_functions(void* host, int count, const FunctionRow* table) {
  for (int row = 0; row < count; ++row) (*static_cast<FunctionMap*>(host))[table[row].name] = table[row].function;
  return 0;
}

FunctionMap loaded_functions() {
  void* library = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) give_up(dlerror());
  void* init = dlsym(library, "PKG_Init");
  if (init == nullptr) give_up("the module has no PKG_Init");
  FunctionMap functions;
  load<PackageInit> (&init)(&functions, take_functions);
  return functions;
}

/// The exceptions that a script can bring about.
bool is_documented(const std::exception& thrown) {
  return dynamic_cast<const std::bad_alloc*>(&thrown) != nullptr ||
         std::strcmp(thrown.what(), "\"object is not array\"") == 0;
}

/// The limits are in force as long as it lives.
struct Limit {
  explicit Limit(MemoryLimits limits) {
    largest_block = limits.largest_block;
    hvm::limit_memory(limits.host);
  }
  ~Limit() {
    largest_block = any_size;
    hvm::limit_memory(0);
  }
};

void run_limited(const std::function<void()>& action, MemoryLimits limits) {
  const Limit limit(limits);
  try {
    action();
  } catch (const std::exception& thrown) {
    if (!is_documented(thrown)) give_up(thrown.what());
  }
}

}  // namespace

const FunctionMap& functions() {
  static const FunctionMap loaded = loaded_functions();
  return loaded;
}

EntryFunction entry(const char* name) {
  const auto row = functions().find(name);
  if (row == functions().end()) give_up("the module lacks a function");
  return row->second;
}

void run_checked(const std::function<void()>& action, MemoryLimits limits) {
  const hvm::Counts host = hvm::counts();
  const std::int64_t before = alive;
  run_limited(action, limits);
  if (hvm::counts() != host) give_up("the host holds something that the input left behind");
  if (alive != before) give_up("an allocation outlived the input");
}

Value call(EntryFunction function, HostContext ctx, std::vector<Value>& args) {
  Value result;
  const HostValue before = result.record();
  try {
    function(ctx, hvm::records_of(args), static_cast<int>(args.size()), result.address());
  } catch (...) {
    if (std::memcmp(&before, result.address(), sizeof before) != 0) give_up("thrown, and the result written");
    throw;
  }
  return result;
}

bool call_method(HostContext ctx, Value& self, const char* name, std::vector<Value> args, Value& result) {
  if (!self.is_object()) return false;
  const auto method = hvm::callbacks_of(hvm::object_of(self.record())).method;
  std::vector<HostValue*> pointers;
  for (Value& arg : args) pointers.push_back(arg.address());
  return method(ctx, self.address(), name, pointers.data(), static_cast<int>(pointers.size()), result.address(), 0) !=
         0;
}

Value viewing(ValueTag tag, const void* payload) {
  Value value;
  value.record().tag = tag;
  value.record().lifetime = Lifetime::none;
  store<const void*>(value.record().payload, payload);
  return value;
}

namespace {

bool is_withheld(std::size_t size) noexcept { return size > largest_block; }

void* counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  ++alive;
  return memory;
}

void release(void* memory) noexcept {
  if (memory != nullptr) --alive;
  std::free(memory);
}

}  // namespace
}  // namespace arrayfold::fuzz

// All forms are replaced, since the sanitizer brings its own of each, which end the process where memory is missing.
void* operator new(std::size_t size) {
  using namespace arrayfold::fuzz;
  return counted(is_withheld(size) ? nullptr : std::malloc(size == 0 ? 1 : size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  using namespace arrayfold::fuzz;
  return counted(is_withheld(size) ? nullptr : memalign(static_cast<std::size_t>(alignment), size == 0 ? 1 : size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept { return operator new(size, nothrow); }

void operator delete(void* memory) noexcept { arrayfold::fuzz::release(memory); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { operator delete(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { operator delete(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { operator delete(memory); }
