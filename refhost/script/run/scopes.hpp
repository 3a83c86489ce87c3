// script/run/scopes.hpp: the scopes of a running script: the outermost level and the fns that have not returned
//
// A module names a variable by a number. Those of the outermost level count from 0, those of a fn's frame from its
// base, which lies above all older frames. In a tree each number is relative to the frame in which the tree was made,
// and begins with the `slot_base` of the frame record, which is the same for all.

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kernel/kernel.hpp"
#include "script/run/code.hpp"
#include "script/syntax/names.hpp"

namespace hvm {

/// The place of a variable's value.
struct Slot {
  Value value;
  bool is_set = false;

  void give(Value given) noexcept {
    value = std::move(given);
    is_set = true;
  }
};

/// A fn that runs.
struct Frame {
  /// `older` is the youngest of the other frames, null when there is none.
  Frame(const Function& called, const Frame* older, LiveCodes& live);

  /// The numbers that it takes up: at least one, so that no two frames share a base.
  std::uint32_t width() const;

  const Function* function;
  std::vector<Slot> locals;
  std::uint32_t base;
  HostFrame record;
  ScopeCodes codes;
};

/// Holds the variables and the quotations of every scope, and shows the running frame to modules.
class Scopes {
 public:
  explicit Scopes(Context& context);
  Scopes(const Scopes&) = delete;
  Scopes& operator=(const Scopes&) = delete;

  /// The names of the global variables. A parser adds to them; `make_room` must follow.
  NameTable& global_names() { return global_names_; }
  /// Gives every global name a slot.
  void make_room();
  void set_global(const std::string& name, Value value);
  bool is_set_global(const std::string& name) const;

  /// The slot of a variable of the running scope. It stays where it is until names are added or the scope ends.
  Slot& slot_of(const Variable& variable) {
    return variable.is_local ? running_->locals[variable.slot] : globals_[variable.slot];
  }
  const Slot& slot_of(const Variable& variable) const {
    return variable.is_local ? running_->locals[variable.slot] : globals_[variable.slot];
  }
  /// The number of a variable of the running scope in a tree.
  std::uint32_t tree_slot(const Variable& variable) const;
  /// The names of the variables that the running scope sees.
  std::vector<std::string_view> visible_names() const;
  /// The variable of this number, which a module reads; the global nil object when there is none.
  HostValue* numbered(int number);

  /// The code of a quotation in the running scope.
  const Code& code_of(const std::shared_ptr<const Quotation>& quotation, const SourcePtr& source,
                      const VariableView& variables);
  /// The code of a value; null when it is of another kind, or its scope has ended.
  const Code* find_code(const HostValue& value) const { return live_codes_.find(value); }
  const Code* find_code(const Value& value) const { return find_code(value.record()); }

 private:
  friend class FrameScope;
  friend class CallScope;

  void run_in(Frame* frame);
  std::uint32_t running_base() const { return running_ ? running_->base : 0; }

  Context& context_;
  HostFrame outermost_record_;
  LiveCodes live_codes_;
  ScopeCodes outermost_codes_{live_codes_};
  NameTable global_names_;
  std::vector<Slot> globals_;
  std::vector<Frame*> frames_;  // of the fns that have not returned, the youngest last
  Frame* running_ = nullptr;
};

/// Makes another frame the running one, null for the outermost level, and the old one again at the end.
class FrameScope {
 public:
  FrameScope(Scopes& scopes, Frame* frame) : scopes_(scopes), outer_(scopes.running_) { scopes_.run_in(frame); }
  ~FrameScope() { scopes_.run_in(outer_); }
  FrameScope(const FrameScope&) = delete;
  FrameScope& operator=(const FrameScope&) = delete;

 private:
  Scopes& scopes_;
  Frame* outer_;
};

/// A new frame for a call of `function`, with the arguments in its first locals. It runs until the end of the scope.
class CallScope {
 public:
  CallScope(Scopes& scopes, const Function& function, std::vector<Value> arguments);
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

 private:
  Scopes& scopes_;
  Frame frame_;
  Frame* outer_;
};

}  // namespace hvm
