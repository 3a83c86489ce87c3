// script/library/table_functions.cpp: tables: append, remove, keys, values, has, sort

#include "script/library/arguments.hpp"

namespace hvm {

BuiltinFamily table_functions() { return {nullptr, nullptr}; }

}  // namespace hvm
