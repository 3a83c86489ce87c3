// cli/performed_calls.hpp: whether a statement has called anything before it failed

#pragma once

#include <cstddef>

#include "script/syntax/tree.hpp"

namespace hvm {

/// Whether a statement without blocks may have performed a call before it failed at `place`, an offset in its source.
/// The call of a function that stands around the place has not begun, or has failed itself. A method that fails counts
/// as performed: it may have changed its object before.
bool may_have_called(const Statement& statement, std::size_t place);

}  // namespace hvm
