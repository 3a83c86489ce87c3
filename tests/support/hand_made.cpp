// support/hand_made.cpp: records written by hand

#include "support/hand_made.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace arrayfold::test {

void hold(HostAny& any) { store<std::uint32_t>(any.host_word, 1); }

FloatObject::FloatObject(const std::vector<std::size_t>& extents, const std::vector<float>& elements) {
  content_.array = std::make_unique<ArrayOf<XTFloat>>();
  content_.array->array = std::make_shared<xarray_of<float>>(Shape(extents.begin(), extents.end()));
  auto& storage = content_.array->array->storage();
  if (storage.size() != elements.size()) throw std::invalid_argument("elements do not fill the extents");
  std::copy(elements.begin(), elements.end(), storage.begin());
  man_.name = XTFloat::type_name;
  any_.manager = &man_;
  any_.content = &content_;
  hold(any_);
}

Value FloatObject::value() { return Value::object(&any_); }

ForeignObject::ForeignObject(const char* type_name) {
  man_.name = type_name;
  any_.manager = &man_;
  hold(any_);
}

Value ForeignObject::value() { return Value::object(&any_); }

namespace {

/// Registers the float name for objects that take an `Array`.
template <class Array>
void register_float_name() {
  using Object = XTObject<Array>;
  static AnyMan* const man = HVM_NewAnyMan(
      XTFloat::type_name, []() -> void* { return new (std::nothrow) Object; },
      [](HostContext, void* content) { delete static_cast<Object*>(content); }, nullptr, nullptr, nullptr);
  HVM_RegisterAnyMan(XTFloat::type_name, man);
}

}  // namespace

FloatNameRegistered::FloatNameRegistered() { register_float_name<ArrayOf<XTDouble>>(); }
FloatNameRegistered::~FloatNameRegistered() { hvm::forget_type(XTFloat::type_name); }

FloatKindRegistered::FloatKindRegistered() { register_float_name<ArrayOf<XTFloat>>(); }
FloatKindRegistered::~FloatKindRegistered() { hvm::forget_type(XTFloat::type_name); }

std::vector<double> FloatNameRegistered::elements(const Value& value) {
  if (type_of(value) != XTFloat::type_name) throw std::invalid_argument("no object of the float name");
  void* content = hvm::object_of(value.record())->content.get();
  const auto& storage = static_cast<XTObject<ArrayOf<XTDouble>>*>(content)->array->array->storage();
  return {storage.begin(), storage.end()};
}

}  // namespace arrayfold::test
