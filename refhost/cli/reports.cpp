// cli/reports.cpp: reports of errors and warnings at the error output

#include "cli/reports.hpp"

#include <unistd.h>

#include <new>

#include "cli/safe_text.hpp"
#include "cli/streams.hpp"
#include "cli/style.hpp"

namespace hvm {

void put_report(std::string_view report, std::string_view story) noexcept {
  const Style style = Style::of_stream(STDERR_FILENO);
  if (!style.has_colours()) return put_error({report, story});
  try {
    put_error_as_it_is({style.report(safe_text(report)), safe_text(story)});
  } catch (const std::bad_alloc&) {
    put_error({report, story});
  }
}

}  // namespace hvm
