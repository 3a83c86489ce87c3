// script/library/truth.hpp: whether a condition holds

#pragma once

#include "kernel/kernel.hpp"

namespace hvm {

/// Whether a condition holds: a number that is not zero does, nil does not. Throws `Failure` for everything else.
bool truth(const Value& value);

}  // namespace hvm
