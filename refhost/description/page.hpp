// description/page.hpp: a page in Markdown as title, summary, sections and tables, each with its line

#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace hvm::description {

/// What is wrong with a page, as `FILE:LINE: words`.
class PageFault : public std::runtime_error {
 public:
  PageFault(const std::string& file, int line, const std::string& words);
};

/// Whether `text` begins with `start`.
bool starts_with(const std::string& text, const std::string& start);

struct Line {
  std::string text;
  int number;  // from 1
};

struct Section {
  std::string title;
  int line;  // of the title
  std::vector<Line> lines;
};

struct Row {
  std::vector<std::string> cells;
  int line;
};

struct Page {
  std::string file;  // as faults name it
  std::string title;
  std::string summary;
  std::vector<Section> sections;

  /// Throws `PageFault` at the first line when there is no such section.
  const Section& section(const std::string& title_of_section) const;
  PageFault fault(int line, const std::string& words) const { return {file, line, words}; }
};

/// Any page: what stands between its title and its sections, and these.
struct Document {
  std::string file;
  std::vector<Line> beginning;
  std::vector<Section> sections;

  /// Throws `PageFault` when there is no such section.
  const Section& section(const std::string& title) const;
};

/// Reads the text of any page.
Document read_document(const std::string& file, const std::string& text);

/// The cells of a line of a table, between its bars. A bar in backticks belongs to its cell.
Row row_of(const Line& line);

/// Reads the text of a page. Throws `PageFault` when it does not begin with a title and a summary, or when its sections
/// are not those of a function's page, in their order.
Page read_page(const std::string& file, const std::string& text);

/// The rows of the section's table, without its head. Throws `PageFault` when there is no table with these columns, or
/// when a row has another number of cells.
std::vector<Row> table_of(const Page& page, const Section& section, const std::vector<std::string>& columns);

/// The lines of the section's first block of code.
std::vector<Line> code_of(const Section& section);

/// The paragraphs of a section, each as one line: text between blank lines that is no table, list or block of code.
std::vector<Line> paragraphs_of(const Section& section);

/// The text without blanks at both ends.
std::string trimmed(const std::string& text);

}  // namespace hvm::description
