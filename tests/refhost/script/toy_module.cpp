// refhost/script/toy_module.cpp: a small module to test a host with

#include "toy_module.hpp"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace toy {

using arrayfold::HostAny;
using arrayfold::HostBool;
using arrayfold::HostContext;
using arrayfold::HostHash;
using arrayfold::HostIndexEntry;
using arrayfold::HostIndexList;
using arrayfold::HostValue;
using arrayfold::Opcode;
using arrayfold::ValueTag;

/// Thrown where a host must not let an exception through.
struct OwnError : std::logic_error {
  using std::logic_error::logic_error;
};

namespace {

struct Array {
  std::vector<std::int64_t> shape;
  std::vector<double> elements;
  bool faults_at_the_end = false;
};

bool serves_elements = true;

constexpr const char* int_type = "$xintarray";
constexpr const char* double_type = "$xdoublearray";
constexpr const char* bool_type = "$xboolarray";

void* create() { return new Array; }
void destroy(HostContext, void* content) {
  auto* array = static_cast<Array*>(content);
  if (array && array->faults_at_the_end) raise(SIGSEGV);
  delete array;
}

Array* array_of(HostValue* value) {
  if (!value || value->tag != ValueTag::object) return nullptr;
  return static_cast<Array*>(HVM_GetAny(value)->content.get());
}

bool is_of(HostValue* value, const char* type) {
  return std::strcmp(HVM_GetAny(value)->manager.get()->name, type) == 0;
}
bool is_int(HostValue* value) { return is_of(value, int_type) || is_of(value, bool_type); }

std::int64_t product(const std::vector<std::int64_t>& extents) {
  std::uint64_t count = 1;
  for (const std::int64_t extent : extents) count *= static_cast<std::uint64_t>(extent);
  return static_cast<std::int64_t>(count);
}

void give(HostContext ctx, HostValue* result, const char* type, Array array) {
  HostAny* any = HVM_NewAny(ctx, type, 0, 0);
  *static_cast<Array*>(any->content.get()) = std::move(array);
  HVM_SetTypeAny(ctx, result, any);
}

int make(HostContext ctx, HostValue* args, int nargs, HostValue* result, const char* type) {
  Array array;
  for (int i = 0; i < nargs; ++i) array.shape.push_back(HVM_AsInt(args + i));
  constexpr std::int64_t most = 1000000;
  if (product(array.shape) < 0 || product(array.shape) > most) throw std::bad_alloc();
  for (std::int64_t i = 0; i < product(array.shape); ++i) array.elements.push_back(static_cast<double>(i));
  give(ctx, result, type, std::move(array));
  return 1;
}

int toy_int(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  return make(ctx, args, nargs, result, int_type);
}
int toy_double(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  return make(ctx, args, nargs, result, double_type);
}

int toy_bool(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  return make(ctx, args, nargs, result, bool_type);
}

// ---- Methods

std::string element_text(double x, bool is_whole) {
  if (std::isnan(x) || std::isinf(x)) return "null";
  if (is_whole) return std::to_string(static_cast<std::int64_t>(x));
  const std::string text = std::to_string(x);
  return text.substr(0, text.find_last_not_of('0') + (text[text.find_last_not_of('0')] == '.' ? 2 : 1));
}

void dump(const Array& array, bool is_whole, std::size_t axis, std::size_t& at, std::string& out) {
  if (axis == array.shape.size()) return void(out += element_text(array.elements[at++], is_whole));
  out += '[';
  for (std::int64_t i = 0; i < array.shape[axis]; ++i) {
    if (i > 0) out += ',';
    dump(array, is_whole, axis + 1, at, out);
  }
  out += ']';
}

HostBool give_shape(HostContext ctx, const Array& array, HostValue* result) {
  HVM_ForceTable(ctx, result, static_cast<int>(array.shape.size()));
  auto* hash = arrayfold::load<HostHash*>(result->payload);
  for (std::size_t i = 0; i < array.shape.size(); ++i)
    HVM_SetInt64(ctx, HVM_HashSetInt(ctx, hash, static_cast<int>(i)), array.shape[i]);
  return 1;
}

HostBool reshape(Array& array, HostValue** args, int nargs) {
  std::vector<std::int64_t> shape;
  for (int i = 0; i < nargs; ++i) shape.push_back(HVM_AsInt(args[i]));
  if (nargs == 0 || product(shape) != static_cast<std::int64_t>(array.elements.size())) return 0;
  array.shape = shape;
  return 1;
}

HostBool method(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs, HostValue* result,
                int) {
  Array& array = *array_of(self);
  if (std::strcmp(name, "shape") == 0) return give_shape(ctx, array, result);
  if (std::strcmp(name, "reshape") == 0) return reshape(array, args, nargs);
  if (std::strcmp(name, "throw") == 0) throw OwnError("from a method");
  if (std::strcmp(name, "dump") != 0) return 0;
  std::string text;
  std::size_t at = 0;
  dump(array, is_int(self), 0, at, text);
  HVM_SetStringEx(ctx, result, text.c_str(), static_cast<int>(text.size()));
  return 1;
}

// ---- Operators

double combined(int opcode, double a, double b) {
  switch (static_cast<Opcode>(opcode)) {
    case Opcode::add:
      return a + b;
    case Opcode::subtract:
      return a - b;
    case Opcode::multiply:
      return a * b;
    case Opcode::divide:
      return a / b;
    case Opcode::less:
      return a < b;
    default:
      return std::nan("");
  }
}

HostBool element(HostContext ctx, Array& array, int opcode, bool is_whole, HostIndexList* list, HostValue* result) {
  if (!serves_elements) return 0;
  const std::uint64_t packed = list->packed_size;
  const auto count = static_cast<std::size_t>(packed >> 1);
  if (count == 0 || count > 8) return 0;
  const auto* entries = (packed & 1) ? arrayfold::load<HostIndexEntry*>(list->entries)
                                     : static_cast<const HostIndexEntry*>(static_cast<const void*>(list->entries));
  std::size_t offset = 0;
  const std::size_t rank = array.shape.size();
  for (std::size_t i = 0; i < rank; ++i) {
    const std::size_t missing = count < rank ? rank - count : 0;
    const std::int64_t index = i < missing ? 0 : HVM_AsInt(entries[count + i - rank].value);
    offset = offset * static_cast<std::size_t>(array.shape[i]) + static_cast<std::size_t>(index);
  }
  double& place = array.elements.at(offset);
  if (opcode == static_cast<int>(Opcode::write_element)) {
    if (!HVM_NumberCheck(result)) return 0;
    place = HVM_AsDouble(result);
    return 1;
  }
  is_whole ? HVM_SetInt(ctx, result, static_cast<int>(place)) : HVM_SetReal(ctx, result, place);
  return 1;
}

HostBool arithmetic(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  HostValue* self = array_of(left) ? left : right;
  HostValue* other = self == left ? right : left;
  Array sum = *array_of(self);
  const Array* same = array_of(other);
  if (!same && !HVM_NumberCheck(other)) return 0;
  if (same && is_int(self) != is_int(other)) return 0;
  if (same && same->shape != sum.shape) throw std::runtime_error("shapes differ");
  for (std::size_t i = 0; i < sum.elements.size(); ++i)
    sum.elements[i] = combined(opcode, sum.elements[i], same ? same->elements[i] : HVM_AsDouble(other));
  if (self == result)
    *array_of(self) = std::move(sum);
  else
    give(ctx, result, is_int(self) ? int_type : double_type, std::move(sum));
  return 1;
}

HostBool op(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  switch (static_cast<Opcode>(opcode)) {
    case Opcode::read_element:
    case Opcode::write_element:
      return element(ctx, *array_of(left), opcode, is_int(left), static_cast<HostIndexList*>(static_cast<void*>(right)),
                     result);
    case Opcode::equal:
    case Opcode::not_equal: {
      if (!array_of(left) || !array_of(right)) return 0;
      const bool are_equal = array_of(left)->elements == array_of(right)->elements;
      HVM_SetInt(ctx, result, are_equal == (opcode == static_cast<int>(Opcode::equal)) ? 1 : 0);
      return 1;
    }
    case Opcode::remainder:
      return 1;
    default:
      return arithmetic(ctx, opcode, left, right, result);
  }
}

// ---- Functions

int toy_nothing(HostContext, HostValue*, int, HostValue*) { return 1; }
int toy_fail(HostContext, HostValue*, int, HostValue*) { return 0; }
int toy_count(HostContext ctx, HostValue*, int nargs, HostValue* result) { return HVM_SetInt(ctx, result, nargs), 1; }
int toy_second(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  if (nargs < 2) return 0;
  HVM_DupObject(ctx, result, args + 1, 1);
  return 1;
}

int toy_throw(HostContext, HostValue* args, int nargs, HostValue*) {
  const std::string kind = nargs > 0 ? HVM_AsString(args) : "";
  const std::string words = nargs > 1 ? HVM_AsString(args + 1) : "";
  if (kind == "runtime") throw std::runtime_error(words);
  if (kind == "own") throw OwnError(words);
  if (kind == "number") throw 7;
  return 0;
}

void throw_own() { throw OwnError("stuck"); }
void throw_where_none_may_pass() noexcept { throw_own(); }

int overflowed(int depth) {
  volatile char room[4096] = {};
  room[depth % 4096] = 1;
  return depth < 0 ? room[0] : overflowed(depth + 1) + room[1];
}

int toy_end(HostContext, HostValue* args, int nargs, HostValue*) {
  const std::string how = nargs > 0 ? HVM_AsString(args) : "";
  if (how == "fpe") raise(SIGFPE);
  if (how == "segv") raise(SIGSEGV);
  if (how == "bus") raise(SIGBUS);
  if (how == "ill") raise(SIGILL);
  if (how == "abort") std::abort();
  if (how == "exit") std::exit(EXIT_SUCCESS);
  if (how == "terminate") std::terminate();
  if (how == "throw") throw_where_none_may_pass();
  if (how == "overflow") return overflowed(0);
  return 0;
}

int toy_end_with(HostContext, HostValue* args, int nargs, HostValue*) {
  if (nargs < 1 || !array_of(args)) return 0;
  array_of(args)->faults_at_the_end = true;
  return 1;
}

int toy_serve_elements(HostContext, HostValue* args, int, HostValue*) {
  serves_elements = HVM_AsBool(args) != 0;
  return 1;
}

int toy_set(HostContext, HostValue* args, int nargs, HostValue*) {
  if (nargs < 3 || !array_of(args)) return 0;
  array_of(args)->elements.at(static_cast<std::size_t>(HVM_AsInt(args + 1))) = HVM_AsDouble(args + 2);
  return 1;
}

/// Memory that the module never frees. It keeps the pointer, so that no sanitizer reports it.
void* kept = nullptr;
int toy_leak(HostContext, HostValue*, int, HostValue*) { return (kept = arrayfold::HVM_Malloc(16)) != nullptr ? 1 : 0; }

int toy_deep(HostContext ctx, HostValue* args, int, HostValue* result) {
  HVM_ForceTable(ctx, result, 4);
  HostValue* inner = result;
  for (int i = 1; i < HVM_AsInt(args); ++i) {
    inner = HVM_HashSetInt(ctx, arrayfold::load<HostHash*>(inner->payload), 0);
    HVM_ForceTable(ctx, inner, 4);
  }
  return 1;
}

/// Waits for so many milliseconds, whatever signals come.
int toy_wait(HostContext, HostValue* args, int nargs, HostValue*) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(nargs > 0 ? HVM_AsInt(args) : 0);
  while (std::chrono::steady_clock::now() < end) usleep(1000);
  return 1;
}

constexpr arrayfold::FunctionRow rows[] = {
    {"toy_int", toy_int},         {"toy_double", toy_double},
    {"toy_nothing", toy_nothing}, {"toy_bool", toy_bool},
    {"toy_fail", toy_fail},       {"toy_count", toy_count},
    {"toy_second", toy_second},   {"toy_throw", toy_throw},
    {"toy_end", toy_end},         {"toy_serve_elements", toy_serve_elements},
    {"toy_set", toy_set},         {"toy_deep", toy_deep},
    {"xarange", toy_count},       {"xarray", toy_count},
    {"toy_wait", toy_wait},       {"toy_leak", toy_leak},
    {"toy_end_with", toy_end_with},
};

}  // namespace
}  // namespace toy

int PKG_Init(void* host, arrayfold::RegisterFunctions functions) {
  functions(host, static_cast<int>(std::size(toy::rows)), toy::rows);
  for (const char* name : {toy::int_type, toy::double_type, toy::bool_type})
    arrayfold::HVM_RegisterAnyMan(
        name, arrayfold::HVM_NewAnyMan(name, toy::create, toy::destroy, toy::method, toy::op, nullptr));
  return 1;
}
