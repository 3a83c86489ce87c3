// script/data/json_limits.hpp: how deep JSON may nest

#pragma once

namespace hvm {

/// Lists and objects inside one another, when JSON is read and when it is written.
inline constexpr int deepest_json = 10000;

}  // namespace hvm
