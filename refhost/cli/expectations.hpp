// cli/expectations.hpp: the comments of a script that say what a line must print, or how it must fail

#pragma once

#include <map>
#include <string>
#include <vector>

#include "script/syntax/lexer.hpp"

namespace hvm {

/// What is expected of a line.
struct Expectation {
  enum class Form { text, numbers, error };
  Form form = Form::text;
  std::string text;
  double tolerance = 0;
};

/// The expectations of a script by line, each in one of the forms
///
///     print(1 + 1)          # expect: 2
///     print(str(x))         # expect ~1e-12: 0.333333333333
///     xamax(7)              # expect error: xamax: argument 1 must be an array
///
/// A comment on a line of its own belongs to the line of the last code before it; further `expect:` there continue the
/// text. Throws `ScriptError` for a comment that begins like an expectation and is not one.
std::map<std::size_t, Expectation> expectations_of(const SourcePtr& source, const TokenList& words);

/// The warnings that a script expects, by line:
///
///     print(5 - a)          # expect: [4, 3, 2]  # expect warning: 5 - a computes a - 5
///
/// A line may expect several. A comment on a line of its own belongs to the line of the last code before it.
std::multimap<std::size_t, std::string> expected_warnings_of(const SourcePtr& source, const TokenList& words);

/// Whether a text contains the expected one. Successive blanks and line ends count as one blank.
bool is_contained(const std::string& expected, const std::string& text);

/// Whether printed text is what was expected. Successive blanks and line ends count as one blank.
bool is_met(const Expectation& expectation, const std::string& printed);
/// Whether the message of an error contains the expected text.
bool is_met_by_error(const Expectation& expectation, const std::string& message);

/// `text` with one blank for successive blanks and line ends, and none at its ends.
std::string with_single_blanks(const std::string& text);

}  // namespace hvm
