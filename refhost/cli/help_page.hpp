// cli/help_page.hpp: what a page of the documentation says of a function

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hvm {

/// A function as help shows it. All texts are Markdown.
struct HelpPage {
  struct Argument {
    std::string name;
    std::string accepts;
    std::string preset;  // without the argument; empty when it must be given
    std::string meaning;
  };
  std::string usage;    // a form of the call in each line
  std::string summary;  // a sentence
  std::vector<Argument> arguments;
  std::vector<std::string> surprises;  // a paragraph each
  std::string examples;                // lines of a script
  std::string path;
};

/// Where a page such as `docs/functions/xsum.md` lies: in `../share/doc/arrayfold` as seen from the folder of hvm, or
/// in the tree in which hvm was built. Empty when it is nowhere.
std::string page_file(const std::string& page);

/// What stands in front of the path of a page in messages: the folder in which the pages are installed, with its slash.
/// Empty where they are not: a path is then that of the sources.
std::string pages_folder();

/// Reads a page; no value when it is not there, or not in the form of a page.
std::optional<HelpPage> read_page(const std::string& page);

/// The page as text for a terminal of this width, without marks.
std::string shown_page(const HelpPage& page, std::size_t width);

/// `text` without the marks of Markdown, in lines that fit into `width` and begin with `indent` blanks.
std::string wrapped(const std::string& text, std::size_t indent, std::size_t width);

/// Lines with two blanks before each.
std::string indented(std::string_view lines);

}  // namespace hvm
