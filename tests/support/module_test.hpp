// support/module_test.hpp: the module under the reference host, as tests speak of it
//
//     EXPECT_EQ(dump(call("xarange", {Value(3)}).result), "[0.0,1.0,2.0]");
//
// After every test the host's counters are back to where they began. A call that throws has left its result alone.

#pragma once

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kernel/kernel.hpp"
#include "support/test_array.hpp"

namespace arrayfold::test {

using hvm::Value;

/// What came of a call into the module.
struct Answer {
  int returned = 0;                     // what the function or callback returned
  Value result;                         // the result record afterwards
  bool untouched = false;               // the result record is byte for byte what it was
  std::vector<std::string> operations;  // the host operations in order: "AnyCheck 0", "SetReal result", "NewAny"
};

/// The file of the module: that of the build, or another one that the environment names in ARRAYFOLD_TEST_MODULE.
const char* module_path();

/// Whether the address sanitizer is in the process, be it with this program or with the module alone.
bool is_under_address_sanitizer();

/// The module, loaded once in a test program.
class Module {
 public:
  static const Module& loaded();

  const std::vector<FunctionRow>& rows() const { return rows_; }
  const FunctionRow* table() const { return table_; }
  /// What happened during PKG_Init, in order: "register" with the count of functions, "NewAnyMan", "RegisterAnyMan",
  /// ...
  const std::vector<std::string>& start() const { return start_; }
  /// The host's own record of the same, without the registration of functions.
  const std::vector<hvm::RecordedCall>& start_calls() const { return start_calls_; }
  /// Runs PKG_Init once more, for a host whose registration of functions returns `answer`.
  int init_again(int answer) const;
  int init_returned() const { return init_returned_; }
  /// The function of a name; the test ends when there is none.
  EntryFunction entry(const std::string& name) const;
  /// The functions that `entry` was asked for so far in this program.
  static const std::set<std::string>& asked();

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

  /// The call returned this and left the result record as it was; with the host operations, these and no others.
  static void expect_no_result(const Answer& answer, int returned, const std::string& what = {});
  static void expect_no_result(const Answer& answer, int returned, const Words& operations, const std::string& what);
  /// A call of a function returns 0 and leaves the result record as it was.
  void expect_failure(const std::string& name, std::vector<Value> args) const;

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

/// A new object of the host's that holds the array; not of the float kind, which no host has. Throws
/// std::invalid_argument where the elements do not fill the extents.
Value to_host(HostContext ctx, const TestArray& array);
/// What an object of one of the module's types holds. Throws std::invalid_argument when there is none.
TestArray from_host(const Value& value);
bool holds_array(const Value& value);
/// Whether the object holds this array, bit for bit. Takes no memory.
bool holds(const Value& value, const TestArray& array);

/// The same of one kind: a new object with elements in storage order, and the elements of one.
template <class Row>
Value array_of(HostContext ctx, const Extents& extents, const std::vector<typename Row::element>& elements) {
  return to_host(ctx, TestArray(extents, elements));
}
template <class Row>
std::vector<typename Row::element> elements_of(const Value& value) {
  return from_host(value).as<typename Row::element>();
}

/// Where the elements are, and how many there are, whatever the extents say.
struct StoredElements {
  void* address = nullptr;
  std::size_t count = 0;
};
StoredElements storage_of(const Value& value);
/// The container behind an object, to tell one from another.
const void* container_address(const Value& value);
/// The strides of an array, and what a walk goes back by at the end of each dimension.
std::vector<std::ptrdiff_t> strides_of(const Value& value);
std::vector<std::ptrdiff_t> backstrides_of(const Value& value);
/// Gives an array other extents, as `reshape` can leave them, also where the host knows no method of it.
void set_extents(const Value& value, const Extents& extents);

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
