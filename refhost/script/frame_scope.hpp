// script/frame_scope.hpp: a change of the running frame that ends with a scope

#pragma once

#include <utility>

#include "script/interpreter.hpp"

namespace hvm {

/// Makes another frame the running one, null for the outermost level, and the old one again at the end.
class Interpreter::FrameScope {
 public:
  FrameScope(Interpreter& interpreter, Frame* frame)
      : interpreter_(interpreter), outer_(std::exchange(interpreter.frame_, frame)) {
    show_to_modules();
  }
  ~FrameScope() {
    interpreter_.frame_ = outer_;
    show_to_modules();
  }
  FrameScope(const FrameScope&) = delete;
  FrameScope& operator=(const FrameScope&) = delete;

 private:
  void show_to_modules() {
    Frame* frame = interpreter_.frame_;
    interpreter_.context_.use_frame(frame ? &frame->record : &interpreter_.outermost_frame_);
  }

  Interpreter& interpreter_;
  Frame* outer_;
};

}  // namespace hvm
