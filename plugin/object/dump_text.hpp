// object/dump_text.hpp: an array as JSON text

#pragma once

#include <cstddef>
#include <memory>

#include "array/storage.hpp"

namespace arrayfold {

/// Growing text, for at most INT_MAX bytes: the most that a host record can be given.
class DumpText {
 public:
  /// Room for `expected` bytes at first.
  explicit DumpText(std::size_t expected);

  const char* data() const { return begin_.get(); }
  int size() const { return static_cast<int>(size_); }

  /// Makes room for `count` more bytes behind `size` ones: the place to write them. `end` is where the room ends.
  /// Throws std::bad_alloc when the text grows beyond its bound.
  char* room(std::size_t count) {
    if (capacity_ - size_ < count) grow(count);
    return begin_.get() + size_;
  }
  const char* end() const { return begin_.get() + capacity_; }
  /// Tells that bytes up to `end` are written.
  void commit(const char* end) { size_ = static_cast<std::size_t>(end - begin_.get()); }
  /// Throws std::bad_alloc when the whole text is longer than INT_MAX bytes.
  void check_size() const;

 private:
  void grow(std::size_t count);

  std::unique_ptr<char[]> begin_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

template <class Kind>
using DumpFunction = DumpText (*)(const xarray_of<typename Kind::element>& array, int indent);

/// For each kind the elements of `array` in nested JSON arrays, a level per axis; a zero-dimensional array is a bare
/// scalar. Below an axis of extent 0 nothing is written. With a negative `indent` there is no white space; otherwise
/// each element stands on its own line, `indent` blanks deeper for each level. Bools are words, floating-point numbers
/// the shortest text that reads back, NaN and infinities null.
///
/// The text is that of nlohmann::json for the same values. Requires: the product of the extents is the number of stored
/// elements (`check_extents`). Throws std::bad_alloc when the text would be longer than INT_MAX bytes.
extern const KindTable<registered_kinds, DumpFunction> dump_functions;

template <class Kind>
DumpText dump_text(Kind, const xarray_of<typename Kind::element>& array, int indent) {
  return dump_functions.of<Kind>()(array, indent);
}

}  // namespace arrayfold
