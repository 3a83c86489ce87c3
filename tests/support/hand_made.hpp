// support/hand_made.hpp: objects that no host makes
//
// Objects of the float kind, which is never registered, and of types that are none of the module's. The host never
// releases them: they live as long as their makers here do.

#pragma once

#include <memory>
#include <vector>

#include "support/module_test.hpp"

namespace arrayfold::test {

/// Counts one reference to a hand-made object for whoever made it, so that the host never releases it.
void hold(HostAny& any);

/// An object of the float kind.
class FloatObject {
 public:
  FloatObject(const std::vector<std::size_t>& extents, const std::vector<float>& elements);
  FloatObject(const FloatObject&) = delete;
  FloatObject& operator=(const FloatObject&) = delete;
  ~FloatObject();
  Value value();
  const HostAny* object() const;

 private:
  struct Records;
  std::unique_ptr<Records> records_;
};

/// An object of a type with another name, which may be null, over content of the caller's or none.
class ForeignObject {
 public:
  explicit ForeignObject(const char* type_name = "$foreign", void* content = nullptr);
  ForeignObject(const ForeignObject&) = delete;
  ForeignObject& operator=(const ForeignObject&) = delete;
  Value value();
  const HostAny* object() const { return &any_; }

 private:
  AnyMan man_{};
  HostAny any_{};
};

/// The type of float arrays, registered with the host while this lives. Its objects take doubles, as results do.
class FloatNameRegistered {
 public:
  FloatNameRegistered();
  ~FloatNameRegistered();
  FloatNameRegistered(const FloatNameRegistered&) = delete;
  FloatNameRegistered& operator=(const FloatNameRegistered&) = delete;

  /// What such an object holds: doubles.
  static TestArray contents(const Value& value);
  static std::vector<double> elements(const Value& value) { return contents(value).as<double>(); }
};

/// The same with objects that take floats, as those results do that are of the kind of a float operand.
class FloatKindRegistered {
 public:
  FloatKindRegistered();
  ~FloatKindRegistered();
  FloatKindRegistered(const FloatKindRegistered&) = delete;
  FloatKindRegistered& operator=(const FloatKindRegistered&) = delete;
};

/// An object of any kind, made by the host where it can be.
class Operand {
 public:
  Operand(HostContext ctx, const TestArray& array);
  Operand(HostContext ctx, Kind kind, const Extents& extents, const Numbers& numbers)
      : Operand(ctx, TestArray(kind, extents, numbers)) {}
  Value value() { return value_; }

 private:
  std::unique_ptr<FloatObject> floats_;
  Value value_;
};

}  // namespace arrayfold::test
