// cli/listing.cpp: the functions and types of a module, a line for each

#include "cli/listing.hpp"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <string_view>

#include "cli/command_line.hpp"
#include "cli/safe_text.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::size_t gap = 2;
/// Fewer columns say nothing.
constexpr std::size_t shortest_sentence = 10;

bool fits(const std::string& pattern, const ListedName& listed) {
  return fnmatch(pattern.c_str(), listed.name.c_str(), 0) == 0;
}

/// `text` within so many columns of a terminal, with `...` at the end when it is cut.
std::string cut(std::string_view text, std::size_t columns) {
  constexpr std::string_view ellipsis = "...";
  std::size_t width = 0;
  std::size_t fitting = 0;  // the bytes of `text` that fit in front of an ellipsis
  for (std::string_view rest = text; !rest.empty();) {
    width += display_width(take_character(rest));
    if (width + ellipsis.size() <= columns) fitting = text.size() - rest.size();
    if (width > columns) return std::string(text.substr(0, fitting)) + std::string(ellipsis);
  }
  return std::string(text);
}

}  // namespace

std::vector<ListedName> fitting_names(const std::vector<ListedName>& names, const std::vector<std::string>& patterns) {
  if (patterns.empty()) return names;
  for (const std::string& pattern : patterns) {
    if (std::any_of(names.begin(), names.end(), [&](const ListedName& listed) { return fits(pattern, listed); }))
      continue;
    std::vector<std::string_view> candidates(names.size());
    std::transform(names.begin(), names.end(), candidates.begin(),
                   [](const ListedName& listed) { return std::string_view(listed.name); });
    throw UsageError(fmt::format("no function or type of the module matches \"{}\"{}", briefly(pattern),
                                 suggestion(pattern, candidates)));
  }
  std::vector<ListedName> fitting;
  for (const ListedName& listed : names)
    if (std::any_of(patterns.begin(), patterns.end(),
                    [&](const std::string& pattern) { return fits(pattern, listed); }))
      fitting.push_back(listed);
  return fitting;
}

std::string listing(const std::vector<ListedName>& names, std::size_t columns) {
  std::size_t width = 0;
  for (const ListedName& listed : names) width = std::max(width, listed.kind.size() + 1 + listed.name.size());
  width += gap;
  const bool has_room = columns == 0 || columns >= width + shortest_sentence;
  std::string text;
  for (const ListedName& listed : names) {
    const std::string name = listed.kind + " " + listed.name;
    text += name;
    if (!listed.sentence.empty() && has_room)
      text += std::string(width - name.size(), ' ') +
              (columns == 0 ? listed.sentence : cut(listed.sentence, columns - width));
    text += '\n';
  }
  return text;
}

}  // namespace hvm
