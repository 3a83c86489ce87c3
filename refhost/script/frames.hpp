// script/frames.hpp: variables and where a module finds them
//
// A module names a variable by a number. Those of the outermost level count from 0, those of a fn's frame from its
// base, which lies above all older frames. In a tree each number is relative to the frame in which the tree was made,
// and begins with the `slot_base` of the frame record, which is the same for all.

#pragma once

#include <algorithm>
#include <vector>

#include "script/code.hpp"

namespace hvm {

struct Slot {
  Value value;
  bool is_set = false;
};

/// The first number of a local variable.
inline constexpr std::uint32_t first_local = std::uint32_t{1} << 24;
/// The number at which the slots of trees begin.
inline constexpr std::uint32_t first_tree_slot = 16;

/// Trees of the outermost level live as long as the interpreter, and so does their text; those of a fn end with it.
enum class LiteralText { may_be_referenced, must_be_copied };

inline HostFrame frame_record(LiteralText text) {
  HostFrame record{};
  record.slot_base = first_tree_slot;
  record.copy_strings = text == LiteralText::must_be_copied ? 1 : 0;
  return record;
}

/// A fn that runs.
struct Frame {
  /// `older` is the youngest of the other frames, null when there is none.
  Frame(const Function& called, const Frame* older, LiveCodes& live)
      : function(&called),
        locals(called.locals.size()),
        base(older ? older->base + older->width() : first_local),
        record(frame_record(LiteralText::must_be_copied)),
        codes(live) {}

  /// The numbers that it takes up: at least one, so that no two frames share a base.
  std::uint32_t width() const { return static_cast<std::uint32_t>(std::max<std::size_t>(locals.size(), 1)); }

  const Function* function;
  std::vector<Slot> locals;
  std::uint32_t base;
  HostFrame record;
  ScopeCodes codes;
};

}  // namespace hvm
