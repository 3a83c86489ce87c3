// script/explain/described_call.hpp: a call of the module beside its entry in the description

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "script/explain/description.hpp"
#include "script/module/module_calls.hpp"
#include "script/syntax/tree.hpp"
#include "script/text/array_layout.hpp"

namespace hvm {

/// A call as it was made.
struct MadeCall {
  const ModuleCaller& caller;
  const std::string& name;
  Value* self;  // of a method, otherwise null
  std::vector<Value>& arguments;
  std::vector<std::string> names = {};            // of variables, and texts of tables; empty for all other arguments
  std::string self_name = {};                     // of the variable that is `self`; empty otherwise
  std::vector<const Quotation*> quotations = {};  // of the arguments that are quotations; null for all others
};

/// Answers questions about the arguments of a call in the words of its entry.
class DescribedCall {
 public:
  /// The shapes of objects are asked for only with `may_ask`: an object that no check has seen may end the process.
  DescribedCall(const Description& description, const FunctionEntry& entry, const MadeCall& made, bool may_ask);

  const FunctionEntry& entry() const { return entry_; }
  const std::string& name() const { return made_.name; }
  std::size_t count() const { return made_.arguments.size(); }
  Value& value(std::size_t i) const { return made_.arguments[i]; }
  /// What the page says of argument `i`; null beyond its arguments.
  const ArgumentEntry* argument(std::size_t i) const;
  /// The positions of the given arguments that a condition is about, in their order.
  std::vector<std::size_t> positions(const Condition& condition) const;
  /// The positions of the given arguments of a name: several where it repeats.
  std::vector<std::size_t> positions(const std::string& name) const;

  /// The kind in the words of the description, such as `real`, `double array`, `object`.
  std::string kind(std::size_t i) const;
  /// The quotation that an argument is; null when it is none.
  const Quotation* quotation(std::size_t i) const {
    return i < made_.quotations.size() ? made_.quotations[i] : nullptr;
  }
  bool is_one_of(std::size_t i, const std::vector<std::string>& kinds) const;
  /// The shape of an argument; null when it has none.
  const Extents* shape(std::size_t i);

  /// The value in words: `int (2, 2)`, `a string`, `-1`.
  std::string shown(std::size_t i);
  /// The value with its first elements, for an explanation.
  std::string shown_at_length(std::size_t i);
  /// The same of the object whose method is called.
  std::string self_at_length();

  /// `argument 2`.
  static std::string numbered(std::size_t i);
  /// A sentence of the page: names of arguments become `argument 1`, and the marks of code disappear.
  std::string with_numbers(const std::string& text) const;
  /// Code or advice of the page: names of arguments become those of the script's variables and tables.
  std::string with_names(const std::string& text) const;
  /// `xlinspace(start, stop) or xlinspace(start, stop, count)`.
  std::string usage() const;

 private:
  std::string kind_of(const Value& value) const;
  std::string type_in_words(const Value& value, const Extents* extents) const;
  std::string at_length(Value& value, const Extents* extents) const;
  std::optional<std::size_t> position_of(const std::string& name) const;

  const Description& description_;
  const FunctionEntry& entry_;
  const MadeCall& made_;
  bool may_ask_;
  std::vector<std::size_t> places_;  // in the arguments of the page, of the arguments in their order
  std::map<std::size_t, std::optional<Extents>> shapes_;
};

/// `an array of doubles`, `a number`: what an argument of these kinds must be.
std::string kinds_in_words(const std::vector<std::string>& kinds);
/// `a square matrix`, `an array of 2 or more dimensions`: what the dimensions of an argument must be; empty when they
/// may be any.
std::string dimensions_in_words(const ArgumentEntry& argument);
/// `a`, `a or b`, `a, b or c`.
std::string alternatives(const std::vector<std::string>& words);

}  // namespace hvm
