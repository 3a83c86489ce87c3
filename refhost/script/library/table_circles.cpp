// script/library/table_circles.cpp: the check that no table contains itself

#include "script/library/table_circles.hpp"

#include <unordered_set>
#include <vector>

namespace hvm {

bool holds_table(const Value& value, const HostHash* table) {
  const HostHash* outermost = table_of(value.record());
  if (!outermost) return false;
  std::unordered_set<const HostHash*> seen{outermost};
  std::vector<const HostHash*> waiting{outermost};
  while (!waiting.empty()) {
    const HostHash* current = waiting.back();
    waiting.pop_back();
    if (current == table) return true;
    TableWalk walk(current);
    while (const Entry entry = walk.next()) {
      const HostHash* inner = table_of(*entry.value);
      if (inner && seen.insert(inner).second) waiting.push_back(inner);
    }
  }
  return false;
}

}  // namespace hvm
