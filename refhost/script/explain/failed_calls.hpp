// script/explain/failed_calls.hpp: why a call of the module failed, and what is wanted
//
// A module says that a call failed, or throws; its description says when it does so. The row of the page that fits what
// happened and the arguments becomes a sentence, with the argument that is to blame, what it is and what is wanted, and
// with what to write instead where the row tells.

#pragma once

#include <string>

#include "script/explain/described_call.hpp"
#include "script/explain/explanation.hpp"
#include "script/explain/module_description.hpp"
#include "script/module/module_functions.hpp"

namespace hvm {

/// An operator with an object among its operands.
struct FailedOperation {
  BinaryOperator op;
  const Value& left;
  const Value& right;
  const Expression* left_written = nullptr;  // null where the script does not write it beside the operator
  const Expression* right_written = nullptr;
};

/// Explains the failed calls of an interpreter.
class FailedCalls {
 public:
  struct Options {
    const ModuleFunctions* module;
    const ModuleDescription* description = nullptr;  // null: messages stay as they are
    bool may_ask = true;                             // the objects of a failed call for their shapes
    bool explains = false;
    std::string pages_folder = {};  // in front of the paths of pages, with its slash
  };

  /// The last explanation goes to `last`, which must outlive this.
  FailedCalls(Options options, Explanation& last) : options_(std::move(options)), last_(last) {}

  /// `failure`, which is of the function or method of `made` or of a check before it, with its reason. The message and
  /// the words of an exception stay; they follow the host's sentence. The same failure when nothing is known of the
  /// call, and when memory runs out.
  Failure explained(const Failure& failure, const MadeCall& made) const;
  /// `failure`, which is of an operator on an object, with what to write instead and the page of the operator. The
  /// message stays.
  Failure explained(const Failure& failure, const ModuleCaller& caller, const FailedOperation& operation) const;

 private:
  /// Null when there is none.
  const Description* description() const { return options_.description ? options_.description->get() : nullptr; }
  Failure of_described(const Failure& failure, const Description& known, const FunctionEntry& entry,
                       const MadeCall& made) const;
  Failure of_unknown_method(const Failure& failure, const Description& known, const MadeCall& made) const;
  void keep(const Failure& failure, DescribedCall& call, std::vector<std::string> considered, std::string remedy,
            bool has_self) const;

  Options options_;
  Explanation& last_;
};

}  // namespace hvm
