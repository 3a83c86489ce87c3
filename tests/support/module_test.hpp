// support/module_test.hpp: the module under the reference host, as tests speak of it
//
//     EXPECT_EQ(dump(call("xarange", {Value(3)}).result), "[0.0,1.0,2.0]");
//
// After every test the host's counters are back to where they began. A call that throws has left its result alone.

#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "array/boxing.hpp"
#include "array/kind_frames.hpp"
#include "kernel/kernel.hpp"

namespace arrayfold::test {

using hvm::Value;

/// What came of a call into the module.
struct Answer {
  int returned = 0;                     // what the function or callback answered
  Value result;                         // the result record afterwards
  bool untouched = false;               // the result record is byte for byte what it was
  std::vector<std::string> operations;  // the host operations in order: "AnyCheck 0", "SetReal result", "NewAny"
};

/// The module, loaded once in a test program.
class Module {
 public:
  static const Module& loaded();

  const std::vector<FunctionRow>& rows() const { return rows_; }
  const FunctionRow* table() const { return table_; }
  /// What happened during PKG_Init, in order: "register 93", "NewAnyMan", "RegisterAnyMan", ...
  const std::vector<std::string>& start() const { return start_; }
  /// The host's own record of the same, without the registration of functions.
  const std::vector<hvm::RecordedCall>& start_calls() const { return start_calls_; }
  /// Runs PKG_Init once more, for a host whose registration of functions answers `answer`.
  int init_again(int answer) const;
  int init_returned() const { return init_returned_; }
  /// The function of a name; the test ends when there is none.
  EntryFunction entry(const std::string& name) const;

 private:
  Module();
  std::vector<FunctionRow> rows_;
  const FunctionRow* table_ = nullptr;
  std::vector<std::string> start_;
  std::vector<hvm::RecordedCall> start_calls_;
  PackageInit init_ = nullptr;
  int init_returned_ = 0;
};

class ModuleTest : public ::testing::Test {
 protected:
  ModuleTest();
  ~ModuleTest() override;

  HostContext ctx() const { return context_.handle(); }

  /// Calls a function of the table. The result record starts as the integer `sentinel`.
  Answer call(const std::string& name, std::vector<Value> args) const;
  /// The same with an argument count of its own, which may be negative or beyond the arguments.
  Answer call_with_count(const std::string& name, std::vector<Value> args, int nargs) const;
  /// Calls a method of the object in `self` through its type's callback.
  Answer method(Value& self, const char* name, std::vector<Value> args = {}, int flag = 0) const;
  /// Applies an operator through the callback of the type named `type_name`; null operands are allowed. The operations
  /// name their operands: "NumberCheck right", "GetAny left".
  Answer apply(const char* type_name, int opcode, HostValue* left, HostValue* right) const;
  /// The same into a record of the caller's: an operand, and the operator works in place.
  Answer apply_into(HostValue* result, const char* type_name, int opcode, HostValue* left, HostValue* right) const;

  /// The text of the array in `value`, by its `dump` method.
  std::string dump(Value& value) const;
  std::string dump(Value&& value) const { return dump(value); }
  /// The extents of the array in `value`, by its `shape` method.
  std::vector<std::int64_t> shape(Value& value) const;

  static constexpr int sentinel = 0x5e471e1;

 private:
  hvm::Context context_;
  hvm::Counts before_;
};

/// The operation sequence of `run` between two points, with arguments and result named by their place.
std::vector<std::string> described(const std::vector<hvm::RecordedCall>& calls, const HostValue* args, int nargs,
                                   const HostValue* result);

/// The type's name of the object in `value`; empty when it holds none.
std::string type_of(const Value& value);

/// A new object of `Kind` that holds `elements` in the order given under `extents`.
template <class Kind>
Value array_of(HostContext ctx, const std::vector<std::size_t>& extents,
               const std::vector<typename Kind::element>& elements) {
  using Element = typename Kind::element;
  auto array = std::make_unique<ArrayOf<Kind>>();
  array->array = std::make_shared<xarray_of<Element>>(Shape(extents.begin(), extents.end()));
  auto& storage = array->array->storage();
  if (storage.size() != elements.size()) throw std::invalid_argument("elements do not fill the extents");
  std::copy(elements.begin(), elements.end(), storage.begin());
  return Value::object(box_array<Kind>(ctx, array));
}

/// The container behind an object of `Kind`; null when `value` is no such object.
template <class Kind>
xarray_of<typename Kind::element>* container_of(const Value& value) {
  auto* any = hvm::object_of(value.record());
  auto* array = any == nullptr ? nullptr : unbox_array<Kind>(any);
  return array == nullptr ? nullptr : array->array.get();
}

/// The elements of an object of `Kind` in storage order.
template <class Kind>
std::vector<typename Kind::element> elements_of(const Value& value) {
  const auto* container = container_of<Kind>(value);
  if (container == nullptr) throw std::invalid_argument("no array of this kind");
  // Not in braces: two pointers would be two bools.
  return std::vector<typename Kind::element>(container->storage().begin(), container->storage().end());
}

/// The indices of an element access, as a host hands them over in the place of a right operand: the entries follow the
/// count, or stand elsewhere behind a pointer.
class IndexList {
 public:
  enum class Entries { in_place, elsewhere };

  IndexList(std::vector<Value> indices, Entries where);
  HostValue* address() { return static_cast<HostValue*>(static_cast<void*>(list_.data())); }
  std::vector<Value>& indices() { return indices_; }

 private:
  std::vector<Value> indices_;
  std::vector<std::byte> entries_;
  std::vector<std::byte> list_;
};

/// A value of a tag that stands for nothing a module knows: the record of a tag with this payload, not owned.
Value raw(ValueTag tag, std::uint64_t payload = 0);

}  // namespace arrayfold::test
