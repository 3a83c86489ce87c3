// kernels/element_types.hpp: a set of loops for each type of elements

#pragma once

#include <cstdint>

namespace arrayfold {

/// `Loops<T>` for each T that numbers are stored in.
template <template <class T> class Loops>
class ForElementTypes {
 public:
  constexpr ForElementTypes(Loops<double> doubles, Loops<float> floats, Loops<std::int32_t> ints,
                            Loops<std::int64_t> int64s)
      : rows_{{doubles}, {floats}, {ints}, {int64s}} {}

  template <class T>
  constexpr const Loops<T>& of() const {
    return static_cast<const Row<T>&>(rows_).loops;
  }

 private:
  template <class T>
  struct Row {
    Loops<T> loops;
  };
  struct Rows : Row<double>, Row<float>, Row<std::int32_t>, Row<std::int64_t> {};

  Rows rows_;
};

/// The set whose loops for each T are `make(T{})`.
template <template <class T> class Loops, class Make>
constexpr ForElementTypes<Loops> for_element_types(Make make) {
  return {make(double{}), make(float{}), make(std::int32_t{}), make(std::int64_t{})};
}

}  // namespace arrayfold
