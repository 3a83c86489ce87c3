// refhost/kernel/kernel_fixture.hpp: what every test of the kernel has around it
//
// A context, a toy type whose contents are counted, and the comparison of counts: a test that leaves anything behind
// fails.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "kernel/kernel.hpp"

namespace hvm::testing {

using namespace arrayfold;
using hvm::Value;  // the records' owner

/// The toy type: contents are plain integers on C++'s heap.
struct Toy {
  static constexpr char name[] = "$toy";
  static inline int live = 0;
  static inline bool is_out_of_memory = false;
  static inline HostContext last_context = nullptr;

  static void* create() {
    if (is_out_of_memory) return nullptr;
    ++live;
    return new int(7);
  }
  static void destroy(HostContext ctx, void* content) {
    last_context = ctx;
    --live;
    delete static_cast<int*>(content);
  }
  static HostBool method(HostContext, HostValue*, const char*, HostValue**, int, HostValue*, int) { return 1; }
  static HostBool op(HostContext, int, HostValue*, HostValue*, HostValue*) { return 0; }
  static AnyMan* make_manager() { return HVM_NewAnyMan(name, create, destroy, method, op, nullptr); }
};

class KernelTest : public ::testing::Test {
 protected:
  KernelTest() : before_(counts()) {
    Toy::live = 0;
    Toy::is_out_of_memory = false;
    HVM_RegisterAnyMan(Toy::name, Toy::make_manager());
  }

  ~KernelTest() override {
    forget_type(Toy::name);
    withhold_objects(false);
    fail_allocation(0);
    record_calls(false);
    EXPECT_EQ(Toy::live, 0) << "contents of objects are left";
    const Counts after = counts();
    EXPECT_EQ(after.objects, before_.objects);
    EXPECT_EQ(after.tables, before_.tables);
    EXPECT_EQ(after.strings, before_.strings);
    EXPECT_EQ(after.blocks, before_.blocks);
    EXPECT_EQ(after.records, before_.records);
    EXPECT_EQ(after.pieces, before_.pieces);
  }

  HostContext ctx() const { return context_.handle(); }
  Value new_toy() const { return Value::object(ctx(), Toy::name); }

  Context context_;
  Counts before_;
};

inline HostValue tagged(int tag) {
  HostValue record = nil_record();
  record.tag = static_cast<ValueTag>(tag);
  return record;
}

}  // namespace hvm::testing
