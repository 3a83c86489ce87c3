// support/hand_made.cpp: records written by hand

#include "support/hand_made.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "support/containers.hpp"

namespace arrayfold::test {

void hold(HostAny& any) { store<std::uint32_t>(any.host_word, 1); }

struct FloatObject::Records {
  XTObject<ArrayOf<XTFloat>> content;
  AnyMan man{};
  HostAny any{};
};

FloatObject::FloatObject(const std::vector<std::size_t>& extents, const std::vector<float>& elements)
    : records_(std::make_unique<Records>()) {
  if (size_of(extents) != elements.size()) throw std::invalid_argument("elements do not fill the extents");
  auto& [content, man, any] = *records_;
  content.array = std::make_unique<ArrayOf<XTFloat>>();
  content.array->array = std::make_shared<xarray_of<float>>(container_with<float>(TestArray(extents, elements)));
  man.name = XTFloat::type_name;
  any.manager = &man;
  any.content = &content;
  hold(any);
}

FloatObject::~FloatObject() = default;

Value FloatObject::value() { return Value::object(&records_->any); }

const HostAny* FloatObject::object() const { return &records_->any; }

Operand::Operand(HostContext ctx, const TestArray& array) {
  if (array.kind() != Kind::float32) {
    value_ = to_host(ctx, array);
    return;
  }
  floats_ = std::make_unique<FloatObject>(array.extents(), array.as<float>());
  value_ = floats_->value();
}

ForeignObject::ForeignObject(const char* type_name, void* content) {
  man_.name = type_name;
  any_.manager = &man_;
  any_.content = content;
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

TestArray FloatNameRegistered::contents(const Value& value) {
  if (type_of(value) != XTFloat::type_name) throw std::invalid_argument("no object of the float name");
  void* content = hvm::object_of(value.record())->content.get();
  return array_in<double>(*static_cast<XTObject<ArrayOf<XTDouble>>*>(content)->array->array);
}

}  // namespace arrayfold::test
