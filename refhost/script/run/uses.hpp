// script/run/uses.hpp: scripts that other scripts use

#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "script/library/builtins.hpp"
#include "script/run/call_depth.hpp"
#include "script/run/functions.hpp"
#include "script/run/scopes.hpp"
#include "script/run/site.hpp"

namespace hvm {

class Statements;

/// Runs each script that is used, once, among the variables and functions of the script that uses it.
class Uses {
 public:
  Uses(Site& site, CallDepth& depth, Scopes& scopes, Functions& functions, Statements& statements, FileAccess files)
      : site_(site), depth_(depth), scopes_(scopes), functions_(functions), statements_(statements), files_(files) {}

  /// Runs the library of that name, or the script at `path`, which is relative to the folder of the running one. Does
  /// nothing when it has run
  /// before. Throws `ScriptError` when it cannot be read, when it fails, or when it is being run: then scripts use each
  /// other in a circle. A script that has failed may be used again.
  void run(const std::string& path, Span span);

 private:
  using Path = std::filesystem::path;

  void run_script(const SourcePtr& source);
  /// Throws `Failure` when another source has a fn of one of the names: one of them would lose its own.
  void require_new_names(const Program& program) const;
  void require_no_circle(const Path& used) const;

  Site& site_;
  CallDepth& depth_;
  Scopes& scopes_;
  Functions& functions_;
  Statements& statements_;
  FileAccess files_;
  std::set<Path> done_;
  std::vector<Path> running_;  // the first script and those that are being used, each by the one before it
};

}  // namespace hvm
