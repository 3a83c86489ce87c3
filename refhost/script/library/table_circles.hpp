// script/library/table_circles.hpp: the check that no table contains itself

#pragma once

#include "kernel/kernel.hpp"

namespace hvm {

/// Whether `table` is `value` or lies anywhere in it. Then `value` cannot become an entry of the table.
bool holds_table(const Value& value, const HostHash* table);

}  // namespace hvm
