// refhost/script/text/values_as_text_test.cpp: numbers, tables and the brackets of arrays as text

#include <gtest/gtest.h>

#include "script/text/array_layout.hpp"
#include "script/text/number_text.hpp"
#include "script/text/printer.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm::testing {
namespace {

std::string offset_text(const Extents& extents, std::int64_t edge) {
  return bracketed(extents, edge, [&](const Extents& position) {
    std::int64_t offset = 0;
    for (std::size_t i = 0; i < extents.size(); ++i) offset = offset * extents[i] + position[i];
    return std::to_string(offset);
  });
}

TEST(NumberText, FloatingPointNumbers_AlwaysShowThatTheyAre) {
  EXPECT_EQ(real_text(2.0, Detail::brief), "2.0");
  EXPECT_EQ(real_text(-0.0, Detail::full), "-0.0");
  EXPECT_EQ(real_text(1.0 / 3, Detail::brief), "0.333333");
  EXPECT_EQ(real_text(1.0 / 3, Detail::full), "0.3333333333333333");
  EXPECT_EQ(real_text(1e300, Detail::full), "1e+300");
  EXPECT_EQ(real_text(-0.0 / 0.0, Detail::full), "nan");
}

TEST(NumberText, CountsOfOne_AreSingular) {
  EXPECT_EQ(counted(1, "index", "indices"), "1 index");
  EXPECT_EQ(counted(0, "index", "indices"), "0 indices");
}

TEST(Printer, ShortensWhatIsLong) {
  const Printer printer(Detail::brief, {});
  EXPECT_EQ(printer.shortened_text(Value(std::string_view("\xCF\x80\xCF\x80x")), 3), "\"\xCF\x80\xCF\x80x\"");
  EXPECT_EQ(printer.shortened_text(Value(std::string_view("\xCF\x80\xCF\x80xy")), 3),
            "\"\xCF\x80\xCF\x80x\"... (4 characters)");
  std::vector<Value> numbers;
  for (int i = 0; i < 100; ++i) numbers.emplace_back(i);
  EXPECT_EQ(printer.shortened_text(Value::table_of(numbers), 2), "[0, 1, 2, 3, ...] (100 entries)");
  EXPECT_EQ(printer.shortened_text(Value::table_of(numbers)), printer.text(Value::table_of(numbers)));
}

TEST(ArrayLayout, Brackets_NestByAxis) {
  EXPECT_EQ(offset_text({2, 3}, 0), "[[0, 1, 2], [3, 4, 5]]");
  EXPECT_EQ(offset_text({}, 0), "0");
  EXPECT_EQ(offset_text({2, 0}, 0), "[[], []]");
}

TEST(ArrayLayout, AnEdge_LeavesOutTheMiddleOfLongAxes) {
  EXPECT_EQ(offset_text({7}, 3), "[0, 1, 2, ..., 4, 5, 6]");
  EXPECT_EQ(offset_text({6}, 3), "[0, 1, 2, 3, 4, 5]");
  EXPECT_EQ(offset_text({3, 3}, 1), "[[0, ..., 2], ..., [6, ..., 8]]");
}

TEST(ArrayLayout, Edges_ShrinkUntilTheTextIsBrief) {
  EXPECT_EQ(edge_of({2000}), 3);
  EXPECT_EQ(edge_of({100, 100, 100, 100}), 2);
  EXPECT_EQ(edge_of(Extents(20, 10)), 1);
}

TEST(Printer, Objects_ShowAsTheGivenTextSays) {
  const Printer printer(Detail::brief, [](std::string& out, const HostValue&) { out += "an object"; });
  EXPECT_EQ(printer.text(Value::table_of({Value(1), Value("a"), Value(0.5)})), "[1, \"a\", 0.5]");
  EXPECT_EQ(printer.text(Value("a")), "a");
  EXPECT_EQ(printer.text_in_table(Value("a")), "\"a\"");
  HostValue object = nil_record();
  object.tag = ValueTag::object;
  object.lifetime = arrayfold::Lifetime::none;
  EXPECT_EQ(printer.text(Value::sharing(object)), "an object");
}

TEST(Printer, ATableWithinItself_IsShownAsThreeDots) {
  const Value table = Value::table_of({Value(1)});
  HostValue itself = table.record();
  itself.lifetime = arrayfold::Lifetime::none;
  set_entry(table_of(table.record()), 1, itself);
  EXPECT_EQ(Printer(Detail::brief, {}).text(table), "[1, [...]]");
  set_entry(table_of(table.record()), 1, Value().record());  // a table within itself would never be freed
}

TEST(ValueKinds, OfATagWithoutAName_IsAValue) {
  HostValue record = nil_record();
  record.tag = ValueTag::scalar_80;
  EXPECT_EQ(kind_in_words(Value::sharing(record)), "a value");
}

TEST(ValueKinds, Names_HaveTheirArticles) {
  EXPECT_EQ(kind_in_words(Value(1)), "an int");
  EXPECT_EQ(kind_in_words(Value(std::int64_t{1})), "an int64");
  EXPECT_EQ(kind_in_words(Value(1.0)), "a real");
  EXPECT_EQ(kind_in_words(Value(u"w")), "a string");
  EXPECT_EQ(kind_in_words(Value()), "nil");
  EXPECT_EQ(with_article("object"), "an object");
  EXPECT_EQ(with_article("double"), "a double");
}

}  // namespace
}  // namespace hvm::testing
