// script/module/recent_shapes.cpp: the shapes that objects have given lately

#include "script/module/recent_shapes.hpp"

#include <algorithm>
#include <utility>

#include "script/module/module_calls.hpp"

namespace hvm {

const Extents* RecentShapes::find(const HostAny* object) const noexcept {
  if (changes_ != module_changes()) return nullptr;
  const auto found = std::find_if(shapes_.begin(), shapes_.end(), [&](const Shape& x) { return x.object == object; });
  return found == shapes_.end() ? nullptr : &found->extents;
}

const Extents* RecentShapes::keep(const HostAny* object, Extents extents) {
  if (changes_ != module_changes()) shapes_.fill({});
  changes_ = module_changes();
  Shape& oldest = shapes_[next_++ % shapes_.size()];
  oldest = {object, std::move(extents)};
  return &oldest.extents;
}

}  // namespace hvm
