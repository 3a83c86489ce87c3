// description/write_manual.cpp: the program of the build that writes the manual pages
//
// Usage: write_manual DOCS FOLDER
//
// It makes hvm.1 and hvm.7 of the page about the language, and arrayfold.7 of the pages about the functions. The same
// pages give the same bytes.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <utility>
#include <vector>

#include "description/manual.hpp"
#include "description/pattern.hpp"

namespace hvm::description {
namespace {

/// Parts of the page about the language that tell how hvm is run.
const std::vector<std::string> sections_about_hvm = {"Running hvm", "Scripts as tests"};

std::string below(const std::string& folder, const std::string& name) { return std::filesystem::path(folder) / name; }

std::string contents(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw PageFault(path, 1, "the page is missing");
  return text.str();
}

Document document(const std::string& path) { return read_document(path, contents(path)); }

std::string section_roff(const Section& section) {
  return ".SH " + inline_roff(section.title) + "\n" + block_roff(section.lines);
}

std::string hvm_1(const std::string& docs) {
  const Document page = document(below(docs, "language.md"));
  std::string roff = head_roff("hvm", 1, MODULE_VERSION, "User commands");
  roff += ".SH NAME\nhvm \\- runs scripts with numeric arrays\n";
  roff += ".SH SYNOPSIS\n.B hvm\n[\\fIOPTIONS\\fR] [\\fISCRIPT\\fR [\\fIARGUMENTS\\fR]]\n";
  for (const std::string& title : sections_about_hvm) roff += section_roff(page.section(title));
  return roff + ".SH SEE ALSO\n.BR hvm (7),\n.BR arrayfold (7)\n";
}

std::string hvm_7(const std::string& docs) {
  const Document page = document(below(docs, "language.md"));
  std::string roff = head_roff("hvm", 7, MODULE_VERSION, "Languages");
  roff += ".SH NAME\nhvm \\- the script language of hvm\n.SH DESCRIPTION\n" + block_roff(page.beginning);
  for (const Section& section : page.sections) {
    const auto& elsewhere = sections_about_hvm;
    if (std::find(elsewhere.begin(), elsewhere.end(), section.title) == elsewhere.end()) roff += section_roff(section);
  }
  return roff + ".SH SEE ALSO\n.BR hvm (1),\n.BR arrayfold (7)\n";
}

/// A function's entry: how it is called, what it does, what it gives, and what surprises.
std::string function_roff(const Page& page) {
  std::string roff = ".TP\n";
  for (const Line& form : code_of(page.section("Synopsis"))) {
    if (roff != ".TP\n") roff += ".TQ\n";
    roff += "\\fB" + literal_roff(form.text) + "\\fR\n";
  }
  roff += inline_roff(page.summary) + "\n";
  std::vector<Line> result = paragraphs_of(page.section("Result"));
  // A colon leads to a list or a table, which is left out here.
  if (!result.empty() && result.front().text.back() == ':') result.front().text.back() = '.';
  for (const Line& paragraph : result) {
    const bool is_surprise = paragraph.text.compare(0, 11, "**Surprise:") == 0;
    if (is_surprise || &paragraph == &result.front()) roff += ".IP\n" + inline_roff(paragraph.text) + "\n";
  }
  return roff;
}

/// The pages of functions, methods and operators to which a line has links, such as `[xsum](xsum.md)`.
std::vector<std::string> linked_pages(const std::string& line) {
  static const Pattern link("\\]\\((x\\w+\\.md|method-\\w+\\.md|operator-\\w+\\.md)\\)");
  std::vector<std::string> pages;
  for (const Match& found : link.matches_in(line)) pages.push_back(found[1]);
  return pages;
}

/// A section of the index: its words, and an entry for each page that its table names.
std::string family_roff(const std::string& folder, const Section& section) {
  std::vector<Line> words;
  std::string entries;
  for (const Line& line : section.lines) {
    if (line.text.compare(0, 1, "|") != 0) {
      words.push_back(line);
      continue;
    }
    for (const std::string& name : linked_pages(line.text)) {
      const std::string path = below(folder, name);
      entries += function_roff(read_page(path, contents(path)));
    }
  }
  return entries.empty() ? "" : ".SH " + inline_roff(section.title) + "\n" + block_roff(words) + entries;
}

std::string arrayfold_7(const std::string& docs) {
  const std::string folder = below(docs, "functions");
  const Document index = document(below(folder, "README.md"));
  std::string roff = head_roff("arrayfold", 7, MODULE_VERSION, "Libraries of functions");
  roff += ".SH NAME\narrayfold \\- functions of numeric arrays for scripts of hvm\n";
  roff += ".SH DESCRIPTION\n";
  roff +=
      "The functions, methods and operators by family: how each is called, what it does, what it gives, and what "
      "surprises.\n";
  for (const Section& section : index.sections) roff += family_roff(folder, section);
  return roff + ".SH SEE ALSO\n.BR hvm (1),\n.BR hvm (7)\n";
}

int write_manual(const std::string& docs, const std::string& folder) {
  const std::vector<std::pair<std::string, std::string (*)(const std::string&)>> pages = {
      {"hvm.1", hvm_1}, {"hvm.7", hvm_7}, {"arrayfold.7", arrayfold_7}};
  for (const auto& [name, made] : pages) {
    std::ofstream file(below(folder, name));
    file << made(docs);
    file.close();
    if (file) continue;
    std::cerr << below(folder, name) << ": cannot be written\n";
    return 1;
  }
  return 0;
}

}  // namespace
}  // namespace hvm::description

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: write_manual DOCS FOLDER\n";
    return 2;
  }
  try {
    return hvm::description::write_manual(argv[1], argv[2]);
  } catch (const hvm::description::PageFault& fault) {
    std::cerr << fault.what() << '\n';
    return 1;
  }
}
