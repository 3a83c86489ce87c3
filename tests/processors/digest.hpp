// processors/digest.hpp: what the module computes, as one number for each function
//
// Each call is reduced to bits: what it returned or threw, and all that its result holds. A digest is computed from
// all calls of one function, in their order. Two runs agree on every bit where their digests are equal.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/module_test.hpp"

namespace arrayfold::test {

class Digest {
 public:
  /// Two digests of equally many words are different where one word is.
  void add(std::uint64_t word) {
    bits_ ^= word;
    bits_ *= 0x9e3779b97f4a7c15;
    bits_ ^= bits_ >> 29;
  }
  void add(std::string_view text);
  /// One NaN stands for all: the processor and the compiler choose its bits.
  void add(double x);
  void add(const TestArray& array);

  std::uint64_t bits() const { return bits_; }

 private:
  std::uint64_t bits_ = 0x6a09e667f3bcc909;
};

struct NamedDigest {
  std::string name;
  Digest digest;
};

/// Calls into the module, each added to the digest of its function. The calls of one process share the module's engine
/// of random numbers, so that a digest also depends on the calls before it.
class DigestedCalls {
 public:
  /// Calls a function of the module's table. A float array in the result is read as the family stores it.
  void call(const std::string& function, std::vector<Value> args);
  /// The same where only the extents of the result are defined.
  void call_for_extents(const std::string& function, std::vector<Value> args);
  void method(Value& self, const char* name, std::vector<Value> args);
  /// `left op right` into a record of its own, by the callback of the left object's type, else of the right's.
  void operate(const std::string& name, Opcode opcode, Value left, Value right);
  /// `left op= right`.
  void change(const std::string& name, Opcode opcode, Value& left, Value right);
  /// The elements at these indices, read, and written with `x`.
  void read(Value& array, const std::vector<Value>& indices);
  void write(Value& array, const std::vector<Value>& indices, Value x);

  /// Adds what `value` holds to a digest that exists.
  void add(const std::string& name, const Value& value);

  /// In the order of the first calls.
  const std::vector<NamedDigest>& digests() const { return digests_; }
  HostContext ctx() const { return context_.handle(); }

 private:
  Digest& digest_of(const std::string& name);

  hvm::Context context_;
  std::vector<NamedDigest> digests_;
};

/// Calls every function of the module over fixed input, its methods and its operators.
void call_functions(DigestedCalls& calls);
void call_methods_and_operators(DigestedCalls& calls);

/// A function that the digests leave out, and why.
struct LeftOut {
  const char* name;
  const char* reason;
};
const std::vector<LeftOut>& functions_left_out();

/// The functions whose last bits are the same wherever the processor fuses products with sums. Elsewhere the digests
/// leave them out.
const std::vector<std::string>& functions_of_fused_products();

}  // namespace arrayfold::test
