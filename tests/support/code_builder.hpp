// support/code_builder.hpp: expression trees made by hand, and a host that answers what they ask
//
//     CodeBuilder code;
//     Value quotation = code.quoted(leads_to(code.call("double", {integer(2), variable(7)})));
//
// The builder owns nodes, texts and symbols; the trees last as long as it does.

#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/kernel.hpp"

namespace arrayfold::test {

using hvm::Value;

// ---- Slots

/// A slot of any tag and payload; literal strings have a length.
template <class T>
HostCodeSlot slot_of(SlotTag tag, T payload, std::uint32_t length = 0) {
  HostCodeSlot slot{};
  slot.tag = tag;
  store<T>(slot.payload, payload);
  slot.length = length;
  return slot;
}

inline HostCodeSlot leads_to(const HostCodeNode* node) { return slot_of(SlotTag::node, node); }
/// A slot that leads nowhere: tag 0 and null.
inline HostCodeSlot nowhere() { return leads_to(nullptr); }
inline HostCodeSlot absent() { return slot_of<std::uint64_t>(SlotTag::absent, 0); }
inline HostCodeSlot integer(std::int32_t x) { return slot_of(SlotTag::integer, x); }
inline HostCodeSlot integer64(std::int64_t x) { return slot_of(SlotTag::integer64, x); }
inline HostCodeSlot real(double x) { return slot_of(SlotTag::real, x); }
inline HostCodeSlot variable(std::uint32_t frame_slot) { return slot_of(SlotTag::variable, frame_slot); }

/// Whether a literal string tells its length.
enum class Length { recorded, unrecorded };

/// Makes nodes and what they point at, and keeps them.
class CodeBuilder {
 public:
  CodeBuilder() = default;
  CodeBuilder(const CodeBuilder&) = delete;
  CodeBuilder& operator=(const CodeBuilder&) = delete;

  HostCodeNode* node(NodeKind kind, HostCodeSlot link = nowhere(), HostCodeSlot value = nowhere());

  HostCodeSlot text(std::string_view characters, Length length = Length::recorded);
  HostCodeSlot wide_text(std::u16string_view characters, Length length = Length::recorded);
  /// A slot of tag 0 that points at a symbol record of this name.
  HostCodeSlot symbol(std::string_view name);
  /// A symbol record whose text is null.
  HostCodeSlot symbol_without_text();

  // Argument lists: a cell's value is its argument, its link leads on.
  HostCodeSlot list(const std::vector<HostCodeSlot>& arguments);
  HostCodeNode* call(std::string_view name, const std::vector<HostCodeSlot>& arguments = {});
  HostCodeSlot call_slot(std::string_view name, const std::vector<HostCodeSlot>& arguments = {}) {
    return leads_to(call(name, arguments));
  }

  // Array literals: a cell's link holds its item, its value leads on.
  HostCodeNode* array_literal(const std::vector<HostCodeNode*>& items);
  HostCodeNode* open() { return node(NodeKind::literal_open); }
  HostCodeNode* close() { return node(NodeKind::literal_close); }
  HostCodeNode* element(HostCodeSlot literal);
  HostCodeNode* pair(HostCodeSlot key, HostCodeSlot value);
  HostCodeNode* pair_of_table(HostCodeSlot key) { return pair(key, leads_to(open())); }

  // Data literals: a row's first cell is of a kind of its own; links hold elements or rows, values lead on.
  HostCodeNode* row(const std::vector<HostCodeSlot>& elements);
  HostCodeNode* rows(const std::vector<HostCodeNode*>& inner);

  // Selections: `chosen` are the links of the selector cells, in a chain of values.
  HostCodeNode* selection(std::uint32_t frame_slot, const std::vector<HostCodeSlot>& chosen);
  HostCodeSlot range(HostCodeSlot first, HostCodeSlot second) { return leads_to(node(NodeKind::range, first, second)); }
  /// The argument for a selection: the node of the selection stands in the value of another.
  HostCodeSlot selection_slot(std::uint32_t frame_slot, const std::vector<HostCodeSlot>& chosen) {
    return leads_to(node(NodeKind::selection, nowhere(), leads_to(selection(frame_slot, chosen))));
  }

  HostCodeNode* quotation(HostCodeSlot quoted) { return node(NodeKind::quotation, quoted); }
  /// A value of tag 13 over this root; it owns nothing.
  Value code(HostCodeNode* root, std::uint32_t frame_base = 0);
  /// The same over a quotation of `quoted`.
  Value quoted(HostCodeSlot quoted_slot, std::uint32_t frame_base = 0) {
    return code(quotation(quoted_slot), frame_base);
  }
  Value quoted_call(std::string_view name, const std::vector<HostCodeSlot>& arguments = {},
                    std::uint32_t frame_base = 0) {
    return quoted(call_slot(name, arguments), frame_base);
  }

 private:
  /// Chains cells by their values: the first is of kind `first`, each has one of `links`.
  HostCodeNode* chain(NodeKind first, const std::vector<HostCodeSlot>& links);

  std::deque<HostCodeNode> nodes_;
  std::deque<HostSymbol> symbols_;
  std::deque<HostCode> codes_;
  std::deque<std::string> texts_;
  std::deque<std::u16string> wide_texts_;
};

// ---- The host

/// Variables and functions behind a context, for as long as it lives: one at a time. What is asked of it is kept.
class ScriptedHost {
 public:
  using Function = std::function<int(HostValue* args, int nargs, HostValue* result)>;

  /// A call of a function: its arguments as they print, and whether there was an array of them at all.
  struct Call {
    std::string name;
    std::vector<std::string> arguments;
    bool has_array = false;
  };

  explicit ScriptedHost(HostContext ctx);
  ~ScriptedHost();
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  void use_slot_base(std::uint32_t slot_base) { frame_.slot_base = slot_base; }
  void copy_strings(bool copy) { frame_.copy_strings = copy ? 1 : 0; }
  /// The context is without a frame record.
  void without_frame() { ctx_->frame = nullptr; }

  /// The variable in a slot, as the host counts them. A slot that was never named has none: it reads as null.
  Value& operator[](int slot) { return variables_[slot]; }
  /// A function that expressions may call by this name; calls of other names fail.
  void define(std::string_view name, Function function);

  const std::vector<int>& slots_read() const { return slots_read_; }
  const std::vector<Call>& calls() const { return calls_; }
  /// From here on nothing is kept: what is asked of the host then takes no memory.
  void keep_nothing() { keeps_ = false; }

 private:
  static int call_function(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result);
  static HostValue* read_slot(HostContext ctx, int slot);

  HostContext ctx_;
  HostContextRecord before_;
  HostFrame frame_{};
  std::map<int, Value> variables_;
  std::map<std::string, Function, std::less<>> functions_;
  bool keeps_ = true;
  std::vector<int> slots_read_;
  std::vector<Call> calls_;
};

}  // namespace arrayfold::test
