// cli/kept_memory.cpp: memory of freed arrays that stays with the process

#include "cli/kept_memory.hpp"

#include <algorithm>
#include <limits>

#include <malloc.h>

namespace hvm {

void keep_freed_memory(std::size_t mebibytes) noexcept {
  if (mebibytes == 0) return;
  constexpr std::size_t most = std::numeric_limits<int>::max();
  const auto bytes = static_cast<int>(std::min(mebibytes << 20, most));
  // Smaller blocks than this come from the heap, and as much of its end stays.
  mallopt(M_MMAP_THRESHOLD, bytes);
  mallopt(M_TRIM_THRESHOLD, bytes);
}

}  // namespace hvm
