// cli/names.hpp: the characters of names

#pragma once

namespace hvm {

/// Whether a character may stand in a name of the language.
constexpr bool is_in_name(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

}  // namespace hvm
