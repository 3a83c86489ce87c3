// object/reference.hpp: what the libraries give
//
// All of it is compiled in reference.cpp alone.

#pragma once

#include <string>

#include "host/host_value.hpp"
#include "support/test_array.hpp"

namespace arrayfold::test {

/// The array library's own operator.
TestArray library_result(Opcode opcode, const TestArray& left, const TestArray& right);
/// The JSON library's text of an array.
std::string library_text(const TestArray& array, int indent);

}  // namespace arrayfold::test
