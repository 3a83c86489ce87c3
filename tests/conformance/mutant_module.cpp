// conformance/mutant_module.cpp: the module with one mistake, which the name of this file chooses
//
// It loads the module and hands on its functions and types. Copied to `sum_is_one_more.so`, say, it makes the mistake
// of that name in the table below, and none under any other name.

#include <dlfcn.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/host_operations.hpp"
#include "kernel/kernel.hpp"

namespace {

using namespace arrayfold;

// ---- The module as it is

std::map<std::string, EntryFunction> functions;
std::vector<FunctionRow> rows;
OperatorCallback right_operator;  // of any type
std::map<std::string, hvm::TypeCallbacks> callbacks;

constexpr int add = static_cast<int>(Opcode::add);
constexpr int subtract = static_cast<int>(Opcode::subtract);
constexpr int multiply = static_cast<int>(Opcode::multiply);
constexpr int write_element = static_cast<int>(Opcode::write_element);

const hvm::TypeCallbacks& callbacks_of_operand(const HostValue* left, const HostValue* right) {
  const HostAny* any = hvm::object_of(*left);
  if (!any && right) any = hvm::object_of(*right);
  return callbacks.at(hvm::type_name_of(any));
}

// ---- Functions with a mistake

int sum_is_one_more(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  const int returned = functions["xsum"](ctx, args, nargs, result);
  if (result->tag == ValueTag::integer) HVM_SetInt(ctx, result, HVM_AsInt(result) + 1);
  return returned;
}

int gives_nothing(HostContext, HostValue*, int, HostValue*) { return 1; }

int fails(HostContext, HostValue*, int, HostValue*) { return 0; }

int throws_other_words(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  try {
    return functions["xdot"](ctx, args, nargs, result);
  } catch (const std::exception&) {
    throw std::runtime_error("another cause");
  }
}

int asks_twice(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  if (nargs > 0) HVM_AnyCheck(args);
  return functions["xsort"](ctx, args, nargs, result);
}

int asks_in_another_order(HostContext, HostValue* args, int nargs, HostValue*) {
  if (nargs < 2) return 0;
  return HVM_AnyCheck(args + 1) && HVM_AnyCheck(args) ? 1 : 0;
}

int fails_and_writes(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  const int returned = functions["xprod"](ctx, args, nargs, result);
  if (returned == 0) HVM_SetInt(ctx, result, 1);
  return returned;
}

int leaves_a_block_behind(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  HVM_Malloc(8);
  return functions["xabs"](ctx, args, nargs, result);
}

int faults(HostContext, HostValue*, int, HostValue*) { return std::raise(SIGSEGV); }

int ends_the_process(HostContext, HostValue*, int, HostValue*) { std::_Exit(EXIT_SUCCESS); }

int never_returns(HostContext, HostValue*, int, HostValue*) {
  for (volatile bool runs = true; runs;)
    ;
  return 1;
}

/// `xexp` with results that are larger by a factor. The host does not hear of the multiplication.
template <int exponent>
int exp_times(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  const int returned = functions["xexp"](ctx, args, nargs, result);
  if (hvm::object_of(*result) == nullptr) return returned;
  double factor = 1;
  for (int i = 0; i < exponent; ++i) factor /= 10;
  hvm::Value number(1 + factor);
  hvm::CallSink* const sink = hvm::send_calls_to(nullptr);
  right_operator(ctx, multiply, result, number.address(), result);
  hvm::send_calls_to(sink);
  return returned;
}

// ---- Methods and operators with a mistake

HostBool reshape_refuses(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                         HostValue* result, int flag) {
  if (std::strcmp(name, "reshape") == 0 && nargs == 1) return 0;
  return callbacks_of_operand(self, nullptr).method(ctx, self, name, args, nargs, result, flag);
}

HostBool add_subtracts(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  return callbacks_of_operand(left, right).op(ctx, opcode == add ? subtract : opcode, left, right, result);
}

HostBool writing_is_lost(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  if (opcode == write_element) return 1;
  return callbacks_of_operand(left, right).op(ctx, opcode, left, right, result);
}

struct Mistake {
  const char* function;    // that is replaced; null for none
  EntryFunction replaced;  // null: the function is not registered
  MethodCallback method;   // null: that of the module
  OperatorCallback op;
  bool swaps_rows = false;  // registers the first two functions in each other's place
};

const std::map<std::string, Mistake> mistakes = {
    {"sum_is_one_more", {"xsum", sum_is_one_more, nullptr, nullptr}},
    {"mean_gives_nothing", {"xmean", gives_nothing, nullptr, nullptr}},
    {"sqrt_fails", {"xsqrt", fails, nullptr, nullptr}},
    {"dot_throws_other_words", {"xdot", throws_other_words, nullptr, nullptr}},
    {"sort_asks_twice", {"xsort", asks_twice, nullptr, nullptr}},
    {"remainder_asks_in_another_order", {"xremainder", asks_in_another_order, nullptr, nullptr}},
    {"prod_fails_and_writes", {"xprod", fails_and_writes, nullptr, nullptr}},
    {"abs_leaves_a_block_behind", {"xabs", leaves_a_block_behind, nullptr, nullptr}},
    {"inverse_faults", {"xinv", faults, nullptr, nullptr}},
    {"rank_ends_the_process", {"xmatrix_rank", ends_the_process, nullptr, nullptr}},
    {"trace_never_returns", {"xtrace", never_returns, nullptr, nullptr}},
    {"cube_is_missing", {"xcube", nullptr, nullptr, nullptr}},
    {"exp_is_off_in_the_tenth_digit", {"xexp", exp_times<10>, nullptr, nullptr}},
    {"exp_is_off_in_the_last_digit", {"xexp", exp_times<15>, nullptr, nullptr}},
    {"reshape_refuses", {nullptr, nullptr, reshape_refuses, nullptr}},
    {"add_subtracts", {nullptr, nullptr, nullptr, add_subtracts}},
    {"writing_is_lost", {nullptr, nullptr, nullptr, writing_is_lost}},
    {"functions_are_swapped", {nullptr, nullptr, nullptr, nullptr, true}},
};

/// The mistake that this file is named for; none for another name.
Mistake chosen() {
  Dl_info file = {};
  if (dladdr(&functions, &file) == 0) return {};
  std::string name = file.dli_fname;
  name = name.substr(name.rfind('/') + 1);
  name = name.substr(0, name.find('.'));
  const auto mistake = mistakes.find(name);
  return mistake == mistakes.end() ? Mistake{} : mistake->second;
}

int keep_rows(void*, int count, const FunctionRow* table) {
  rows.assign(table, table + count);
  return 1;
}

/// Registers every type again, with other callbacks.
void replace_callbacks(const Mistake& mistake) {
  for (const hvm::RegisteredType& type : hvm::registered_types()) {
    const hvm::TypeCallbacks right = hvm::callbacks_of(type.man);
    callbacks[type.name] = right;
    right_operator = right.op;
    if (!mistake.method && !mistake.op) continue;
    const char* const name = hvm::type_name_of(type.man);
    AnyMan* const man = HVM_NewAnyMan(name, right.create, right.destroy, mistake.method ? mistake.method : right.method,
                                      mistake.op ? mistake.op : right.op, nullptr);
    HVM_RegisterAnyMan(name, man);
  }
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int PKG_Init(void* host, arrayfold::RegisterFunctions take) {
  void* const module = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  if (!module) throw std::runtime_error(dlerror());
  void* const symbol = dlsym(module, "PKG_Init");
  if (arrayfold::load<arrayfold::PackageInit>(&symbol)(host, keep_rows) == 0) return 0;
  const Mistake mistake = chosen();
  for (std::size_t i = rows.size(); i-- > 0;) {
    functions[rows[i].name] = rows[i].function;
    if (!mistake.function || std::strcmp(rows[i].name, mistake.function) != 0) continue;
    if (mistake.replaced)
      rows[i].function = mistake.replaced;
    else
      rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i));
  }
  if (mistake.swaps_rows) std::swap(rows[0], rows[1]);
  take(host, static_cast<int>(rows.size()), rows.data());
  replace_callbacks(mistake);
  return 1;
}
