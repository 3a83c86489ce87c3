// kernel/wide_text.hpp: 16-bit text as UTF-8

#pragma once

#include <string_view>

namespace hvm::kernel {

/// The UTF-8 form of `text`, with a terminator behind it. A surrogate without its partner is written as it is, in
/// three bytes, so that no two texts share a form. It lasts until the eighth call after this one; empty when memory is
/// missing.
std::string_view narrowed(std::u16string_view text) noexcept;

}  // namespace hvm::kernel
