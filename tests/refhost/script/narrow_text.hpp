// refhost/script/narrow_text.hpp: UTF-16 as UTF-8, for tests

#pragma once

#include <string>
#include <string_view>

#include "script/syntax/unicode.hpp"

namespace hvm::testing {

inline std::string narrow_text(std::u16string_view text) {
  std::string narrow;
  while (!text.empty()) append_utf8(narrow, take_character(text));
  return narrow;
}

}  // namespace hvm::testing
