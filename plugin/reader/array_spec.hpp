// reader/array_spec.hpp: what a quotation says about an array

#pragma once

#include <optional>
#include <string>

#include "host/host_operations.hpp"

namespace arrayfold {

struct ArraySpec {
  std::string name;                    // the dtype as written; "@" and "@@..." for forms that name no dtype
  std::int32_t slot = -1;              // frame slot of a variable
  const HostCodeSlot* args = nullptr;  // begins the argument chain
  std::uint32_t frame_base = 0;
  std::string label;  // of a labelled expression; nothing reads it
};

/// Reads the quotation in `value`. Nothing when it is no code, or of no known form.
std::optional<ArraySpec> read_array_spec(HostContext ctx, HostValue* value);

/// Reads the form of a named call, `double(2, n)`, that `link` leads to; nothing for any other form.
std::optional<ArraySpec> read_named_call(const HostCodeSlot& link, std::uint32_t frame_base);

}  // namespace arrayfold
