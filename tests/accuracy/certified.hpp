// accuracy/certified.hpp: what the programs over reference sets share: certified values, calls and digits

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/code_builder.hpp"
#include "support/module_test.hpp"

namespace arrayfold::accuracy {

using test::Value;

/// The number behind the last colon of a comment.
inline double certified(const std::string& line) { return std::stod(line.substr(line.rfind(':') + 1)); }

/// What a function of the module gives. Throws std::runtime_error when it fails.
inline Value called(const char* name, std::vector<Value> arguments) {
  static hvm::Context context;
  Value result;
  const int nargs = static_cast<int>(arguments.size());
  HostValue* const records = hvm::records_of(arguments);
  if (test::Module::loaded().entry(name)(context.handle(), records, nargs, result.address()) == 0)
    throw std::runtime_error(std::string(name) + " fails");
  return result;
}

/// An array of doubles as `xarray` makes it of a table, which may hold tables.
inline Value doubles(const Value& table) {
  test::CodeBuilder code;
  return called("xarray", {code.quoted_call("double"), table});
}

inline constexpr double most_digits = 15;  // of the certified values

/// Correct decimal digits of a value with this relative error.
inline double digits_at(double relative_error) { return std::clamp(-std::log10(relative_error), 0.0, most_digits); }

inline double digits_of(double value, double exact) { return digits_at(std::abs(value - exact) / std::abs(exact)); }

/// Says what does not hold.
inline bool holds(bool condition, const char* set, const char* what) {
  if (!condition) std::fprintf(stderr, "%s: %s\n", set, what);
  return condition;
}

}  // namespace arrayfold::accuracy
