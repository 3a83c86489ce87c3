// fuzz/fuzz_session.cpp: loading the module, calling it, and what must hold after every input

#include "fuzz/fuzz_session.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::fuzz {
namespace {

/// The exceptions that a script can bring about.
bool is_documented(const std::exception& thrown) {
  return dynamic_cast<const std::bad_alloc*>(&thrown) != nullptr ||
         std::strcmp(thrown.what(), "\"object is not array\"") == 0;
}

/// The limits are in force as long as it lives.
struct Limit {
  explicit Limit(MemoryLimits limits) {
    test::limit_allocations(limits.largest_block);
    hvm::limit_memory(limits.host);
  }
  ~Limit() {
    test::limit_allocations(test::any_block);
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

void give_up(const std::string& words) {
  std::fprintf(stderr, "fuzz: %s\n", words.c_str());
  std::abort();
}

EntryFunction entry(const char* name) {
  for (const FunctionRow& row : test::Module::loaded().rows())
    if (std::strcmp(row.name, name) == 0) return row.function;
  give_up("the module lacks a function");
}

void run_checked(const std::function<void()>& action, MemoryLimits limits) {
  const hvm::Counts host = hvm::counts();
  const auto leaves_something = [&] {
    const std::int64_t before = test::allocations().alive;
    run_limited(action, limits);
    return test::allocations().alive != before;
  };
  // What is made once in a process and kept is made in the first run.
  if (leaves_something() && leaves_something()) give_up("an allocation outlived the input");
  if (hvm::counts() != host) give_up("the host holds something that the input left behind");
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

}  // namespace arrayfold::fuzz
