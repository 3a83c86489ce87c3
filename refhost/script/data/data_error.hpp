// script/data/data_error.hpp: what is wrong with a file or with data

#pragma once

#include <stdexcept>

namespace hvm {

/// A file that cannot be read or written, or data that are not what they should be. The message names the file, if
/// there is one, and the cause; the function that was called puts its name in front.
class DataError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hvm
