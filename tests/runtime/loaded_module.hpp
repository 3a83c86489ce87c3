// runtime/loaded_module.hpp: a module that a test loads and unloads, under the reference host
//
//     LoadedModule module(SHARED_MODULE);
//     EXPECT_EQ(module.text(module.call("xarange", {Value(3)})), "[0.0,1.0,2.0]");

#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "kernel/kernel.hpp"

namespace arrayfold::test {

using hvm::Value;

class LoadedModule {
 public:
  explicit LoadedModule(const std::string& path) : library_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
    void* init = dlsym(library_, "PKG_Init");
    if (init == nullptr || load<PackageInit>(&init)(this, take_functions) != 1)
      throw std::runtime_error("no module at " + path);
  }
  ~LoadedModule() { close(); }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  /// Forgets the types of the module and unloads it. Requires: none of its arrays is alive.
  void close() {
    if (library_ == nullptr) return;
    for (const char* type : {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"}) hvm::forget_type(type);
    dlclose(library_);
    library_ = nullptr;
    std::vector<FunctionRow>().swap(rows_);  // with its memory
  }

  /// The result of a function, nil where it gives none. Throws std::invalid_argument for an unknown name, and
  /// std::runtime_error when the call fails.
  Value call(const std::string& name, std::vector<Value> args) const {
    const hvm::Context context;
    return call(context.handle(), name, hvm::records_of(args), static_cast<int>(args.size()));
  }
  /// The same with records that are borrowed.
  Value call(HostContext ctx, const std::string& name, HostValue* args, int nargs) const {
    const auto row =
        std::find_if(rows_.begin(), rows_.end(), [&](const FunctionRow& each) { return name == each.name; });
    if (row == rows_.end()) throw std::invalid_argument("the module has no function " + name);
    Value result;
    if (row->function(ctx, args, nargs, result.address()) != 1) throw std::runtime_error(name + " fails");
    return result;
  }

  static Value method(Value& self, const char* name, std::vector<Value> args = {}) {
    const hvm::Context context;
    std::vector<HostValue*> pointers;
    for (Value& arg : args) pointers.push_back(arg.address());
    Value result;
    const auto callback = hvm::callbacks_of(hvm::object_of(self.record())).method;
    const int count = static_cast<int>(pointers.size());
    if (!callback(context.handle(), self.address(), name, pointers.data(), count, result.address(), 0))
      throw std::runtime_error(std::string(name) + " fails");
    return result;
  }
  /// `left op right`, by the callback of the left operand's type.
  static Value apply(Opcode opcode, Value& left, Value& right) {
    const hvm::Context context;
    Value result;
    const auto callback = hvm::callbacks_of(hvm::object_of(left.record())).op;
    if (!callback(context.handle(), static_cast<int>(opcode), left.address(), right.address(), result.address()))
      throw std::runtime_error("the operator fails");
    return result;
  }
  /// A real, or the sum of the elements of an array.
  double number(const Value& value) const {
    if (value.is_object()) return number(call("xsum", {value}));
    if (value.tag() != ValueTag::real) throw std::invalid_argument("not a real: " + hvm::printed(value.record()));
    return load<double>(value.record().payload);
  }
  /// An array as text.
  static std::string text(Value array) { return std::string(hvm::text_of(method(array, "dump").record())); }

 private:
  static int take_functions(void* host, int count, const FunctionRow* table) {
    static_cast<LoadedModule*>(host)->rows_.assign(table, table + count);
    return 1;
  }

  void* library_;
  std::vector<FunctionRow> rows_;
};

/// How many parts of files of this name are in the memory of the process.
inline int mapped_parts(const std::string& path) {
  std::ifstream maps("/proc/self/maps");
  int parts = 0;
  for (std::string line; std::getline(maps, line);) parts += line.find(path) != std::string::npos ? 1 : 0;
  return parts;
}

inline int threads_of_process() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return static_cast<int>(std::distance(begin(threads), end(threads)));
}

}  // namespace arrayfold::test
