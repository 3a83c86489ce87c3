// support/module_test.cpp: loading, calling and describing

#include "support/module_test.hpp"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

namespace arrayfold::test {
namespace {

/// What PKG_Init tells a host, which gets this as its own pointer back.
struct Registration {
  int answer = 0;
  int count = 0;
  const FunctionRow* table = nullptr;
  std::size_t calls_before = 0;
};

int take_functions(void* host, int count, const FunctionRow* table) {
  auto* registration = static_cast<Registration*>(host);
  registration->count = count;
  registration->table = table;
  registration->calls_before = hvm::recorded_calls().size();
  return registration->answer;
}

std::string without_prefix(const char* operation) {
  return std::strncmp(operation, "HVM_", 4) == 0 ? operation + 4 : operation;
}

/// "0", "1", ... for an argument, "result", or nothing.
std::string place_of(const void* subject, const HostValue* args, int nargs, const HostValue* result) {
  if (subject == result && result != nullptr) return " result";
  for (int n = 0; n < nargs; ++n)
    if (subject == args + n) return " " + std::to_string(n);
  return "";
}

template <class Run>
Answer answer(const HostValue* args, int nargs, int sentinel, Run run) {
  Answer answer;
  answer.result = Value(sentinel);
  const HostValue before = answer.result.record();
  hvm::record_calls(true);
  struct Stop {
    ~Stop() { hvm::record_calls(false); }
  } stop;
  try {
    answer.returned = run(answer.result.address());
  } catch (...) {
    EXPECT_EQ(std::memcmp(&before, answer.result.address(), sizeof(HostValue)), 0) << "thrown, and the result written";
    throw;
  }
  hvm::record_calls(false);
  answer.operations = described(hvm::recorded_calls(), args, nargs, answer.result.address());
  answer.untouched = std::memcmp(&before, answer.result.address(), sizeof(HostValue)) == 0;
  return answer;
}

}  // namespace

std::vector<std::string> described(const std::vector<hvm::RecordedCall>& calls, const HostValue* args, int nargs,
                                   const HostValue* result) {
  std::vector<std::string> words;
  for (const auto& call : calls)
    words.push_back(without_prefix(call.operation) + place_of(call.subject, args, nargs, result));
  return words;
}

Module::Module() {
  void* library = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  void* init = dlsym(library, "PKG_Init");
  if (init == nullptr) throw std::runtime_error("no PKG_Init in " MODULE_PATH);
  init_ = load<PackageInit>(&init);
  Registration registration;
  hvm::record_calls(true);
  init_returned_ = init_(&registration, take_functions);
  hvm::record_calls(false);
  table_ = registration.table;
  rows_.assign(table_, table_ + registration.count);
  start_calls_ = hvm::recorded_calls();
  for (const auto& call : start_calls_) start_.push_back(without_prefix(call.operation));
  start_.insert(start_.begin() + static_cast<std::ptrdiff_t>(registration.calls_before),
                "register " + std::to_string(registration.count));
}

int Module::init_again(int answer) const {
  Registration registration;
  registration.answer = answer;
  return init_(&registration, take_functions);
}

const Module& Module::loaded() {
  static const Module module;
  return module;
}

EntryFunction Module::entry(const std::string& name) const {
  for (const auto& row : rows_)
    if (name == row.name) return row.function;
  throw std::invalid_argument("the module has no function " + name);
}

ModuleTest::ModuleTest() {
  Module::loaded();
  before_ = hvm::counts();
}

ModuleTest::~ModuleTest() {
  EXPECT_TRUE(hvm::counts() == before_) << "the host holds something that the test left behind";
}

Answer ModuleTest::call(const std::string& name, std::vector<Value> args) const {
  const int nargs = static_cast<int>(args.size());
  return call_with_count(name, std::move(args), nargs);
}

Answer ModuleTest::call_with_count(const std::string& name, std::vector<Value> args, int nargs) const {
  const EntryFunction function = Module::loaded().entry(name);
  HostValue* records = hvm::records_of(args);
  return answer(records, static_cast<int>(args.size()), sentinel,
                [&](HostValue* result) { return function(ctx(), records, nargs, result); });
}

Answer ModuleTest::method(Value& self, const char* name, std::vector<Value> args, int flag) const {
  const auto callback = hvm::callbacks_of(hvm::object_of(self.record())).method;
  if (callback == nullptr) throw std::invalid_argument("no object to call a method of");
  std::vector<HostValue*> pointers;
  for (auto& arg : args) pointers.push_back(arg.address());
  const int nargs = static_cast<int>(args.size());
  return answer(hvm::records_of(args), nargs, sentinel, [&](HostValue* result) {
    return int{callback(ctx(), self.address(), name, pointers.data(), nargs, result, flag)};
  });
}

Answer ModuleTest::apply(const char* type_name, int opcode, HostValue* left, HostValue* right) const {
  const auto callback = hvm::callbacks_of(hvm::type_named(type_name)).op;
  if (callback == nullptr) throw std::invalid_argument("no such type");
  return answer(nullptr, 0, sentinel,
                [&](HostValue* result) { return int{callback(ctx(), opcode, left, right, result)}; });
}

std::string ModuleTest::dump(Value& value) const {
  const Answer answer = method(value, "dump");
  if (answer.returned == 0) throw std::invalid_argument("dump is declined");
  return std::string(hvm::text_of(answer.result.record()));
}

std::vector<std::int64_t> ModuleTest::shape(Value& value) const {
  const Answer answer = method(value, "shape");
  std::vector<std::int64_t> extents;
  const HostHash* table = hvm::table_of(answer.result.record());
  for (int axis = 0; axis < hvm::entry_count(table); ++axis) extents.push_back(HVM_AsInt64(hvm::find(table, axis)));
  return extents;
}

std::string type_of(const Value& value) {
  const HostAny* any = hvm::object_of(value.record());
  return any == nullptr ? "" : hvm::type_name_of(any);
}

Value raw(ValueTag tag, std::uint64_t payload) {
  Value value;
  value.record().tag = tag;
  store<std::uint64_t>(value.record().payload, payload);
  value.record().lifetime = Lifetime::none;
  return value;
}

}  // namespace arrayfold::test
