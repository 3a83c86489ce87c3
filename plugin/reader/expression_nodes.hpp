// reader/expression_nodes.hpp: what the slots and nodes of an expression tree hold
//
// The readers see the tree of the host through these accessors. None of them asks the host for anything.

#pragma once

#include <exception>
#include <string_view>

#include "host/host_value.hpp"

namespace arrayfold {

/// The node that a slot leads to: null unless its tag says so.
inline const HostCodeNode* node_in(const HostCodeSlot& slot) {
  return slot.tag == SlotTag::node ? load<const HostCodeNode*>(slot.payload) : nullptr;
}

/// The node of this kind that a slot leads to, else null.
inline const HostCodeNode* node_in(const HostCodeSlot& slot, NodeKind kind) {
  const HostCodeNode* node = node_in(slot);
  return node != nullptr && node->kind == kind ? node : nullptr;
}

/// The frame slot in a slot of the variable tag.
inline std::uint32_t frame_slot(const HostCodeSlot& slot) { return load<std::uint32_t>(slot.payload); }

/// The characters of narrow text at `text`, up to its terminator; none for null.
inline std::string_view text_at(const char* text) { return text == nullptr ? std::string_view() : text; }
/// The same for 16-bit characters.
inline std::u16string_view wide_text_at(const char16_t* text) { return text == nullptr ? std::u16string_view() : text; }

/// The text of a symbol record, or of a string; empty for any other slot.
inline std::string_view name_in(const HostCodeSlot& slot) {
  if (slot.tag == SlotTag::string) return text_at(load<const char*>(slot.payload));
  if (slot.tag != SlotTag::node) return {};
  const auto* symbol = load<const HostSymbol*>(slot.payload);
  return symbol == nullptr ? std::string_view() : text_at(symbol->text);
}

/// The node that a wrapper of a name holds in place of the name itself. Ends the process through std::terminate when
/// the wrapper holds no name.
inline const HostCodeNode* unwrapped(const HostCodeNode* node) {
  const HostCodeNode* wrapper = node_in(node->link, NodeKind::name_wrapper);
  if (wrapper == nullptr) return node;
  const auto* name = load<const HostCodeNode*>(wrapper->value.payload);
  if (name == nullptr || name->kind != NodeKind::name) std::terminate();
  return name;
}

}  // namespace arrayfold
