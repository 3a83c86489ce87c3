// script/explain/module_description.hpp: the description of a module, read when it is needed
//
// Most scripts need no more of it than the head, less than a hundredth of the file: with how many arguments warnings
// come. The rest is read for the first call that fails, for help, and for the stories of warnings.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "script/explain/description.hpp"

namespace hvm {

class ModuleDescription {
 public:
  /// Takes a sentence that says why a file is of no use.
  using TellProblem = std::function<void(const std::string& problem)>;

  /// Looks for the description of the module that was loaded from `module_path` and registered functions of these
  /// names, and reads its head. A file without a head is read as a whole. What is wrong with a file is told once, when
  /// it is found.
  ModuleDescription(std::string module_path, std::vector<std::string> registered, TellProblem tell);
  /// A description that is known.
  explicit ModuleDescription(Description known);

  /// The whole description; null when there is none. The first call reads the file. Throws nothing but
  /// `std::bad_alloc`; a later call then reads it.
  const Description* get() const;
  /// The entries of functions are looked at up to these numbers of arguments.
  const ArgumentLimits& limits() const { return limits_; }
  /// Why there is no description, in a sentence, after `get` has given null.
  std::string absence() const;

 private:
  void settle(DescriptionReading reading) const;

  std::string module_path_;
  std::vector<std::string> registered_;
  TellProblem tell_;
  ArgumentLimits limits_;
  mutable bool is_read_ = false;
  mutable DescriptionReading reading_;
};

}  // namespace hvm
