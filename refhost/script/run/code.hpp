// script/run/code.hpp: quotations as the records that a module reads
//
// Evaluating a quotation gives a value of tag 13. Its record and tree belong to the scope in which it was written: the
// running fn's frame, or the outermost level, and end with it. A value that outlives its scope is recognised by its
// serial number, which is in the record beside the pointer and is never used twice.

#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "kernel/kernel.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

using arrayfold::HostCode;
using arrayfold::HostCodeNode;
using arrayfold::HostCodeSlot;
using arrayfold::NodeKind;

struct Code;
struct Frame;

/// What a call node leads to: the symbol that a module may read, and what the host calls.
struct Callee : arrayfold::HostSymbol {
  const Code* code;
  const Expression* expression;  // of a named call the Call; of a quoted name null
  bool takes_arguments;          // called by its name with what the module evaluated; otherwise evaluated whole
};

/// The expression behind tag 13, with all that its tree points at.
struct Code : HostCode {
  std::uint64_t serial = 0;
  std::shared_ptr<const Quotation> quotation;
  SourcePtr source;
  Frame* frame = nullptr;  // of the fn in which it was written; null at the outermost level
  std::deque<HostCodeNode> nodes;
  std::deque<Callee> callees;
};

enum class VariableState : char { unset = '-', set = 'v', table = 't' };

/// The variables as the scope that runs sees them.
class VariableView {
 public:
  virtual VariableState state(const Variable& variable) const = 0;
  /// The number of the variable in the tree.
  virtual std::uint32_t slot(const Variable& variable) const = 0;
  /// Throws the `ScriptError` of a variable without a value.
  [[noreturn]] virtual void fail_unset(const Variable& variable, Span span) const = 0;

 protected:
  ~VariableView() = default;
};

/// The codes that live, by their serial numbers.
class LiveCodes {
 public:
  void add(Code& code);
  void remove(const Code& code) { codes_.erase(code.serial); }
  /// The code of a value; null when it is of another kind, or its scope has ended.
  const Code* find(const HostValue& value) const;

 private:
  std::unordered_map<std::uint64_t, const Code*> codes_;
  std::uint64_t last_serial_ = 0;
};

/// A value of tag 13.
Value value_of(const Code& code);

/// The codes of one scope. A quotation is made once for each state of the variables in it.
class ScopeCodes {
 public:
  explicit ScopeCodes(LiveCodes& live) : live_(live) {}
  ~ScopeCodes();
  ScopeCodes(const ScopeCodes&) = delete;
  ScopeCodes& operator=(const ScopeCodes&) = delete;

  /// The code of a quotation in this scope. `frame_base` is the scope's.
  const Code& code_of(const std::shared_ptr<const Quotation>& quotation, const SourcePtr& source, Frame* frame,
                      std::uint32_t frame_base, const VariableView& variables);

 private:
  LiveCodes& live_;
  std::map<std::pair<const Quotation*, std::string>, std::unique_ptr<Code>> codes_;
};

}  // namespace hvm
