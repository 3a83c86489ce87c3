// description/manual.cpp: Markdown as the text of a manual page

#include "description/manual.hpp"

#include <algorithm>
#include <cctype>
#include <map>

namespace hvm::description {
namespace {

/// A character of code. Those that printers turn into other ones, such as the minus, are asked for by their names.
std::string literal(char c) {
  static const std::map<char, std::string> names = {{'\\', "\\e"},  {'-', "\\-"},   {'\'', "\\(aq"},
                                                    {'`', "\\(ga"}, {'^', "\\(ha"}, {'~', "\\(ti"}};
  const auto found = names.find(c);
  return found == names.end() ? std::string(1, c) : found->second;
}

/// A line that does not begin a request.
std::string protected_line(const std::string& line) {
  return starts_with(line, ".") || starts_with(line, "'") ? "\\&" + line : line;
}

/// A walk through a line of Markdown that writes its roff.
class InlineWriter {
 public:
  explicit InlineWriter(const std::string& markdown) : markdown_(markdown) {}

  std::string written() {
    while (place_ < markdown_.size()) step();
    return protected_line(roff_);
  }

 private:
  void step() {
    const char c = markdown_[place_];
    if (c == '`') return code();
    if (markdown_.compare(place_, 2, "**") == 0) {
      is_strong_ = !is_strong_;
      roff_ += is_strong_ ? "\\fB" : "\\fR";
      place_ += 2;
    } else if (c == '[' && link()) {
      return;
    } else {
      roff_ += c == '\\' ? "\\e" : std::string(1, c);
      ++place_;
    }
  }

  /// Code ends at as many backticks as begin it. A blank beside them belongs to them.
  void code() {
    const std::size_t first = markdown_.find_first_not_of('`', place_);
    const std::string ticks = markdown_.substr(place_, std::min(first, markdown_.size()) - place_);
    const std::size_t end = markdown_.find(ticks, first);
    std::string inside = markdown_.substr(place_ + ticks.size(), end - place_ - ticks.size());
    if (ticks.size() > 1) inside = trimmed(inside);
    roff_ += "\\fB" + literal_roff(inside) + (is_strong_ ? "" : "\\fR");
    place_ = end == std::string::npos ? markdown_.size() : end + ticks.size();
  }

  /// Writes the words of a link; false when the bracket begins none.
  bool link() {
    const std::size_t end = markdown_.find("](", place_);
    const std::size_t close = end == std::string::npos ? end : markdown_.find(')', end);
    const bool is_link = close != std::string::npos && markdown_.find('[', place_ + 1) > end;
    if (!is_link) return false;
    roff_ += InlineWriter(markdown_.substr(place_ + 1, end - place_ - 1)).written();
    place_ = close + 1;
    return true;
  }

  const std::string& markdown_;
  std::size_t place_ = 0;
  std::string roff_;
  bool is_strong_ = false;
};

/// The sign of an item, `-` or `1.`, where a line begins one.
std::string item_sign(const std::string& text) {
  if (starts_with(text, "- ")) return "-";
  const std::size_t digits = text.find_first_not_of("0123456789");
  const bool is_numbered = digits != 0 && digits != std::string::npos && text.compare(digits, 2, ". ") == 0;
  return is_numbered ? text.substr(0, digits + 1) : "";
}

/// A walk over the lines of a document that writes their roff, a block at a time.
class BlockWriter {
 public:
  explicit BlockWriter(const std::vector<Line>& lines) : lines_(lines) {}

  std::string written() {
    while (place_ < lines_.size()) block();
    return roff_;
  }

 private:
  const std::string& text() const { return lines_[place_].text; }
  bool is_at_end() const { return place_ == lines_.size(); }
  static bool is_code(const std::string& text) { return starts_with(text, "    "); }
  static bool is_fence(const std::string& text) { return starts_with(text, "```"); }
  static bool is_row(const std::string& text) { return starts_with(text, "|"); }

  void block() {
    if (trimmed(text()).empty())
      ++place_;
    else if (is_fence(text()))
      fenced();
    else if (is_code(text()))
      indented();
    else if (is_row(text()))
      table();
    else if (starts_with(text(), "### "))
      roff_ += ".SS " + inline_roff(lines_[place_++].text.substr(4)) + "\n";
    else if (!item_sign(text()).empty())
      item();
    else
      roff_ += ".PP\n" + inline_roff(paragraph("")) + "\n";
  }

  /// The text up to the end of the paragraph, without the sign that it begins with.
  std::string paragraph(const std::string& sign) {
    std::string joined = trimmed(lines_[place_++].text.substr(sign.size()));
    while (!is_at_end() && !trimmed(text()).empty() && !is_fence(text()) && !is_row(text()) &&
           item_sign(text()).empty())
      joined += " " + trimmed(lines_[place_++].text);
    return joined;
  }

  void item() {
    const std::string sign = item_sign(text());
    roff_ += sign == "-" ? ".IP \\(bu 2\n" : ".IP " + sign + " 3\n";
    roff_ += inline_roff(paragraph(sign)) + "\n";
  }

  void code(const std::vector<std::string>& code_lines) {
    roff_ += ".PP\n.RS 4\n.EX\n";
    for (const std::string& line : code_lines) roff_ += literal_roff(line) + "\n";
    roff_ += ".EE\n.RE\n";
  }

  void fenced() {
    std::vector<std::string> code_lines;
    for (++place_; !is_at_end() && !is_fence(text()); ++place_) code_lines.push_back(text());
    if (!is_at_end()) ++place_;
    code(code_lines);
  }

  void indented() {
    std::vector<std::string> code_lines;
    for (; !is_at_end() && is_code(text()); ++place_) code_lines.push_back(text().substr(4));
    code(code_lines);
  }

  void table() {
    const Row head = row_of(lines_[place_++]);
    if (!is_at_end() && is_row(text())) ++place_;  // the line of dashes
    for (; !is_at_end() && is_row(text()); ++place_) entry(head, row_of(lines_[place_]));
  }

  void entry(const Row& head, const Row& row) {
    roff_ += ".TP\n" + inline_roff(row.cells[0]) + "\n";
    std::string body;
    for (std::size_t i = 1; i < std::min(row.cells.size(), head.cells.size()); ++i) {
      if (row.cells[i].empty()) continue;
      if (!body.empty()) body += ".br\n";
      const bool has_head = head.cells.size() > 2 && !head.cells[i].empty();
      body += inline_roff((has_head ? head.cells[i] + ": " : "") + row.cells[i]) + "\n";
    }
    roff_ += body.empty() ? "\\&\n" : body;
  }

  const std::vector<Line>& lines_;
  std::size_t place_ = 0;
  std::string roff_;
};

}  // namespace

std::string literal_roff(const std::string& code) {
  std::string roff;
  for (const char c : code) roff += literal(c);
  return protected_line(roff);
}

std::string inline_roff(const std::string& markdown) { return InlineWriter(markdown).written(); }

std::string block_roff(const std::vector<Line>& lines) { return BlockWriter(lines).written(); }

std::string head_roff(const std::string& name, int section, const std::string& version, const std::string& manual) {
  std::string capitals = name;
  std::transform(capitals.begin(), capitals.end(), capitals.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  // The first line tells that the text is UTF-8, the last ones that lines are not stretched and words not divided.
  return "'\\\" -*- coding: UTF-8 -*-\n.TH " + capitals + " " + std::to_string(section) + " \"\" \"arrayfold " +
         version + "\" \"" + manual + "\"\n.ad l\n.nr HY 0\n.nh\n";
}

}  // namespace hvm::description
