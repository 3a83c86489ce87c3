// description/pattern.hpp: regular expressions

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace hvm::description {

/// What an expression has found: the whole, and from 1 on the groups. A group that took no part is empty.
using Match = std::vector<std::string>;

/// An extended regular expression of POSIX. The C library, which matches it, knows `\w` and `\b`, too. Of the matches
/// that begin first, the longest counts. (The templates of `std::regex` take longer to compile than all else here.)
class Pattern {
 public:
  /// Throws std::invalid_argument if the expression is wrong.
  explicit Pattern(const std::string& expression);

  /// The match of the whole text.
  std::optional<Match> match(const std::string& text) const;
  /// The matches inside the text, in their order.
  std::vector<Match> matches_in(const std::string& text) const;

 private:
  class Expression;
  std::shared_ptr<const Expression> expression_;
};

}  // namespace hvm::description
