// cli/help_page.cpp: what a page of the documentation says of a function

#include "cli/help_page.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t largest_page = std::uintmax_t{1} << 20;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

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

/// The cells of a row of a table; none where the line is no row.
std::vector<std::string> cells_of(const std::string& line) {
  std::vector<std::string> cells;
  if (line.empty() || line.front() != '|') return cells;
  std::string cell;
  for (std::size_t i = 1; i < line.size(); ++i) {
    const bool is_escaped = line[i] == '\\' && i + 1 < line.size();
    if (is_escaped) ++i;
    if (is_escaped || line[i] != '|') {
      cell += line[i];
      continue;
    }
    cells.emplace_back(trimmed(cell));
    cell.clear();
  }
  return cells;
}

/// Reads the sections of a page.
class PageReader {
 public:
  explicit PageReader(const std::string& text) : lines_(lines_of(text)) {}

  HelpPage page() {
    std::string section;
    for (at_ = 0; at_ < lines_.size(); ++at_) {
      const std::string& line = lines_[at_];
      if (line.rfind("## ", 0) == 0) section = line.substr(3);
      if (section.empty() && page_.summary.empty()) page_.summary = paragraph();
      if (section == "Synopsis" && page_.usage.empty()) page_.usage = fenced();
      if (section == "Arguments") take_argument(line);
      if (section == "Result" && line.rfind("**Surprise: ", 0) == 0) page_.surprises.push_back(paragraph());
      if (section == "Examples" && page_.examples.empty()) page_.examples = fenced();
    }
    return std::move(page_);
  }

 private:
  /// The paragraph that begins here; empty at a heading or a blank line.
  std::string paragraph() {
    std::string text;
    for (; at_ < lines_.size() && !trimmed(lines_[at_]).empty() && lines_[at_].front() != '#'; ++at_)
      text += (text.empty() ? "" : " ") + lines_[at_];
    return text;
  }

  /// The lines of the block of code that begins here; none where no one does.
  std::string fenced() {
    if (lines_[at_].rfind("```", 0) != 0) return {};
    std::string text;
    for (++at_; at_ < lines_.size() && lines_[at_].rfind("```", 0) != 0; ++at_) text += lines_[at_] + "\n";
    return text;
  }

  void take_argument(const std::string& line) {
    const std::vector<std::string> cells = cells_of(line);
    if (cells.size() < 4 || cells[0].rfind('`', 0) != 0) return;
    page_.arguments.push_back({cells[0], cells[1], cells[2], cells[3]});
  }

  std::vector<std::string> lines_;
  std::size_t at_ = 0;
  HelpPage page_;
};

}  // namespace

std::string page_file(const std::string& page) {
  std::error_code error;
  const fs::path home = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const char* root : {HVM_WAY_TO_DOCUMENTS, "../../.."}) {
    const fs::path file = (home / root / page).lexically_normal();
    if (fs::is_regular_file(file, error)) return file.string();
  }
  return {};
}

std::optional<HelpPage> read_page(const std::string& page) {
  const std::string path = page_file(page);
  std::error_code error;
  if (path.empty() || fs::file_size(path, error) > largest_page || error) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  HelpPage read = PageReader({std::istreambuf_iterator<char>(file), {}}).page();
  read.path = path;
  return read;
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

std::string shown_page(const HelpPage& page, std::size_t width) {
  std::string text;
  for (const std::string& form : lines_of(page.usage)) text += fmt::format("  {}\n", form);
  text += wrapped(page.summary, 0, width);
  if (!page.arguments.empty()) text += "\n";
  for (const HelpPage::Argument& argument : page.arguments) {
    const std::string preset = argument.preset.empty() ? "" : fmt::format("; without it {}", argument.preset);
    text += wrapped(fmt::format("{}: {} ({}{})", argument.name, argument.meaning, argument.accepts, preset), 2, width);
  }
  for (const std::string& surprise : page.surprises) text += "\n" + wrapped(surprise, 0, width);
  if (!page.examples.empty()) text += "\n";
  for (const std::string& line : lines_of(page.examples)) text += fmt::format("  {}\n", line);
  return text + (page.path.empty() ? "" : fmt::format("\npage: {}\n", page.path));
}

}  // namespace hvm
