// refhost/script/explain/creation_rows.cpp: warnings about arrays that are made

#include "explain/warning_rows.hpp"

namespace hvm::testing {

const std::vector<WarnedScript>& creation_rows() {
  static const std::vector<WarnedScript> rows = {
      {"integer-spacing",
       "xlinspace(0, 1, 5)",
       "xlinspace(0, 1, 5) gives integers, which lose their fractions: the kind is that of its start; write "
       "xlinspace(0.0, 1, 5)",
       {"xlinspace(0, 4, 5); xlinspace(0, 1, 2); xlinspace(0, 1, 1); xlinspace(0, 1, 0); xlinspace(0, 49)",
        "xlinspace(0.0, 1, 5)", "xlinspace(4L, 0, 3)", "xlinspace(5, 5, 100)", "xlinspace(0, 0.5, 1)"}},
      {"integer-spacing",
       "x = 0; xlinspace(x, 1)",
       "xlinspace(x, 1) gives integers, which lose their fractions: the kind is that of its start; write xlinspace(x * "
       "1.0, 1)",
       {}},
      {"integer-spacing",
       "xlinspace(0L, 2.5, 3)",
       "xlinspace(0L, 2.5, 3) gives integers, which lose their fractions: the kind is that of its start; write "
       "xlinspace(0.0, 2.5, 3)",
       {}},
      {"integer-spacing",
       "xlinspace(1 + 1, 3, 5)",
       "xlinspace(1 + 1, 3, 5) gives integers, which lose their fractions: the kind is that of its start; give a real "
       "as its start",
       {}},
      {"integer-powers",
       "xlogspace(-5, 5, 5)",
       "xlogspace(-5, 5, 5) gives integers, which do not hold these powers: the kind is that of its start; write "
       "xlogspace(-5.0, 5, 5)",
       {"xlogspace(0, 4, 5)", "xlogspace(0.0, 1, 5)", "xlogspace(0L, 18, 19)", "xlogspace(0, 9, 10)"}},
      {"integer-spacing",
       "xlinspace(0L, 4294967296L, 4)",
       "xlinspace(0L, 4294967296L, 4) gives integers, which lose their fractions: the kind is that of its start; write "
       "xlinspace(0.0, 4294967296L, 4)",
       {"xlinspace(0L, 4294967296L, 5)", "xlinspace(4294967296L, 0, 3)"}},
      {"integer-powers",
       "xlogspace(0L, 19, 20)",
       "xlogspace(0L, 19, 20) gives integers, which do not hold these powers: the kind is that of its start; write "
       "xlogspace(0.0, 19, 20)",
       {"xlogspace(0, 20, 1)", "xlogspace(-5, 5, 0)"}},
      {"integer-powers",
       "xlogspace(0, 10, 11)",
       "xlogspace(0, 10, 11) gives integers, which do not hold these powers: the kind is that of its start; write "
       "xlogspace(0.0, 10, 11)",
       {}},
      {"integer-range",
       "xarange(0, 2.5)",
       "xarange reads 2.5 as 2: it counts in integers; for fractions use xlinspace(start, stop, count)",
       {"xarange(0, 2.0)", "xarange(3)", "xarange(0, 10, 5)"}},
      {"empty-range",
       "xarange(0, 2, 3)",
       "xarange(0, 2, 3) has no elements: with a step beyond the whole range even the start is left out; give a step "
       "of 2",
       {"xarange(0, 3, 3)", "xarange(0, -3, 1)", "xarange(5, 5, 1)", "xarange(5, 5, -1)", "xarange(3, 0, -3)"}},
      {"empty-range",
       "xarange(2, 0, -3)",
       "xarange(2, 0, -3) has no elements: with a step beyond the whole range even the start is left out; give a step "
       "of -2",
       {}},
      {"draws-without-elements",
       "xrand(0, 1)",
       "xrand(0, 1) has no elements: its arguments are extents; xrand(n) draws n numbers from 0 to 1, and xrand(n) * "
       "(high - low) + low from low",
       {"xrand(0)", "xrand(2, 3)", "xrand(2, 0)", "xzeros(0, 2)"}},
      {"draws-without-elements",
       "m = 0; s = 2; xrandn(m, s)",
       "xrandn(m, s) has no elements: its arguments are extents; xrandn(n) draws n numbers, and xrandn(n) * s + m "
       "those around m",
       {}},
      {"fraction-of-an-argument",
       "xzeros(2.5, 2)",
       "xzeros reads 2.5 as 2: it takes an integer here; give one",
       {"xzeros(2.0)", "xzeros(2, 3)", "xhistogram(xarange(3), 2)"}},
  };
  return rows;
}

}  // namespace hvm::testing
