// cli/session.hpp: the inputs of a session as a script

#pragma once

#include <string>
#include <vector>

#include "script/data/descriptor.hpp"

namespace hvm {

/// Whether the value of an expression was shown, and so became `_`.
enum class IsShown { no, yes };

/// A statement, or what stands between statements.
struct SessionPart {
  std::string text;
  IsShown is_shown;
};

/// Keeps the inputs of a session in a file as long as the session runs. When hvm ends in any way but by the user's wish
/// the file stays, and the next session offers it.
class Session {
 public:
  /// The files are in `folder`, which need not exist. Without one the inputs are only remembered.
  explicit Session(std::string folder) : folder_(std::move(folder)) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void add(SessionPart part);
  /// All inputs as a script.
  std::string script() const;
  /// Removes the file: the user has ended the session.
  void end() noexcept;

  /// The paths of scripts with the inputs of sessions that did not come to their end. Each is given once, and removed
  /// thirty days later.
  std::vector<std::string> lost_sessions() const;
  /// Whether a path is one of these.
  bool is_lost(const std::string& path) const;
  /// Removes the script of a lost session whose inputs are part of this one now. Where this one has no file it stays.
  void forget(const std::string& path) const;

 private:
  std::string in_script(const SessionPart& part) const;
  void keep(const std::string& text, bool is_whole);
  bool open_file();

  std::string folder_;
  std::vector<SessionPart> parts_;
  bool names_shown_ = false;  // once a part reads `_`
  std::string path_;
  Descriptor file_{-1};
};

/// Writes a script for `:save`. Returns why that does not succeed; empty when it does.
std::string save_script(const std::string& path, const std::string& script);

}  // namespace hvm
