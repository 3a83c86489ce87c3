// script/library/options.hpp: the table of options that a function takes as its last argument

#pragma once

#include <initializer_list>
#include <optional>
#include <string_view>

#include "script/library/builtins.hpp"

namespace hvm {

/// The options of a call, checked: an unknown one is a `Failure`. An absent argument and nil are no options, and so is
/// an option whose value is nil.
class Options {
 public:
  /// `names` are those that the function takes.
  Options(const BuiltinCall& call, std::size_t argument, std::initializer_list<std::string_view> names);

  /// The value of an option, if it is given.
  std::optional<Value> find(std::string_view name) const;
  /// An option that is true or false. Throws `Failure` for another value.
  bool truth_of(std::string_view name, const Value& value) const;
  /// A string of one character of ASCII. Throws `Failure` for another value.
  char character_of(std::string_view name, const Value& value) const;

 private:
  const BuiltinCall& call_;
  const HostHash* table_ = nullptr;
};

}  // namespace hvm
