// support/plain_operators.hpp: what a slow reading of the rules of the operators gives

#pragma once

#include <optional>

#include "host/host_value.hpp"
#include "support/test_array.hpp"

namespace arrayfold::test {

/// The extents of a result of operands with these; nothing where they do not broadcast.
std::optional<Extents> broadcast(const Extents& left, const Extents& right);

/// The array as it stands in a broadcast operation: its elements under these extents, repeated.
TestArray spread(const TestArray& array, const Extents& extents);

/// The operator's formula, an element at a time. Both arrays are of one kind, and their shapes broadcast.
TestArray plain_result(Opcode opcode, const TestArray& left, const TestArray& right);

}  // namespace arrayfold::test
