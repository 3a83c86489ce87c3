// description/conditions.hpp: the sentences of a table of failures as conditions and outcomes

#pragma once

#include <string>
#include <vector>

#include "description/vocabulary.hpp"

namespace hvm::description {

/// Reads the condition that a sentence states, such as "`a` is no number". A sentence in no known form gives
/// `{"told": true}`: only what happened tells. Throws std::invalid_argument when it names what is no argument, or in
/// "is no ..." and "is a ..." what is no kind.
Json read_condition(const std::string& sentence, const std::vector<std::string>& arguments);

struct Outcome {
  std::string name;       // fails, nothing, throws, refused or ends
  std::string exception;  // type and words of what is thrown
};

/// Throws std::invalid_argument when it is none of the outcomes.
Outcome read_outcome(const std::string& cell);

}  // namespace hvm::description
