// script/module/module_calls.cpp: the host's side of every call into a module

#include "script/module/module_calls.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstddef>
#include <utility>

#include "script/module/exception_text.hpp"
#include "script/module/fault_report.hpp"
#include "script/module/trace.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

std::uint64_t changes = 0;

/// A call that may change objects. It counts before and after, since a script may run in between.
class Change {
 public:
  explicit Change(bool may_change) noexcept : may_change_(may_change) { changes += may_change_ ? 1 : 0; }
  ~Change() { changes += may_change_ ? 1 : 0; }
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

 private:
  bool may_change_;
};

bool is_element_access(Opcode opcode) { return opcode == Opcode::read_element || opcode == Opcode::write_element; }

using arrayfold::HostIndexEntry;
using arrayfold::HostIndexList;

/// Runs `call` as the module's; what it throws becomes a `CallFailure` that begins with `name`. With a trace it is told
/// as what `told` gives.
template <class Call, class Told>
auto translated(const ModuleCaller& caller, std::string_view name, Call call, Told told) {
  const RunningMark mark(caller.source, caller.offset, true);
  try {
    if (__builtin_expect(caller.trace != nullptr, false)) return traced(caller, told(), call);
    return call();
  } catch (...) {
    const std::string exception = current_exception_text();
    throw CallFailure(fmt::format("{}: the module threw {}", name, exception), exception);
  }
}

void throw_kept(const ModuleCaller& caller) {
  if (caller.kept && *caller.kept) std::rethrow_exception(std::exchange(*caller.kept, nullptr));
}

/// The same, but an exception that was kept while the module ran takes precedence over what the module throws.
template <class Call, class Told>
auto contained(const ModuleCaller& caller, std::string_view name, Call call, Told told) {
  try {
    const auto returned = translated(caller, name, call, told);
    throw_kept(caller);
    return returned;
  } catch (const Failure&) {
    throw_kept(caller);
    throw;
  }
}

/// An index list over `indices`, which must outlive it. A few entries lie in the list itself, more on the heap.
class IndexList {
 public:
  explicit IndexList(ValueSpan indices) {
    const bool fits = indices.size() <= most_inside;
    if (!fits) elsewhere_.resize(indices.size());
    HostIndexEntry* entries = fits ? list_.inside : elsewhere_.data();
    for (std::size_t i = 0; i < indices.size(); ++i) entries[i].value = indices[i].address();
    if (!fits) arrayfold::store<HostIndexEntry*>(list_.inside, entries);
    list_.packed_size = indices.size() * 2 + (fits ? 0 : 1);
  }
  IndexList(const IndexList&) = delete;
  IndexList& operator=(const IndexList&) = delete;

  /// The list in the place of a right operand, as the element opcodes take it.
  HostValue* as_operand() { return static_cast<HostValue*>(static_cast<void*>(&list_)); }

 private:
  static constexpr std::size_t most_inside = 4;
  /// `HostIndexList` with room for entries. A pointer to entries elsewhere takes the place of the first one.
  struct List {
    arrayfold::Field<std::uint64_t> packed_size;
    HostIndexEntry inside[most_inside];
  };
  static_assert(offsetof(List, inside) == offsetof(HostIndexList, entries), "the entries follow the count");

  List list_ = {};
  std::vector<HostIndexEntry> elsewhere_;
};

/// The kinds of the arguments of a call that failed.
std::string given(const std::vector<Value>& arguments) {
  if (arguments.empty()) return "without arguments";
  std::vector<std::string> kinds;
  kinds.reserve(arguments.size());
  for (const Value& argument : arguments) kinds.push_back(kind_in_words(argument));
  return fmt::format("with {}", fmt::join(kinds, ", "));
}

}  // namespace

std::uint64_t module_changes() noexcept { return changes; }

Value call_function(const ModuleCaller& caller, const std::string& name, arrayfold::EntryFunction function,
                    std::vector<Value>& arguments) {
  const Change change(true);
  Value result;
  const auto call = [&] {
    return function(caller.ctx, records_of(arguments), static_cast<int>(arguments.size()), result.address());
  };
  const int status = contained(caller, name, call, [&] { return traced_function(name, arguments, result.address()); });
  if (status == 0) throw CallFailure(fmt::format("{}: the call failed {}", name, given(arguments)));
  return result;
}

bool call_method(const ModuleCaller& caller, Value& self, const std::string& name, std::vector<Value>& arguments,
                 Value& result) {
  const auto method = callbacks_of(object_of(self.record())).method;
  if (!method) return false;
  const Change change(name != "shape");
  std::vector<HostValue*> pointers;
  pointers.reserve(arguments.size());
  for (Value& argument : arguments) pointers.push_back(argument.address());
  const auto call = [&] {
    const int count = static_cast<int>(pointers.size());
    return method(caller.ctx, self.address(), name.c_str(), pointers.data(), count, result.address(), 0) != 0;
  };
  return contained(caller, name, call, [&] { return traced_method(self.address(), name, pointers, result.address()); });
}

bool call_operator(const ModuleCaller& caller, std::string_view name, Opcode opcode, HostValue* left, HostValue* right,
                   HostValue* result) {
  const HostAny* object = object_of(*left);
  if (!object && right) object = object_of(*right);
  const auto op = callbacks_of(object).op;
  if (!op) return false;
  const Change change(!is_element_access(opcode));
  const auto call = [&] { return op(caller.ctx, static_cast<int>(opcode), left, right, result) != 0; };
  return contained(caller, name, call, [&] { return traced_operator(opcode, left, right, result); });
}

std::optional<Value> read_element(const ModuleCaller& caller, Value& object, ValueSpan indices) {
  IndexList list(indices);
  Value element;
  const bool is_read =
      call_operator(caller, "[]", Opcode::read_element, object.address(), list.as_operand(), element.address());
  return is_read ? std::optional(std::move(element)) : std::nullopt;
}

bool write_element(const ModuleCaller& caller, Value& object, ValueSpan indices, Value& value) {
  IndexList list(indices);
  return call_operator(caller, "[]", Opcode::write_element, object.address(), list.as_operand(), value.address());
}

}  // namespace hvm
