// array/xt_object.hpp: the chain of owners from a host object down to the elements
//
// HostAny::content is an XTObject; it owns an XTArray, which shares an xarray_of<T>. Only the host
// destroys the XTObject.

#pragma once

#include <exception>
#include <memory>
#include <type_traits>
#include <vector>

#include "array/aligned_storage.hpp"

#include <xtensor/xarray.hpp>
#include <xtl/xvariant.hpp>

#include "array/element_kind.hpp"

namespace arrayfold {

/// The container of all arrays: row-major, four extents in place, aligned storage.
template <class T>
using xarray_of =
    xt::xarray_container<xt::uvector<T, xsimd::aligned_allocator<T, storage_alignment>>, xt::layout_type::row_major,
                         xt::svector<std::size_t, 4, std::allocator<std::size_t>, true>, xt::xtensor_expression_tag>;

static_assert(xarray_of<double>::allocator_type::alignment == 32, "the type of arrays does not depend on the processor");
static_assert(std::is_same_v<xarray_of<double>, xt::xarray<double>>, "results of the library are arrays as they are");

/// Extents, strides or indices: unsigned, four in place. Passed by reference and never moved: beyond four entries its
/// move allocates, in a function from which no exception may pass.
using Shape = xarray_of<double>::shape_type;

/// An array of one kind. A new one has no elements and no container.
template <class T, class Tag>
struct XTArray {
  using element = T;
  using tag = Tag;

  std::vector<T> data;                  // elements as `xarray` gathered them; nothing reads them again
  std::shared_ptr<xarray_of<T>> array;  // what every operation reads
};

/// The array class of a kind.
template <class Kind>
using ArrayOf = XTArray<typename Kind::element, Kind>;

/// The content of a host object.
template <class Array>
class XTObject {
 public:
  XTObject() = default;
  virtual ~XTObject() = default;
  XTObject(const XTObject&) = delete;
  XTObject& operator=(const XTObject&) = delete;

  std::unique_ptr<Array> array;  // null until `box_array` fills it
};
static_assert(sizeof(XTObject<ArrayOf<XTDouble>>) == 16, "tests and other builds of the module rely on the layout");

/// A numeric array, not owned. xtl::visit throws mpark::bad_variant_access when it is valueless.
template <class... Kind>
xtl::variant<ArrayOf<Kind>*...> array_ref_over(kinds<Kind...>);
using ArrayRef = decltype(array_ref_over(int_first{}));

/// Thrown where a selection meets something that holds no elements.
class invalid_array_object : public std::exception {
 public:
  // The quotation marks belong to the text.
  const char* what() const noexcept override { return "\"object is not array\""; }
};

}  // namespace arrayfold
