// description/pattern.hpp: regular expressions, whose templates are compiled once

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace hvm::description {

/// What an expression has found: the whole, and from 1 on the groups. A group that took no part is empty.
using Match = std::vector<std::string>;

/// A regular expression in the grammar of ECMAScript.
class Pattern {
 public:
  /// Throws `std::regex_error` if the expression is wrong.
  explicit Pattern(const std::string& expression);

  /// The match of the whole text.
  std::optional<Match> match(const std::string& text) const;
  /// The matches inside the text, in their order.
  std::vector<Match> matches_in(const std::string& text) const;

 private:
  struct Expression;
  std::shared_ptr<const Expression> expression_;
};

}  // namespace hvm::description
