// script/library/number_functions.cpp: numbers: conversions, rounding, elementary functions

#include "script/library/arguments.hpp"

namespace hvm {

BuiltinFamily number_functions() { return {nullptr, nullptr}; }

}  // namespace hvm
