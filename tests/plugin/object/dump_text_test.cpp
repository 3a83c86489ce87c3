// object/dump_text_test.cpp: the text of dump, held against the JSON library byte for byte

#include <climits>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <string>

#include "object/dump_text.hpp"
#include "reference.hpp"
#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

constexpr double positive_infinity = std::numeric_limits<double>::infinity();

class DumpText : public ModuleTest {
 protected:
  std::string text(Value& array, int indent) const {
    const Answer answer = method(array, "dump", {Value(indent)});
    EXPECT_EQ(answer.returned, 1);
    return std::string(hvm::text_of(answer.result.record()));
  }

  void expect_library_text(const TestArray& array, int indent) const {
    Value value = to_host(ctx(), array);
    ASSERT_EQ(text(value, indent), library_text(array, indent));
  }
};

TEST_F(DumpText, OfEachKind_IsAsTheKindWritesIt) {
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {3}, {1, 2, 3})), "[1,2,3]");
  EXPECT_EQ(dump(array_of<XTBool>(ctx(), {2}, {true, false})), "[true,false]");
  EXPECT_EQ(dump(array_of<XTDouble>(ctx(), {3}, {1, 0.5, std::nan("")})), "[1.0,0.5,null]");
  EXPECT_EQ(dump(array_of<XTInt64>(ctx(), {2}, {INT64_MAX, INT64_MIN})), "[9223372036854775807,-9223372036854775808]");
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {2}, {INT32_MAX, INT32_MIN})), "[2147483647,-2147483648]");
  EXPECT_EQ(dump(array_of<XTDouble>(ctx(), {2}, {positive_infinity, -positive_infinity})), "[null,null]");
}

TEST_F(DumpText, OfDoubles_IsTheShortestThatReadsBack) {
  EXPECT_EQ(
      dump(array_of<XTDouble>(ctx(), {8}, {-0.0, 0.1, 1e16, 1e-7, 5e-324, 1.7976931348623157e308, 1.0 / 3, 1e14})),
      "[-0.0,0.1,1e+16,1e-07,5e-324,1.7976931348623157e+308,0.3333333333333333,100000000000000.0]");
}

TEST_F(DumpText, OfAZeroDimensionalArray_IsABareScalar) {
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {}, {-5})), "-5");
  EXPECT_EQ(dump(array_of<XTBool>(ctx(), {}, {true})), "true");
  EXPECT_EQ(dump(array_of<XTDouble>(ctx(), {}, {2})), "2.0");
  Value scalar = array_of<XTInt>(ctx(), {}, {7});
  EXPECT_EQ(text(scalar, 4), "7");
}

TEST_F(DumpText, OfEmptyShapes_StopsAtTheFirstZeroExtent) {
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {0}, {})), "[]");
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {2, 0}, {})), "[[],[]]");
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {0, 3}, {})), "[]");
  EXPECT_EQ(dump(array_of<XTInt>(ctx(), {2, 1, 0, 5}, {})), "[[[]],[[]]]");
  Value empty = array_of<XTInt>(ctx(), {2, 0}, {});
  EXPECT_EQ(text(empty, 1), "[\n [],\n []\n]");
  Value none = array_of<XTInt>(ctx(), {0}, {});
  EXPECT_EQ(text(none, 3), "[]");
}

TEST_F(DumpText, WithIndent_PutsEveryElementOnALineOfItsOwn) {
  Value matrix = array_of<XTInt>(ctx(), {2, 2}, {1, 2, 3, 4});
  EXPECT_EQ(text(matrix, 2), "[\n  [\n    1,\n    2\n  ],\n  [\n    3,\n    4\n  ]\n]");
  EXPECT_EQ(text(matrix, 0), "[\n[\n1,\n2\n],\n[\n3,\n4\n]\n]");
}

TEST_F(DumpText, OfAStoredByteThatIsNoTruthValue_IsTrue) {
  Value bools = array_of<XTBool>(ctx(), {3}, {false, true, false});
  auto* bytes = static_cast<unsigned char*>(storage_of(bools).address);
  bytes[2] = 0x40;
  EXPECT_EQ(dump(bools), "[false,true,true]");
}

TEST_F(DumpText, OfAnyIndent_IsSafe) {
  Value vector = array_of<XTInt>(ctx(), {2}, {1, 2});
  for (const int indent : {512, 513, 1024, 1025, 4096, 100000, 1000000}) {
    const std::string blanks(static_cast<std::size_t>(indent), ' ');
    EXPECT_EQ(text(vector, indent), "[\n" + blanks + "1,\n" + blanks + "2\n]") << indent;
  }
  EXPECT_EQ(text(vector, INT_MIN), "[1,2]");
  Value cube = array_of<XTInt>(ctx(), {1, 1, 1}, {5});
  EXPECT_EQ(text(cube, 3000).size(), 3 + 3 + 1 + 6 + 3000u * (1 + 2 + 3 + 2 + 1));
}

TEST_F(DumpText, LongerThanAHostRecordTakes_ThrowsBadAlloc) {
  Value vector = array_of<XTInt>(ctx(), {2}, {1, 2});
  EXPECT_THROW(method(vector, "dump", {Value(INT_MAX)}), std::bad_alloc);
  EXPECT_THROW(method(vector, "dump", {Value(INT_MAX / 2)}), std::bad_alloc);
  Value one = array_of<XTInt>(ctx(), {1}, {1});
  EXPECT_THROW(method(one, "dump", {Value(INT_MAX)}), std::bad_alloc);
  EXPECT_THROW(method(one, "dump", {Value(INT_MAX - 4)}), std::bad_alloc);
}

