// refhost/kernel/kernel_printing_test.cpp: the text of every kind of value

#include <limits>
#include <stdexcept>

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using KernelPrinting = KernelTest;

TEST_F(KernelPrinting, Numbers_ShowInTheShortestFormThatReadsBack) {
  const std::pair<Value, const char*> rows[] = {{Value(-7), "-7"},
                                                {Value(std::int64_t{1} << 40), "1099511627776"},
                                                {Value(0.1), "0.1"},
                                                {Value(2.0), "2.0"},
                                                {Value(-0.0), "-0.0"},
                                                {Value(1e300), "1e+300"},
                                                {Value(2.2250738585072014e-308), "2.2250738585072014e-308"},
                                                {Value(std::numeric_limits<double>::infinity()), "inf"},
                                                {Value(std::numeric_limits<double>::quiet_NaN()), "nan"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(printed(value.record()), text);
}

TEST_F(KernelPrinting, Strings_ShowAsTheyStandAndQuotedInTables) {
  EXPECT_EQ(printed(Value("a \"b\"\n").record()), "a \"b\"\n");
  EXPECT_EQ(printed(Value(u"é").record()), "é");
  const Value table = Value::table_of({Value("a \"b\"\\\n\t"), Value(u"wide")});
  EXPECT_EQ(printed(table.record()), R"(["a \"b\"\\\n\t", w"wide"])");
}

TEST_F(KernelPrinting, Tables_ShowTheirKeysBehindTheOrderedPart) {
  Value table = Value::table_of({Value(1), Value::table_of({Value()}), Value::table()});
  HostHash* hash = table_of(table.record());
  *slot(hash, "a") = Value(2.5).give_up();
  *slot(hash, 7) = Value(3).give_up();
  *slot(hash, Value(2.0).record()) = Value(4).give_up();
  EXPECT_EQ(printed(table.record()), R"([1, [nil], [], "a": 2.5, 7: 3, 2.0: 4])");
}

TEST_F(KernelPrinting, ATableInsideItself_IsShownOnce) {
  Value table = Value::table_of({Value(1)});
  assign(*slot(table_of(table.record()), 1), table.record());
  EXPECT_EQ(printed(table.record()), "[1, [...]]");
  EXPECT_EQ(printed(table.record()), "[1, [...]]");
  release(*find(table_of(table.record()), 1));
}

TEST_F(KernelPrinting, ATableHeldTwice_IsShownTwice) {
  Value inner = Value::table_of({Value(1)});
  EXPECT_EQ(printed(Value::table_of({inner, inner}).record()), "[[1], [1]]");
}

TEST_F(KernelPrinting, Objects_ShowAsTheCallerSays) {
  const Value table = Value::table_of({new_toy()});
  EXPECT_EQ(printed(table.record()), "[<$toy>]");
  const auto by_content = [](std::string& out, const HostValue&) { out += "toy!"; };
  EXPECT_EQ(printed(table.record(), by_content), "[toy!]");
}

TEST_F(KernelPrinting, AnExceptionOfTheCallersText_LeavesTheTablesUnmarked) {
  const Value table = Value::table_of({Value::table_of({new_toy()})});
  const auto fail = [](std::string&, const HostValue&) { throw std::runtime_error("no text"); };
  EXPECT_THROW(printed(table.record(), fail), std::runtime_error);
  EXPECT_EQ(printed(table.record()), "[[<$toy>]]");
}

TEST_F(KernelPrinting, OtherTags_HaveATextToo) {
  EXPECT_EQ(printed(Value().record()), "nil");
  EXPECT_EQ(printed(tagged(13)), "<code>");
  EXPECT_EQ(printed(tagged(80)), "<tag 80>");
  EXPECT_EQ(printed(tagged(16)), "<>");
  EXPECT_EQ(printed(tagged(5)), "<tag 5>");
}

}  // namespace
}  // namespace hvm::testing
