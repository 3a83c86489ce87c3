// object/methods.cpp: dump, shape and reshape
//
// Elements are read and written through operators, never by a method: the two names under which a host may ask for that
// return false.

#include "object/methods.hpp"

#include <stdexcept>
#include <string_view>

#include "array/table_slots.hpp"
#include "object/dump_text.hpp"
#include "object/receiver.hpp"

namespace arrayfold {
namespace {

struct MethodCall {
  HostContext ctx;
  HostValue** args;
  int nargs;
  HostValue* result;
};

template <class Array>
bool dump(const Array& receiver, const MethodCall& call) {
  const auto& array = *receiver.array;
  check_extents(array);
  if (call.nargs != 0 && call.args[0] == nullptr) return false;
  // required: the indent is not checked to be a number; it is whatever the host reads in it.
  const int indent = call.nargs != 0 ? HVM_AsInt(call.args[0]) : -1;
  const DumpText text = dump_text(typename Array::tag{}, array, indent);
  HVM_SetStringEx(call.ctx, call.result, text.data(), text.size());
  return true;
}

template <class Array>
bool shape(const Array& receiver, const MethodCall& call) {
  const Shape extents = receiver.array->shape();
  KeySequence table{0, force_table(call.ctx, call.result, static_cast<int>(extents.size())), call.ctx};
  for (const std::size_t extent : extents) table.add(static_cast<std::int64_t>(extent));
  return true;
}

/// Reads the extents that the arguments name, 32 bits each, sign-extended. False at the first that is no number or is
/// missing.
bool read_extents(const MethodCall& call, Shape& extents) {
  for (int n = 0; n < call.nargs; ++n) {
    if (call.args[n] == nullptr || !HVM_NumberCheck(call.args[n])) return false;
    extents.push_back(extent_of(HVM_AsInt(call.args[n])));
  }
  return true;
}

/// Restores the shape of an array when a reshape throws halfway, with more dimensions than there was memory for.
template <class T>
class ShapeKeeper {
 public:
  explicit ShapeKeeper(xarray_of<T>& array) : array_(array), extents_(array.shape()) {}
  ~ShapeKeeper() {
    // There is still room for the former extents: nothing is allocated.
    if (!released_) array_.reshape(extents_, xt::layout_type::row_major);
  }
  ShapeKeeper(const ShapeKeeper&) = delete;
  ShapeKeeper& operator=(const ShapeKeeper&) = delete;
  void release() { released_ = true; }

 private:
  xarray_of<T>& array_;
  const Shape extents_;
  bool released_ = false;
};

template <class Array>
bool reshape(Array& receiver, const MethodCall& call) {
  if (call.nargs <= 0) return false;
  Shape extents;
  if (!read_extents(call, extents)) return false;
  auto& array = *receiver.array;
  ShapeKeeper keeper(array);
  // required: the one catch of the module. A wrong element count returns false; any other exception passes.
  try {
    // required: no extent is inferred, -1 is a very large one, and the product of the extents may wrap.
    array.reshape(extents, xt::layout_type::row_major);
  } catch (const std::runtime_error&) {
    keeper.release();
    return false;
  }
  keeper.release();
  return true;
}

template <class Kind>
HostBool method_callback(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                         HostValue* result, int flag) {
  ArrayOf<Kind>* array = array_in<Kind>(content_of(self));
  if (array == nullptr || name == nullptr) return false;
  const std::string_view method = name;
  const MethodCall call{ctx, args, nargs, result};
  if (flag != 0 && method == "__set_item") return false;
  if (method == "__get_item") return false;
  if (method == "dump") return dump(*array, call);
  if (method == "shape") return shape(*array, call);
  if (method == "reshape") return reshape(*array, call);
  return false;
}

constexpr auto method_callback_of_each = [](auto... kind) {
  return KindTable<registered_kinds, MethodCallbackOf>(&method_callback<decltype(kind)>...);
};

}  // namespace

constexpr KindTable<registered_kinds, MethodCallbackOf> method_callbacks =
    for_kinds(registered_kinds{}, method_callback_of_each);

}  // namespace arrayfold
