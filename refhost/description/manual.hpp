// description/manual.hpp: Markdown as the text of a manual page

#pragma once

#include <string>
#include <vector>

#include "description/page.hpp"

namespace hvm::description {

/// A paragraph of Markdown on one line of roff: code and strong text are bold, links are their words.
std::string inline_roff(const std::string& markdown);

/// Code as it stands, without the roff of its font.
std::string literal_roff(const std::string& code);

/// Paragraphs, lists, tables, blocks of code and titles of the third level. Each row of a table is an entry under its
/// first cell. With more than two columns, each further cell has the head of its column before it.
std::string block_roff(const std::vector<Line>& lines);

/// The first lines of a page: its name in capitals, the section of the manual, and what belongs to its foot.
std::string head_roff(const std::string& name, int section, const std::string& version, const std::string& manual);

}  // namespace hvm::description
