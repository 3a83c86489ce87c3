// reader/expression_evaluator.hpp: the state of one evaluation

#pragma once

#include <xtensor/xstorage.hpp>

#include "reader/scalar_ref.hpp"

namespace arrayfold {

/// One evaluation: its results, and the host records that it made. The records live as long as the evaluator, and so do
/// the scalars that refer to them.
class ExpressionEvaluator {
 public:
  ExpressionEvaluator(HostContext ctx, std::uint32_t frame_base);
  /// Gives the records back in the order in which they were made.
  ~ExpressionEvaluator();
  ExpressionEvaluator(const ExpressionEvaluator&) = delete;
  ExpressionEvaluator& operator=(const ExpressionEvaluator&) = delete;

  HostContext ctx() const { return ctx_; }
  std::uint32_t frame_base() const { return frame_base_; }
  const xt::svector<ScalarRef, 8>& results() const { return results_; }

  void add_result(const ScalarRef& scalar) { results_.push_back(scalar); }
  /// A new record that this evaluator gives back. Throws std::bad_alloc when the host has none.
  HostValue* new_object();
  /// The variable in a frame slot; null when the host has none there.
  HostValue* variable(std::uint32_t slot) const;

 private:
  HostContext ctx_;
  std::uint32_t frame_base_;
  xt::svector<ScalarRef, 8> results_;
  xt::svector<HostValue*, 8> objects_;
};

}  // namespace arrayfold
