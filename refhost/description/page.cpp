// description/page.cpp: a page in Markdown as title, summary, sections and tables, each with its line

#include "description/page.hpp"

#include <algorithm>
#include <sstream>

namespace hvm::description {
namespace {

const std::vector<std::string> section_titles = {"Synopsis", "Examples", "Arguments", "Result", "Failures", "See also"};

std::vector<Line> lines_of(const std::string& text) {
  std::vector<Line> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back({line, static_cast<int>(lines.size()) + 1});
  return lines;
}

std::string joined(const std::vector<std::string>& parts, const std::string& between) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : between) + part;
  return text;
}

bool is_table_line(const std::string& line) { return starts_with(line, "|"); }

bool is_rule(const Row& row) {
  return std::all_of(row.cells.begin(), row.cells.end(), [](const std::string& cell) {
    return !cell.empty() && cell.find_first_not_of('-') == std::string::npos;
  });
}

const Section& section_of(const std::string& file, const std::vector<Section>& sections, const std::string& title) {
  for (const Section& one : sections)
    if (one.title == title) return one;
  throw PageFault(file, 1, "the section '" + title + "' is missing");
}

void check_sections(const Page& page) {
  std::vector<std::string> titles;
  for (const Section& section : page.sections) titles.push_back(section.title);
  for (std::size_t i = 0; i < std::max(titles.size(), section_titles.size()); ++i) {
    if (i >= section_titles.size())
      throw page.fault(page.sections[i].line, "the section '" + titles[i] + "' is one too many");
    if (i >= titles.size()) throw page.fault(1, "the section '" + section_titles[i] + "' is missing");
    if (titles[i] != section_titles[i])
      throw page.fault(page.sections[i].line, "the section '" + titles[i] + "' stands where '" + section_titles[i] +
                                                  "' belongs; the sections are " + joined(section_titles, ", "));
  }
}

/// Does the line begin an item of a list? In a paragraph a number begins one only when it is 1, as Markdown has it.
bool is_item(const std::string& text, bool in_paragraph) {
  const std::size_t digits = text.find_first_not_of("0123456789");
  const bool is_numbered = digits != 0 && digits != std::string::npos && text.compare(digits, 2, ". ") == 0;
  return starts_with(text, "- ") || (is_numbered && (!in_paragraph || starts_with(text, "1. ")));
}

}  // namespace

bool starts_with(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

PageFault::PageFault(const std::string& file, int line, const std::string& words)
    : std::runtime_error(file + ":" + std::to_string(line) + ": " + words) {}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

Row row_of(const Line& line) {
  Row row{{}, line.number};
  std::string cell;
  bool in_code = false;
  for (const char c : line.text.substr(1)) {
    if (c == '`') in_code = !in_code;
    if (c == '|' && !in_code) {
      row.cells.push_back(trimmed(cell));
      cell.clear();
    } else {
      cell += c;
    }
  }
  if (!trimmed(cell).empty()) row.cells.push_back(trimmed(cell));
  return row;
}

const Section& Page::section(const std::string& title_of_section) const {
  return section_of(file, sections, title_of_section);
}

const Section& Document::section(const std::string& title) const { return section_of(file, sections, title); }

Document read_document(const std::string& file, const std::string& text) {
  Document document{file, {}, {}};
  bool in_code = false;
  for (const Line& line : lines_of(text)) {
    if (starts_with(line.text, "```")) in_code = !in_code;
    if (!in_code && starts_with(line.text, "## "))
      document.sections.push_back({trimmed(line.text.substr(3)), line.number, {}});
    else if (!document.sections.empty())
      document.sections.back().lines.push_back(line);
    else if (in_code || !starts_with(line.text, "# "))
      document.beginning.push_back(line);
  }
  return document;
}

Page read_page(const std::string& file, const std::string& text) {
  const std::vector<Line> lines = lines_of(text);
  Page page{file, "", "", {}};
  if (lines.size() < 3 || !starts_with(lines[0].text, "# ") || trimmed(lines[0].text.substr(2)).empty())
    throw page.fault(1, "a page begins with '# ' and its title");
  page.title = trimmed(lines[0].text.substr(2));
  page.summary = trimmed(lines[2].text);
  if (page.summary.empty() || page.summary.back() != '.')
    throw page.fault(3, "the third line is one sentence that says what the function does");
  page.sections = read_document(file, text).sections;
  check_sections(page);
  return page;
}

std::vector<Row> table_of(const Page& page, const Section& section, const std::vector<std::string>& columns) {
  std::vector<Row> rows;
  for (const Line& line : section.lines) {
    if (is_table_line(line.text))
      rows.push_back(row_of(line));
    else if (!rows.empty())
      break;
  }
  const std::string head = "'" + joined(columns, " | ") + "'";
  if (rows.empty()) throw page.fault(section.line, "the section has no table with the columns " + head);
  if (rows[0].cells != columns) throw page.fault(rows[0].line, "the columns of the table are not " + head);
  if (rows.size() < 2 || !is_rule(rows[1])) throw page.fault(rows[0].line, "no line of dashes follows the columns");
  rows.erase(rows.begin(), rows.begin() + 2);
  for (const Row& row : rows)
    if (row.cells.size() != columns.size())
      throw page.fault(row.line, "the row has " + std::to_string(row.cells.size()) + " cells, not " +
                                     std::to_string(columns.size()) + ": " + head);
  return rows;
}

std::vector<Line> code_of(const Section& section) {
  std::vector<Line> code;
  bool in_code = false;
  for (const Line& line : section.lines) {
    if (starts_with(line.text, "```")) {
      if (in_code) break;
      in_code = true;
    } else if (in_code) {
      code.push_back(line);
    }
  }
  return code;
}

std::vector<Line> paragraphs_of(const Section& section) {
  std::vector<Line> paragraphs;
  bool is_open = false, in_code = false;
  for (const Line& line : section.lines) {
    const std::string text = trimmed(line.text);
    if (starts_with(text, "```")) in_code = !in_code;
    const bool is_indented = starts_with(line.text, "  ");
    if (text.empty() || in_code || starts_with(text, "```") || is_table_line(text) || is_item(text, is_open) ||
        is_indented) {
      is_open = false;
      continue;
    }
    if (is_open)
      paragraphs.back().text += " " + text;
    else
      paragraphs.push_back({text, line.number});
    is_open = true;
  }
  return paragraphs;
}

}  // namespace hvm::description
