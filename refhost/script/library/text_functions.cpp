// script/library/text_functions.cpp: strings: format, split, join, search

#include "script/library/arguments.hpp"

namespace hvm {

BuiltinFamily text_functions() { return {nullptr, nullptr}; }

}  // namespace hvm
