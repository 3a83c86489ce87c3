// script/explain/condition_check.hpp: whether the condition of a row holds for a call

#pragma once

#include <string>

#include "script/explain/described_call.hpp"

namespace hvm {

/// What a condition says of a call.
struct Verdict {
  enum class Answer { no, yes, unknown };
  Answer answer = Answer::unknown;
  std::string cause = {};  // of `yes`: `argument 1 must be an array of doubles; this is int (2, 2)`
};

/// Checks `condition` against the arguments. `unknown` for conditions that only what happened tells.
Verdict checked(const Condition& condition, DescribedCall& call);

/// The first argument that is not what the page says that it accepts; `no` when there is none.
Verdict first_misfit(DescribedCall& call);

}  // namespace hvm
