// script/run/call_depth.hpp: how deep calls, and scripts that use others, may nest

#pragma once

#include <cstddef>

#include "script/run/site.hpp"

namespace hvm {

/// The maximum nesting of calls of fns and scripts that use others.
inline constexpr int call_limit = 1000;

/// Counts the calls of fns that have not returned and the scripts that are being used, and measures the stack that they
/// use up.
class CallDepth {
 public:
  /// The stack is measured from here on.
  explicit CallDepth(const Site& site);

  /// Throws `ScriptError` when calls nest too deeply for another one at `span`.
  void require_room(Span span) const;

  /// A call that has not returned, or a script that is being used.
  class Level {
   public:
    explicit Level(CallDepth& depth) : depth_(depth) { ++depth_.levels_; }
    ~Level() { --depth_.levels_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

   private:
    CallDepth& depth_;
  };

 private:
  const Site& site_;
  const char* stack_base_;
  std::size_t stack_room_;
  int levels_ = 0;
};

}  // namespace hvm
