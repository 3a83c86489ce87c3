// description/pattern.cpp: regular expressions

#include "description/pattern.hpp"

#include <regex.h>

#include <cstddef>
#include <stdexcept>

namespace hvm::description {

class Pattern::Expression {
 public:
  explicit Expression(const std::string& text) {
    if (regcomp(&regex_, text.c_str(), REG_EXTENDED) != 0)
      throw std::invalid_argument("'" + text + "' is no regular expression");
  }
  ~Expression() { regfree(&regex_); }
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;

  /// The places of the first match from `start` on and of its groups, counted from `start`; none without a match.
  std::vector<regmatch_t> find(const char* start, bool is_beginning) const {
    std::vector<regmatch_t> places(regex_.re_nsub + 1);
    if (regexec(&regex_, start, places.size(), places.data(), is_beginning ? 0 : REG_NOTBOL) != 0) return {};
    return places;
  }

 private:
  regex_t regex_;
};

namespace {

Match groups_of(const char* start, const std::vector<regmatch_t>& places) {
  Match groups;
  for (const regmatch_t& place : places)
    groups.push_back(place.rm_so < 0 ? std::string() : std::string(start + place.rm_so, start + place.rm_eo));
  return groups;
}

}  // namespace

Pattern::Pattern(const std::string& expression) : expression_(std::make_shared<const Expression>(expression)) {}

std::optional<Match> Pattern::match(const std::string& text) const {
  const auto places = expression_->find(text.c_str(), true);
  if (places.empty() || places[0].rm_so != 0 || static_cast<std::size_t>(places[0].rm_eo) != text.size())
    return std::nullopt;
  return groups_of(text.c_str(), places);
}

std::vector<Match> Pattern::matches_in(const std::string& text) const {
  std::vector<Match> matches;
  const char* start = text.c_str();
  const char* const end = start + text.size();
  while (start <= end) {
    const auto places = expression_->find(start, start == text.c_str());
    if (places.empty()) break;
    matches.push_back(groups_of(start, places));
    const bool is_empty = places[0].rm_so == places[0].rm_eo;
    start += places[0].rm_eo + (is_empty ? 1 : 0);
  }
  return matches;
}

}  // namespace hvm::description
