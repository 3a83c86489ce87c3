// reader/expression_evaluator.cpp: host records and variables of an evaluation

#include "reader/expression_evaluator.hpp"

#include <new>

namespace arrayfold {

ExpressionEvaluator::ExpressionEvaluator(HostContext ctx, std::uint32_t frame_base)
    : ctx_(ctx), frame_base_(frame_base) {}

ExpressionEvaluator::~ExpressionEvaluator() {
  for (HostValue* object : objects_) HVM_FreeObj(ctx_, object);
}

HostValue* ExpressionEvaluator::new_object() {
  objects_.push_back(nullptr);  // reserve the place first, so that the record cannot leak if growing throws
  HostValue* object = HVM_NewObject();
  if (object == nullptr) {
    objects_.resize(objects_.size() - 1);
    throw std::bad_alloc();
  }
  return objects_.back() = object;
}

HostValue* ExpressionEvaluator::variable(std::uint32_t slot) const {
  const HostFrame* frame = ctx_->frame;
  const std::uint32_t slot_base = frame == nullptr ? 0 : frame->slot_base.get();
  return ctx_->read_slot.get()(ctx_, static_cast<int>(slot - slot_base + frame_base_));
}

}  // namespace arrayfold
