// object/reference.hpp: what a plain formula gives, and what the libraries give
//
// All of it is compiled in reference.cpp alone.

#pragma once

#include <string>

#include "host/host_value.hpp"
#include "support/test_array.hpp"

namespace arrayfold::test {

/// The broadcasting rule and the operator's formula, an element at a time. Both arrays are of one kind.
TestArray plain_result(Opcode opcode, const TestArray& left, const TestArray& right);
/// The array library's own operator.
TestArray library_result(Opcode opcode, const TestArray& left, const TestArray& right);
/// The JSON library's text of an array.
std::string library_text(const TestArray& array, int indent);

}  // namespace arrayfold::test
