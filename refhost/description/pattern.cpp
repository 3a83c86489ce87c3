// description/pattern.cpp: regular expressions, whose templates are compiled once

#include "description/pattern.hpp"

#include <regex>

namespace hvm::description {

struct Pattern::Expression {
  std::regex regex;
};

namespace {

Match groups_of(const std::smatch& found) { return {found.begin(), found.end()}; }

}  // namespace

Pattern::Pattern(const std::string& expression)
    : expression_(std::make_shared<const Expression>(Expression{std::regex(expression)})) {}

std::optional<Match> Pattern::match(const std::string& text) const {
  std::smatch found;
  if (!std::regex_match(text, found, expression_->regex)) return std::nullopt;
  return groups_of(found);
}

std::vector<Match> Pattern::matches_in(const std::string& text) const {
  std::vector<Match> matches;
  for (std::sregex_iterator found(text.begin(), text.end(), expression_->regex), end; found != end; ++found)
    matches.push_back(groups_of(*found));
  return matches;
}

}  // namespace hvm::description
