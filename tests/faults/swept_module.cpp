// faults/swept_module.cpp: trampolines into the module

#include "faults/swept_module.hpp"

#include <dlfcn.h>

#include <array>
#include <stdexcept>
#include <utility>

#include "script/module/trace.hpp"
#include "support/functions.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

Sweep* under_way = nullptr;

// ---- Calls out of the module
//
// When a call is first made, the host's answers are kept; runs after that get the same answers. So a script runs once,
// whatever it does, and an error in it comes to the host once.

struct KeptAnswer {
  int status;
  Value result;
};
std::vector<KeptAnswer> answers;
std::size_t answers_given = 0;
bool are_recorded = false;

HostContextRecord::CallFunction host_call;
HostContextRecord::ReadSlot host_slot;

int call_outside(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  if (Sweep::Outside::is_under_way()) return host_call(callee, ctx, args, nargs, result);
  const Sweep::Outside outside;
  if (!are_recorded) {
    const int status = host_call(callee, ctx, args, nargs, result);
    answers.push_back({status, Value::sharing(*result)});
    return status;
  }
  if (answers_given == answers.size()) return 0;  // without memory, the module may take another way
  const KeptAnswer& answer = answers[answers_given++];
  if (answer.status != 0) hvm::assign(*result, answer.result.record());
  return answer.status;
}

HostValue* read_outside(HostContext ctx, int slot) {
  const Sweep::Outside outside;
  return host_slot(ctx, slot);
}

/// Puts both functions of a context behind those here.
class WatchedContext {
 public:
  explicit WatchedContext(HostContext ctx) : ctx_(ctx), is_watched_(ctx->call_function.get() == call_outside) {
    if (is_watched_) return;
    host_call = ctx->call_function;
    host_slot = ctx->read_slot;
    ctx->call_function = call_outside;
    ctx->read_slot = read_outside;
  }
  ~WatchedContext() {
    if (is_watched_) return;
    ctx_->call_function = host_call;
    ctx_->read_slot = host_slot;
  }
  WatchedContext(const WatchedContext&) = delete;
  WatchedContext& operator=(const WatchedContext&) = delete;

 private:
  HostContext ctx_;
  bool is_watched_;
};

int swept(HostContext ctx, SweptCall call) {
  if (Sweep::Outside::is_under_way()) return call.make();
  const WatchedContext watched(ctx);
  answers.clear();
  are_recorded = false;
  call.make = [make = std::move(call.make), is_first = true]() mutable {
    are_recorded = !std::exchange(is_first, false);
    answers_given = 0;
    return make();
  };
  const int returned = under_way->run(call);
  answers.clear();
  return returned;
}

// ---- Functions

constexpr std::size_t function_count = 93;

int call_row(std::size_t row, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  const EntryFunction function = Module::loaded().rows()[row].function;
  if (under_way == nullptr) return function(ctx, args, nargs, result);
  const FunctionRecord& known = all_functions()[row];
  const bool is_reader = std::string(known.name) == "xarray";
  SweptCall call{
      is_reader ? "reading" : known.family, known.name, [=] { return function(ctx, args, nargs, result); }, result, {}};
  for (int n = 0; n < nargs; ++n) call.operands.push_back(args + n);
  call.changes_operands = call.name == "xshuffle";
  return swept(ctx, call);
}

template <std::size_t row>
int entry(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  return call_row(row, ctx, args, nargs, result);
}

template <std::size_t... row>
constexpr std::array<EntryFunction, sizeof...(row)> entries(std::index_sequence<row...>) {
  return {entry<row>...};
}

// ---- Types

struct Callbacks {
  MethodCallback method;
  OperatorCallback op;
};
constexpr std::size_t type_count = 4;
Callbacks callbacks[type_count];
std::size_t types_made = 0;

bool is_arithmetic(int opcode) {
  return opcode >= static_cast<int>(Opcode::add) && opcode <= static_cast<int>(Opcode::remainder);
}

template <std::size_t type>
HostBool method(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs, HostValue* result,
                int flag) {
  const MethodCallback callback = callbacks[type].method;
  if (under_way == nullptr) return callback(ctx, self, name, args, nargs, result, flag);
  const std::string called = name;
  SweptCall call{
      "methods", called, [=] { return callback(ctx, self, name, args, nargs, result, flag); }, result, {self}};
  call.operands.insert(call.operands.end(), args, args + nargs);
  call.changes_operands = called == "reshape";
  return static_cast<HostBool>(swept(ctx, call));
}

/// The records of the indices in a list, or the one index.
void add_indices(std::vector<HostValue*>& operands, int opcode, HostValue* right) {
  if (right == nullptr || opcode == static_cast<int>(Opcode::read_one_index)) return operands.push_back(right);
  const auto size = load<std::uint64_t>(right);
  const auto* entries = static_cast<const std::byte*>(static_cast<const void*>(right)) + sizeof size;
  if (size % 2 == 1) entries = load<const std::byte*>(entries);
  for (std::uint64_t n = 0; n < size / 2; ++n)
    operands.push_back(load<HostValue*>(entries + n * sizeof(HostIndexEntry)));
}

template <std::size_t type>
HostBool operate(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  const OperatorCallback callback = callbacks[type].op;
  if (under_way == nullptr) return callback(ctx, opcode, left, right, result);
  const bool reads =
      opcode == static_cast<int>(Opcode::read_element) || opcode == static_cast<int>(Opcode::read_one_index);
  const bool writes = opcode == static_cast<int>(Opcode::write_element);
  const bool is_in_place = is_arithmetic(opcode) && (result == left || result == right);
  const char* family = reads || writes ? "elements" : is_in_place ? "operators in place" : "operators";
  SweptCall call{family,
                 hvm::operator_name(static_cast<Opcode>(opcode)),
                 [=] { return callback(ctx, opcode, left, right, result); },
                 result,
                 {left}};
  if (reads || writes)
    add_indices(call.operands, opcode, right);
  else
    call.operands.push_back(right);
  call.changes_operands = writes || is_in_place;
  return static_cast<HostBool>(swept(ctx, call));
}

template <std::size_t... type>
Callbacks swept_callbacks(std::size_t number, std::index_sequence<type...>) {
  constexpr Callbacks all[] = {{method<type>, operate<type>}...};
  return all[number];
}

}  // namespace

EntryFunction swept_function(const std::string& name) {
  static constexpr auto functions = entries(std::make_index_sequence<function_count>{});
  const auto& rows = Module::loaded().rows();
  for (std::size_t row = 0; row < rows.size(); ++row)
    if (name == rows[row].name) return functions.at(row);
  throw std::invalid_argument("the module has no function " + name);
}

Sweeping::Sweeping(Sweep& sweep) {
  Module::loaded();
  under_way = &sweep;
}
Sweeping::~Sweeping() { under_way = nullptr; }

}  // namespace arrayfold::test

namespace arrayfold {

extern "C" {

AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void* null) {
  using namespace test;
  void* found = dlsym(RTLD_NEXT, "HVM_NewAnyMan");
  if (found == nullptr || types_made == type_count) throw std::logic_error("not the types of the module");
  callbacks[types_made] = {method, op};
  const Callbacks swept = swept_callbacks(types_made++, std::make_index_sequence<type_count>{});
  return load<decltype(&HVM_NewAnyMan)>(&found)(name, create, destroy, swept.method, swept.op, null);
}

}  // extern "C"

}  // namespace arrayfold
