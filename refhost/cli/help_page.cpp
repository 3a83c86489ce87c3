// cli/help_page.cpp: what a page of the documentation says of a function

#include "cli/help_page.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "description/page.hpp"
#include "script/library/script_file.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t largest_page = std::uintmax_t{1} << 20;

/// Without the marks for code and emphasis; of a link its words.
std::string plain(std::string_view text) {
  std::string words;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t middle = text[i] == '[' ? text.find("](", i) : std::string_view::npos;
    const bool is_link = middle != std::string_view::npos && text.find('[', i + 1) > middle;
    if (is_link) {
      words += plain(text.substr(i + 1, middle - i - 1));
      i = std::min(text.find(')', middle), text.size() - 1);
    } else if (text.substr(i, 2) == "**") {
      ++i;
    } else if (text[i] != '`') {
      words += text[i];
    }
  }
  return words;
}

std::string code_in(const description::Page& page, const std::string& section) {
  std::string code;
  for (const description::Line& line : code_of(page.section(section))) code += line.text + "\n";
  return code;
}

HelpPage help_of(const description::Page& page) {
  HelpPage help;
  help.usage = code_in(page, "Synopsis");
  help.summary = page.summary;
  for (const description::Row& row :
       table_of(page, page.section("Arguments"), {"Name", "Accepts", "Default", "Meaning"}))
    help.arguments.push_back({row.cells[0], row.cells[1], row.cells[2], row.cells[3]});
  for (description::Line& paragraph : paragraphs_of(page.section("Result")))
    if (paragraph.text.rfind("**Surprise: ", 0) == 0) help.surprises.push_back(std::move(paragraph.text));
  help.examples = code_in(page, "Examples");
  return help;
}

}  // namespace

std::string page_file(const std::string& page) {
  std::error_code error;
  const fs::path home = program_folder();
  for (const char* root : {HVM_WAY_TO_DOCUMENTS, "../../.."}) {
    const fs::path file = (home / root / page).lexically_normal();
    if (fs::is_regular_file(file, error)) return file.string();
  }
  return {};
}

std::string pages_folder() {
  std::error_code error;
  const fs::path folder = (fs::path(program_folder()) / HVM_WAY_TO_DOCUMENTS / "").lexically_normal();
  return fs::is_directory(folder / "docs", error) ? folder.string() : std::string();
}

std::optional<HelpPage> read_page(const std::string& page) {
  const std::string path = page_file(page);
  std::error_code error;
  if (path.empty() || fs::file_size(path, error) > largest_page || error) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  try {
    HelpPage help = help_of(description::read_page(path, {std::istreambuf_iterator<char>(file), {}}));
    help.path = path;
    return help;
  } catch (const description::PageFault&) {
    return std::nullopt;
  }
}

std::string wrapped(const std::string& text, std::size_t indent, std::size_t width) {
  std::istringstream words(plain(text));
  const std::string front(indent, ' ');
  std::string lines;
  std::size_t used = 0;
  for (std::string word; words >> word;) {
    const std::size_t length = character_count(std::string_view(word));
    const bool fits = used > 0 && used + 1 + length <= width;
    if (used > 0 && !fits) lines += '\n';
    used = fits ? used + 1 + length : indent + length;
    lines += (fits ? " " : front) + word;
  }
  return lines.empty() ? lines : lines + "\n";
}

std::string indented(std::string_view lines) {
  std::string text;
  while (!lines.empty()) {
    const std::string_view line = lines.substr(0, lines.find('\n'));
    text += fmt::format("  {}\n", line);
    lines.remove_prefix(std::min(lines.size(), line.size() + 1));
  }
  return text;
}

std::string shown_page(const HelpPage& page, std::size_t width) {
  std::string text = indented(page.usage) + wrapped(page.summary, 0, width);
  if (!page.arguments.empty()) text += "\n";
  for (const HelpPage::Argument& argument : page.arguments) {
    const std::string preset = argument.preset.empty() ? "" : fmt::format("; without it {}", argument.preset);
    text += wrapped(fmt::format("{}: {} ({}{})", argument.name, argument.meaning, argument.accepts, preset), 2, width);
  }
  for (const std::string& surprise : page.surprises) text += "\n" + wrapped(surprise, 0, width);
  if (!page.examples.empty()) text += "\n" + indented(page.examples);
  return text + (page.path.empty() ? "" : fmt::format("\npage: {}\n", page.path));
}

}  // namespace hvm
