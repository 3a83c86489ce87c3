// cli/reports.hpp: reports of errors and warnings at the error output

#pragma once

#include <string_view>

namespace hvm {

/// Writes the report of an error or a warning, and its story behind it, to the error output: at a terminal its first
/// word, `error:` or `warning:`, in colour. Without memory for colours it comes without.
void put_report(std::string_view report, std::string_view story) noexcept;

}  // namespace hvm
