// conformance/call_record.hpp: what a call does, as JSON without addresses
//
// A record has three members:
//
// - `outcome`: `{"value": V}`, `{"fails": true}` for a call that returns 0 or false, `{"throws": "TYPE: WORDS"}`, or
//   `{"error": MESSAGE}` where hvm itself does not make the call. In a table also `{"ends": "SIGFPE"}`, for a call that
//   ends the process, without `calls`.
// - `changes`: the variables with other values than before. Absent when there are none.
// - `calls`: the calls of the module in their order, each with `operations`, the operations of the host as texts such
//   as `HVM_AnyCheck(arg 0) = true`, and `returned` unless it throws. Records, tables, blocks and objects are numbered
//   by their first appearance.
//
// What a module is free to do does not appear: how it gets memory for its own use, when it asks for the nil object, and
// the capacities that it hints at. Nor do calls of `shape`, which hvm makes for its checks, unless the call asks for
// it.

#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "script/module/module_functions.hpp"

namespace hvm::conformance {

using Json = nlohmann::ordered_json;

/// An expression or a statement, and the script that gives its variables their values.
struct PreparedCall {
  std::string preparation;
  std::string call;
};

/// Performs one call and records it.
class CallRecording {
 public:
  /// The contents of arrays are left out where `has_contents` is false. `functions` must outlive the recording.
  CallRecording(const ModuleFunctions& functions, PreparedCall made, bool has_contents);
  ~CallRecording();
  CallRecording(const CallRecording&) = delete;
  CallRecording& operator=(const CallRecording&) = delete;

  /// Runs the preparation, whose lines are whole statements, and gives each line to `before` first. Returns a digest of
  /// the variables, empty without a preparation. Throws `ScriptError`.
  std::string prepare(const std::function<void(const std::string& line)>& before = [](const std::string&) {});
  /// Performs the call. Requires: it is prepared, and was not performed before.
  Json perform();

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace hvm::conformance
