// refhost/script/run/code_text.hpp: the tree behind a value of tag 13 as one line of text, read as a module reads it
//
// A node is `kind(link value)`, a slot that leads nowhere `_`, one that is marked absent `.`, text `"text"/length`, a
// variable `$slot`, a symbol `'text'`.

#pragma once

#include <fmt/format.h>

#include <string>

#include "kernel/kernel.hpp"
#include "narrow_text.hpp"
#include "script/syntax/string_literals.hpp"

namespace hvm::testing {

using arrayfold::HostCode;
using arrayfold::HostCodeNode;
using arrayfold::HostCodeSlot;
using arrayfold::HostSymbol;
using arrayfold::load;
using arrayfold::NodeKind;
using arrayfold::SlotTag;

std::string code_text(const HostCodeNode& node);

inline std::string code_text(const HostCodeSlot& slot) {
  switch (slot.tag.get()) {
    case SlotTag::node: {
      const auto* node = load<const HostCodeNode*>(slot.payload);
      return node ? code_text(*node) : "_";
    }
    case SlotTag::absent:
      return ".";
    case SlotTag::string:
      return fmt::format("{}/{}", string_literal(load<const char*>(slot.payload)), slot.length.get());
    case SlotTag::integer:
      return fmt::format("{}", load<std::int32_t>(slot.payload));
    case SlotTag::real:
      return fmt::format("{:#}", load<double>(slot.payload));
    case SlotTag::variable:
      return fmt::format("${}", load<std::uint32_t>(slot.payload));
    case SlotTag::integer64:
      return fmt::format("{}L", load<std::int64_t>(slot.payload));
    case SlotTag::wide_string:
      return fmt::format("w{}/{}", string_literal(narrow_text(load<const char16_t*>(slot.payload))), slot.length.get());
  }
  return "?";
}

inline std::string code_text(const HostCodeNode& node) {
  const NodeKind kind = node.kind;
  // The value of a bare name is its text again, under the tag of a node.
  if (kind == NodeKind::name)
    return fmt::format("77({} {})", code_text(node.link), load<const char*>(node.value.payload));
  const std::string link = kind == NodeKind::call
                               ? fmt::format("'{}'", load<const HostSymbol*>(node.link.payload)->text.get())
                               : code_text(node.link);
  return fmt::format("{}({} {})", static_cast<unsigned>(kind), link, code_text(node.value));
}

}  // namespace hvm::testing
