// script/source_scope.hpp: a change of source that ends with a scope

#pragma once

#include <utility>

#include "script/interpreter.hpp"

namespace hvm {

/// Puts another source in the place of the running one, and the old one back at the end.
class Interpreter::SourceScope {
 public:
  SourceScope(SourcePtr& place, SourcePtr source) : place_(place), outer_(std::exchange(place, std::move(source))) {}
  ~SourceScope() { place_ = std::move(outer_); }
  SourceScope(const SourceScope&) = delete;
  SourceScope& operator=(const SourceScope&) = delete;

 private:
  SourcePtr& place_;
  SourcePtr outer_;
};

}  // namespace hvm
