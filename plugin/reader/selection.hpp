// reader/selection.hpp: what selectors choose from a table

#pragma once

#include <xtensor/xstorage.hpp>

#include "host/host_operations.hpp"

namespace arrayfold {

/// A selector of one level: a key, or the two ends of a range.
struct SelectorPair {
  HostValue* first = nullptr;
  HostValue* second = nullptr;
};
using SelectorPairs = xt::svector<SelectorPair, 4>;

/// The table that a value holds. Throws invalid_array_object when it holds none.
HostHash* table_in(const HostValue* value);

/// Makes `result` what `pairs` choose from `table`, one pair for each level of nesting; without pairs it stays as it
/// is. Throws invalid_array_object when a value on a level below is no table.
void select_entries(HostContext ctx, HostHash* table, const SelectorPairs& pairs, HostValue* result);

}  // namespace arrayfold
