// script/library/file_functions.cpp: files: texts, CSV and JSON

#include "script/library/arguments.hpp"

namespace hvm {

BuiltinFamily file_functions() { return {nullptr, nullptr}; }

}  // namespace hvm
