// script/syntax/foreign_words.hpp: words and signs of other languages, and what is written instead
//
// The table is asked only where a script cannot be read: none of its words is reserved.

#pragma once

#include <string_view>

namespace hvm {

/// Where a word or sign of another language stands.
enum class ForeignPlace {
  character,      // where no token begins
  first,          // as the first word of a statement that ends too early
  alone,          // as a statement of its own, in a script with a block that does not end
  behind_value,   // at the end of an expression
  before_value,   // as a name with an expression behind it
  joined,         // as two tokens without a blank between them
  statement,      // at the beginning of a statement, as a sign
  statement_end,  // at the end of a statement, as a sign
  header,         // behind the condition of a block
  loop,           // behind 'for', and behind its variable
  sequence,       // behind what a loop walks
  parenthesis,    // in parentheses around a value
  index,          // in the brackets of an index
  member,         // behind '.', without parentheses
  argument        // as the name of an argument
};

/// What to write instead of `text`, as the end of an error message; empty when the table does not know it.
std::string_view foreign_advice(ForeignPlace place, std::string_view text);

/// The sign of another language that `text` begins with, where no token begins; empty when there is none.
std::string_view foreign_sign(std::string_view text);

}  // namespace hvm
