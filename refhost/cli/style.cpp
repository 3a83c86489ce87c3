// cli/style.cpp: how text looks at a terminal

#include "cli/style.hpp"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace hvm {

bool is_capable_terminal(int descriptor) {
  const char* type = std::getenv("TERM");
  return type && *type != '\0' && std::string_view(type) != "dumb" && isatty(descriptor) == 1;
}

Style Style::of_stream(int descriptor) {
  const char* without = std::getenv("NO_COLOR");
  const bool is_switched_off = without && *without != '\0';
  return Style(is_capable_terminal(descriptor) && !is_switched_off);
}

std::string Style::report(const std::string& text) const {
  struct Word {
    const char* text;
    const char* code;
  };
  for (const Word& word : {Word{": error: ", "1;31"}, Word{": warning: ", "1;33"}}) {
    const std::string_view between(word.text);
    const std::size_t at = text.find(between);
    if (at == std::string::npos || at > text.find('\n')) continue;
    const std::size_t begin = at + 2;
    const std::size_t length = between.size() - 3;
    return text.substr(0, begin) + in_form(word.code, text.substr(begin, length)) + text.substr(begin + length);
  }
  return text;
}

}  // namespace hvm
