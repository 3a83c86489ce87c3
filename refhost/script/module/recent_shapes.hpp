// script/module/recent_shapes.hpp: the shapes that objects have given lately

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "kernel/kernel.hpp"
#include "script/text/array_layout.hpp"

namespace hvm {

/// Keeps the shapes of a few objects: asking an object costs many times as much as reading an element.
class RecentShapes {
 public:
  /// Null when the object has not given its shape, or may have changed it since.
  const Extents* find(const HostAny* object) const noexcept;
  /// Keeps the shape of an object, in the place of the oldest one. The result is valid until the next call.
  const Extents* keep(const HostAny* object, Extents extents);

 private:
  struct Shape {
    const HostAny* object = nullptr;
    Extents extents;
  };
  std::array<Shape, 4> shapes_;
  std::size_t next_ = 0;
  std::uint64_t changes_ = 0;  // as they were when the shapes were given
};

}  // namespace hvm