TEST_F(DumpText, OfCountlessEmptyRows_ThrowsBeforeItWrites) {
  // Their number times the minimum length of each is one less than what wraps to 0.
  Value rows = array_of<XTDouble>(ctx(), {14002645, 65537, 6700417, 0}, {});
  const auto before = allocations().made;
  Value indent(0), result;
  HostValue* args[] = {indent.address()};
  const auto callback = hvm::callbacks_of(hvm::object_of(rows.record())).method;
  EXPECT_THROW(callback(ctx(), rows.address(), "dump", args, 1, result.address(), 0), std::bad_alloc);
  EXPECT_EQ(allocations().made, before);
}

/// The bytes that the system can give without ending a process, as /proc/meminfo says; 0 where it does not say.
std::size_t available_memory() {
  std::ifstream file("/proc/meminfo");
  std::size_t kibibytes = 0;
  for (std::string word; file >> word;)
    if (word == "MemAvailable:") file >> kibibytes;
  return kibibytes * 1024;
}

TEST_F(DumpText, AsLongAsAHostRecordTakes_IsWritten) {
  // The text and the host's copy of it, 2 GiB each.
  if (available_memory() < std::size_t{6} << 30)
    GTEST_SKIP()
        << "needs 6 GiB of memory, and with less the system would end the process; the texts that are one byte "
           "too long for a record are refused in another test";
  // "[\n" + five times blanks + "1" + four times ",\n" + "\n]". More room is wished for than a text may take.
  Value ones = array_of<XTInt>(ctx(), {5}, {1, 1, 1, 1, 1});
  static_assert(5 * 429496726 + 17 == INT_MAX, "five indents leave room for the rest");
  const Answer answer = method(ones, "dump", {Value(429496726)});
  EXPECT_EQ(hvm::text_of(answer.result.record()).size(), static_cast<std::size_t>(INT_MAX));
  // One byte more, which shows only when the number is written.
  Value longer = array_of<XTInt>(ctx(), {1}, {1234567});
  EXPECT_THROW(method(longer, "dump", {Value(INT_MAX - 10)}), std::bad_alloc);
}

TEST_F(DumpText, BeyondItsBound_ThrowsWithoutTakingMemory) {
  constexpr std::size_t bound = std::size_t{INT_MAX} + 32;  // what a record takes, and a number
  arrayfold::DumpText text(8);
  const auto before = allocations().made;
  EXPECT_THROW(text.room(bound + 1), std::bad_alloc);
  text.commit(text.data() + 8);
  EXPECT_THROW(text.room(bound - 7), std::bad_alloc);
  EXPECT_EQ(allocations().made, before);
}

TEST_F(DumpText, OfManyDimensions_NeedsNoStack) {
  constexpr int rank = 200000;
  const std::vector<std::size_t> extents(rank, 1);
  Value deep = array_of<XTInt>(ctx(), extents, {3});
  EXPECT_EQ(dump(deep), std::string(rank, '[') + "3" + std::string(rank, ']'));
}

// ---- Random arrays of every kind, rank and indent.

std::mt19937_64 random_engine(20240229);

double random_double() {
  const auto bits = random_engine();
  switch (bits % 5) {
    case 0:
      return std::ldexp(static_cast<double>(random_engine()), static_cast<int>(random_engine() % 128) - 96);
    case 1:
      return static_cast<double>(static_cast<std::int64_t>(random_engine()) >> (random_engine() % 64));
    case 2:
      return static_cast<double>(static_cast<std::int32_t>(random_engine())) / 1000;
    case 3:
      return static_cast<double>(random_engine() % 1000) * 1e-3;
    default:
      return load<double>(&bits);  // any bits at all, NaN and subnormals included
  }
}

std::vector<std::size_t> random_extents() {
  std::vector<std::size_t> extents(random_engine() % 7);
  for (auto& extent : extents)
    extent = random_engine() % 16 == 0 ? 0 : 1 + random_engine() % (extents.size() > 3 ? 3 : 7);
  return extents;
}

/// Numbers of all sizes, for integers as they fit into 32 and into 64 bits.
Number random_element(Kind kind) {
  if (kind == Kind::boolean) return random_engine() & 1;
  if (kind == Kind::int32) return static_cast<std::int32_t>(random_engine()) >> (random_engine() % 32);
  if (kind == Kind::int64) return static_cast<std::int64_t>(random_engine()) >> (random_engine() % 64);
  return random_double();
}

TestArray random_array(Kind kind) {
  const Extents extents = random_extents();
  Numbers numbers;
  for (std::size_t i = 0; i < size_of(extents); ++i) numbers.push_back(random_element(kind));
  return TestArray(kind, extents, numbers);
}

TEST_F(DumpText, OfRandomArrays_IsTheLibrarysOwn) {
  // 80 is the widest that the library itself writes safely in six dimensions.
  for (const int indent : {-1, -5, 0, 1, 2, 4, 7, 80})
    for (int round = 0; round < 150; ++round)
      for (const Kind kind : {Kind::boolean, Kind::int32, Kind::int64, Kind::float64})
        expect_library_text(random_array(kind), indent);
}

TEST_F(DumpText, OfManyDoubles_IsTheLibrarysOwn) {
  std::vector<double> elements(200000);
  for (double& element : elements) element = random_double();
  expect_library_text(TestArray(Extents{elements.size()}, elements), -1);
}

}  // namespace
}  // namespace arrayfold::test
