// order/sets.cpp: xsetdiff1d

#include "host/entry.hpp"

namespace arrayfold {

// required: both arguments are checked, the first is fetched twice, and the answer is 0 on every path.
Outcome xsetdiff1d(const Call& call) {
  if (!is_object(call, 0) || !is_object(call, 1)) return Outcome::failed;
  object(call, 0);
  object(call, 0);
  return Outcome::failed;
}

}  // namespace arrayfold
