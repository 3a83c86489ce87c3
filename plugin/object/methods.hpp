// object/methods.hpp: the methods that a script can call on an array

#pragma once

#include "array/xt_object.hpp"

namespace arrayfold {

template <class Kind>
using MethodCallbackOf = MethodCallback;

/// For each kind the callback of its type, with the methods `dump`, `shape` and `reshape`. Returns false for any other
/// name, and when `self` holds no array, with the result record as it was. Exceptions pass, except the
/// std::runtime_error of a `reshape` to another element count.
extern const KindTable<registered_kinds, MethodCallbackOf> method_callbacks;

}  // namespace arrayfold
