// support/containers.hpp: the array library's containers behind host objects
//
// For tests of the module's own array code and for references by the array library. Others stay with test_array.hpp.

#pragma once

#include <algorithm>

#include "array/boxing.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {

/// The container behind an object of a kind; null when `value` is no such object.
template <class Row>
xarray_of<typename Row::element>* container_of(const Value& value) {
  auto* any = hvm::object_of(value.record());
  auto* array = any == nullptr ? nullptr : unbox_array<Row>(any);
  return array == nullptr ? nullptr : array->array.get();
}

/// A container of the array's own elements, for an operation of the array library's.
template <class T>
xarray_of<T> container_with(const TestArray& array) {
  xarray_of<T> made(Shape(array.extents().begin(), array.extents().end()));
  std::copy(array.as<T>().begin(), array.as<T>().end(), made.storage().begin());
  return made;
}

/// What a container of the array library's holds, converted element by element to T.
template <class T, class Container>
TestArray array_in(const Container& container) {
  std::vector<T> elements;
  for (const auto x : container.storage()) elements.push_back(static_cast<T>(x));
  return TestArray(Extents(container.shape().begin(), container.shape().end()), std::move(elements));
}

}  // namespace arrayfold::test
