// refhost/script/explain/columns_test.cpp: objects that may be columns, by their addresses

#include "script/explain/columns.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace hvm::testing {
namespace {

/// Addresses that differ in their upper bits alone. Nothing reads what is there.
std::vector<const HostAny*> distant_addresses(std::size_t count) {
  std::vector<const HostAny*> made;
  for (std::uintptr_t i = 1; i <= count; ++i) made.push_back(reinterpret_cast<const HostAny*>(i << 32 | 0x10));
  return made;
}

TEST(Columns, AtAddressesWithTheSameLowerBits_AreAllRemembered) {
  Columns columns;
  const auto objects = distant_addresses(8);
  for (const HostAny* object : objects) columns.mark(object);
  for (const HostAny* object : objects) EXPECT_TRUE(columns.has(object)) << object;
}

TEST(Columns, BeyondTheRoom_DisplaceTheOldest) {
  Columns columns;
  const auto objects = distant_addresses(100);
  for (const HostAny* object : objects) {
    columns.mark(object);
    EXPECT_TRUE(columns.has(object)) << object;
  }
  EXPECT_FALSE(columns.has(objects.front()));
  EXPECT_TRUE(columns.has(objects[objects.size() - 2]));
}

TEST(Columns, ThatAreForgotten_LeaveTheOthers) {
  Columns columns;
  const auto objects = distant_addresses(3);
  for (const HostAny* object : objects) columns.mark(object);
  columns.mark(objects[1]);
  columns.forget(objects[1]);
  EXPECT_TRUE(columns.has(objects[0]));
  EXPECT_FALSE(columns.has(objects[1]));
  EXPECT_TRUE(columns.has(objects[2]));
  columns.forget(objects[0]);
  columns.forget(objects[0]);
  EXPECT_FALSE(columns.is_empty());
  columns.forget(objects[2]);
  EXPECT_TRUE(columns.is_empty());
}

TEST(Columns, AreNotNull) {
  Columns columns;
  columns.mark(nullptr);
  EXPECT_TRUE(columns.is_empty());
  EXPECT_FALSE(columns.has(static_cast<const HostAny*>(nullptr)));
}

}  // namespace
}  // namespace hvm::testing
