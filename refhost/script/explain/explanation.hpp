// script/explain/explanation.hpp: the whole story of an error or a warning

#pragma once

#include <string>
#include <vector>

namespace hvm {

/// What `--explain` prints behind a report, and `why` at the prompt. Parts that do not apply are empty.
struct Explanation {
  std::string about;                    // the message of the error or the warning
  std::vector<std::string> arguments;   // `a: double (2, 2) [[1.0, 2.0], [3.0, 4.0]]`
  std::vector<std::string> considered;  // the conditions that were looked at, and what each said
  std::string remedy;                   // what to write instead, as a sentence
  std::vector<std::string> notes;       // `usage: xinv(a)`, `page: docs/functions/xinv.md`

  bool is_empty() const { return about.empty(); }
  /// Whether there is more to tell than the message.
  bool has_details() const { return !(arguments.empty() && considered.empty() && remedy.empty() && notes.empty()); }
  /// The story in lines, each with its end; empty without details.
  std::string text() const;
};

}  // namespace hvm
