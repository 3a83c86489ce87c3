// script/module/trace.hpp: a file that tells every call of a module
//
// Each call is one line of JSON, written at once when the call has returned. A call in a call out of the module has its
// own line, which comes before that of the outer one and names it. The operations that the module asked of the host
// stand in the line in their order. Their operands have names that do not depend on addresses: `arg 0`, `self`, `left`,
// `right`, `index 0`, `value`, `result` and `nil` for the records of the call and the shared nil object, otherwise
// `record`, `table` or `block` with a number that counts their first appearances in the call. A slot of a table has the
// same number as long as its table and key are the same. Objects are numbered as the host has made them.
//
// A trace never fails a script: what cannot be written ends the trace, and `finish` says so. The lines may also go to a
// function instead of a file.

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/kernel.hpp"
#include "script/data/descriptor.hpp"
#include "script/module/module_calls.hpp"
#include "script/module/trace_values.hpp"

namespace hvm {

/// A trace that cannot be written; the message names the file and the cause.
class TraceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The name of an operator in a trace, `less_equal` or `write_element`; `unknown` for an opcode without one.
const char* operator_name(arrayfold::Opcode opcode) noexcept;

class TraceScope;

class Trace {
 public:
  static constexpr std::size_t most_operations_by_default = 10000;
  using TakeLine = std::function<void(std::string_view line)>;

  /// Opens the file; `-` is the standard error. A file with something else than a trace is not overwritten. Of each
  /// call the first `most_operations` operations are told. Throws `TraceError`.
  Trace(const std::string& path, std::size_t most_operations);
  /// Gives each line, with its end, to `take`.
  Trace(TakeLine take, std::size_t most_operations);
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  void read_quotations_by(QuotationText text) { quotation_text_ = std::move(text); }

  /// Runs `call`, a call out of the module, and tells it as the operation `call_function`. What the host does meanwhile
  /// is not told.
  int called_out(const char* callee, HostValue* args, int nargs, HostValue* result, const std::function<int()>& call);
  /// Tells the operation `read_slot`.
  void slot_read(int slot, const HostValue* value) noexcept;

  /// Closes the file. Throws `TraceError` when something was not written.
  void finish();

 private:
  friend class TraceScope;

  void open(const std::string& path);
  void write(std::string_view line);
  void lose(std::string cause) noexcept;
  [[noreturn]] void fail(const std::string& cause) const;

  std::string path_;
  TakeLine take_;  // empty: the file takes the lines
  std::size_t most_operations_;
  QuotationText quotation_text_;
  HostValue* shared_nil_;
  Descriptor file_{-1};
  bool is_lost_ = false;
  std::string cause_;
  std::uint64_t calls_ = 0;
  TraceScope* innermost_ = nullptr;
};

/// A record of a call under the name that it has in the trace.
struct TracedRecord {
  std::string name;
  HostValue* record;
};

/// Records that are told under one word: a list of them, or a single one.
struct TracedGroup {
  const char* word;
  bool is_list;
  std::vector<TracedRecord> records;
};

/// A call of a module, as its line begins.
struct TracedCall {
  const char* form;  // function, method or operator
  std::string name;
  int opcode = 0;  // of an operator
  std::vector<TracedGroup> groups;
  HostValue* result;  // null: it is among the groups
};

TracedCall traced_function(const std::string& name, std::vector<Value>& arguments, HostValue* result);
TracedCall traced_method(HostValue* self, const std::string& name, const std::vector<HostValue*>& arguments,
                         HostValue* result);
TracedCall traced_operator(Opcode opcode, HostValue* left, HostValue* right, HostValue* result);

/// Names of things by their addresses, such as `table 2`.
class TracedNames {
 public:
  explicit TracedNames(const char* word) : word_(word) {}

  /// The name of the thing at an address, a new one for an unknown address.
  const std::string& of(const void* address);
  /// A new name for what has just been made at an address.
  const std::string& make(const void* address);
  void give(const void* address, std::string name) { names_[address] = std::move(name); }
  std::string next() { return word_ + (' ' + std::to_string(++count_)); }
  /// Forgets the names from `begin` up to `end`.
  void forget(const void* begin, const void* end);

 private:
  const char* word_;
  std::size_t count_ = 0;
  std::map<const void*, std::string> names_;
};

/// Tells one call of a module: what is known before the call at its beginning, the operations while it lives.
class TraceScope : private CallSink {
 public:
  TraceScope(const ModuleCaller& caller, const TracedCall& call) noexcept;
  ~TraceScope();
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

  void returned(int value) noexcept;
  /// Tells the exception that is being handled.
  void threw() noexcept;

 private:
  friend class Trace;

  std::size_t begin(const RecordedCall& call) noexcept override;
  void end(std::size_t number, const RecordedOperand& result) noexcept override;

  /// Runs a part of the telling; without memory the trace is lost.
  template <class Part>
  void tell(Part part) noexcept;
  void begin_line(const ModuleCaller& caller, const TracedCall& call);
  void end_line();
  void stop() noexcept;
  std::uint64_t time() const noexcept;

  std::size_t add_operation(std::string text);
  std::string operand_text(const RecordedOperand& operand);
  std::string key_text(const RecordedOperand& key);
  std::string result_text(const RecordedCall& call, const RecordedOperand& result);
  const std::string& slot_name(const std::string& container, const std::string& key, const void* address);

  struct Operation {
    RecordedCall call;
    std::string text;
  };

  Trace& trace_;
  TraceScope* outer_;
  std::uint64_t number_;
  HostValue* result_;
  bool is_running_ = true;
  std::string line_;
  std::vector<Operation> operations_;
  std::uint64_t omitted_ = 0;
  TracedNames records_{"record"};
  TracedNames tables_{"table"};
  TracedNames blocks_{"block"};
  std::map<std::string, std::string> slots_;  // the names of slots by their tables and keys
  CallSink* outer_sink_ = nullptr;
  std::uint64_t started_ = 0;
  std::uint64_t nanoseconds_ = 0;
};

/// Runs `call`, a call of the module that returns a number, and tells it to the caller's trace.
template <class Call>
auto traced(const ModuleCaller& caller, const TracedCall& told, Call call) {
  TraceScope scope(caller, told);
  try {
    const auto returned = call();
    scope.returned(returned);
    return returned;
  } catch (...) {
    scope.threw();
    throw;
  }
}

}  // namespace hvm
