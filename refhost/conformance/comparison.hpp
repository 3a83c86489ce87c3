// conformance/comparison.hpp: how the record of a call differs from the one in the table

#pragma once

#include <string>
#include <vector>

#include "conformance/call_record.hpp"

namespace hvm::conformance {

/// Sentences that say how `got` differs from `expected`; none when they agree. Real numbers agree when they are the
/// same, or when they differ by at most `tolerance`, relative to the larger one where that is beyond 1. An infinite
/// tolerance lets any real numbers agree.
std::vector<std::string> differences(const Json& expected, const Json& got, double tolerance);

}  // namespace hvm::conformance
