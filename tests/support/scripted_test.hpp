// support/scripted_test.hpp: tests that read trees and variables, and see what the host is asked

#pragma once

#include <set>
#include <string>
#include <vector>

#include "support/code_builder.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {

/// A call of an operation as tests write it: "HashSetInt 3", the number where the operation takes one.
inline std::string words_of(const hvm::RecordedCall& call) {
  static const std::set<std::string> with_number = {
      "NewHash",     "ForceTable",   "HashSetInt",       "HashGetInt",        "SetInt", "NewObjects", "FreeObjs",
      "SetStringEx", "SetWStringEx", "SetConstStringEx", "SetConstWStringEx", "Malloc", "Realloc2"};
  const std::string name = std::string(call.operation).substr(4);
  return with_number.count(name) != 0 ? name + " " + std::to_string(call.number) : name;
}

/// The operations that `run` asks of the host, in their order.
template <class Run>
std::vector<std::string> operations_of(Run run) {
  hvm::record_calls(true);
  run();
  hvm::record_calls(false);
  std::vector<std::string> words;
  for (const auto& call : hvm::recorded_calls()) words.push_back(words_of(call));
  return words;
}

class ScriptedTest : public ModuleTest {
 protected:
  ScriptedHost host{ctx()};
  CodeBuilder code;
};

}  // namespace arrayfold::test
