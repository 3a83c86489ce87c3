// refhost/script/explain/warning_rows.hpp: scripts that bring about warnings, by the family of their
// conditions

#pragma once

#include <vector>

namespace hvm::testing {

/// A script that brings about a warning, its sentence, and scripts beside it that bring about none.
struct WarnedScript {
  const char* name;
  const char* script;
  const char* message;
  std::vector<const char*> innocent;
};

const std::vector<WarnedScript>& creation_rows();
const std::vector<WarnedScript>& result_rows();
const std::vector<WarnedScript>& operator_rows();
const std::vector<WarnedScript>& reduction_rows();
const std::vector<WarnedScript>& data_rows();

/// Those of all families.
inline const std::vector<WarnedScript>& warned_scripts() {
  static const std::vector<WarnedScript> all = [] {
    std::vector<WarnedScript> made;
    for (const auto* rows : {&creation_rows(), &result_rows(), &operator_rows(), &reduction_rows(), &data_rows()})
      made.insert(made.end(), rows->begin(), rows->end());
    return made;
  }();
  return all;
}

}  // namespace hvm::testing
