// script/module/module_calls.hpp: the host's side of every call into a module
//
// No exception of a module passes these functions: each becomes a `Failure` with its type and its message. No exception
// of the host passes through a module: what is thrown in a call out of it is kept, and thrown again when the module has
// returned, whatever the module did with the failed call.

#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kernel/kernel.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/source_text.hpp"

namespace hvm {

using arrayfold::Opcode;

/// The first exception in the calls out of a running module, null when there is none: a `ScriptError`, or the end of
/// the script.
using KeptException = std::exception_ptr;

/// A call of a module that came to nothing: the module returned 0 or false, or threw.
class CallFailure : public Failure {
 public:
  /// `exception` is the type and the words of what the module threw; empty when it threw nothing.
  explicit CallFailure(std::string message, std::string exception = {})
      : Failure(std::move(message)), exception_(std::move(exception)) {}
  const std::string& exception() const { return exception_; }

 private:
  std::string exception_;
};

class RecentShapes;
class Trace;

/// From where a module is called: what it receives as its context, the place of the script, and what is known of its
/// objects.
struct ModuleCaller {
  HostContext ctx;
  const SourceText* source;
  std::size_t offset;
  RecentShapes& shapes;
  KeptException* kept = nullptr;
  Trace* trace = nullptr;  // null: calls are not told
};

/// The same for what the host asks of its own accord: a trace does not tell it.
inline ModuleCaller untraced(ModuleCaller caller) noexcept {
  caller.trace = nullptr;
  return caller;
}

/// Counts the calls that may make, change or end objects: all but reading and writing elements and the method `shape`.
/// As long as it is the same, an object at some address is the same object and has the same shape.
std::uint64_t module_changes() noexcept;

/// Calls a registered function. Throws `CallFailure` when it returns 0 or throws.
Value call_function(const ModuleCaller& caller, const std::string& name, arrayfold::EntryFunction function,
                    std::vector<Value>& arguments);

/// Calls a method of the object in `self` and returns what it returns; false when the type has no methods. Throws
/// `CallFailure` when it throws.
bool call_method(const ModuleCaller& caller, Value& self, const std::string& name, std::vector<Value>& arguments,
                 Value& result);

/// Calls the operator callback of the left operand's type when that is an object, otherwise the right one's, and
/// returns what it returns; false when the type has no operators. `right` is what the opcode asks for. Throws
/// `CallFailure` with `name` in front when the callback throws.
bool call_operator(const ModuleCaller& caller, std::string_view name, Opcode opcode, HostValue* left, HostValue* right,
                   HostValue* result);

/// The element at `indices`; no value when the type returns false. Throws `Failure`.
std::optional<Value> read_element(const ModuleCaller& caller, Value& object, ValueSpan indices);
/// Writes `value` to the element at `indices`. Returns false when the type does. Throws `Failure`.
bool write_element(const ModuleCaller& caller, Value& object, ValueSpan indices, Value& value);

}  // namespace hvm
