// script/library/truth.cpp: whether a condition holds

#include "script/library/truth.hpp"

#include <fmt/format.h>

#include "script/library/numbers.hpp"
#include "script/module/array_module.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

bool truth(const Value& value) {
  if (value.is_nil()) return false;
  if (value.is_number()) return number_of(value).real != 0;
  constexpr const char* hint =
      "; m[0] is the first element; after use \"arrays\", count(m) > 0 asks for any true one, count(m) == len(m) for "
      "all, and as_int(m) * as_int(n) joins two arrays";
  if (value.is_object())
    throw Failure(fmt::format("a condition must be a number, and {} is an array or another object{}", kind_name(value),
                              kind_of_array(value) == "bool" ? hint : ""));
  throw Failure(fmt::format("a condition must be a number, not {}", kind_in_words(value)));
}

}  // namespace hvm
