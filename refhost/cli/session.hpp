// cli/session.hpp: the inputs of a session as a script

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "script/data/descriptor.hpp"

namespace hvm {

/// An input that ran to its end.
struct SessionInput {
  std::string text;                     // without a line end
  std::optional<std::size_t> shown_at;  // the offset of the expression whose value became `_`
  bool reads_shown = false;             // it reads `_`
};

/// Keeps the inputs of a session in a file as long as the session runs. When hvm ends in any way but by the user's wish
/// the file stays, and the next session offers it.
class Session {
 public:
  /// The files are in `folder`, which need not exist. Without one the inputs are only remembered.
  explicit Session(std::string folder) : folder_(std::move(folder)) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void add(SessionInput input);
  /// All inputs as a script.
  std::string script() const;
  /// Removes the file: the user has ended the session.
  void end() noexcept;

  /// The paths of scripts with the inputs of sessions that did not come to their end. Each is given once.
  std::vector<std::string> lost_sessions() const;

 private:
  void keep(const std::string& text, bool is_whole);
  bool open_file();

  std::string folder_;
  std::vector<SessionInput> inputs_;
  std::string path_;
  Descriptor file_{-1};
};

/// Writes a script for `:save`. Returns why that does not succeed; empty when it does.
std::string save_script(const std::string& path, const std::string& script);

}  // namespace hvm
