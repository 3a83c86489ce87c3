// refhost/description/vocabulary_test.cpp: the words of the column Accepts

#include "description/vocabulary.hpp"

#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace hvm::description {
namespace {

using Kinds = std::vector<std::string>;

TEST(KindWords, EachKind_IsItself) {
  const Json kinds = kinds_in_json();
  EXPECT_EQ(kinds.size(), 15u);
  for (const auto& [name, kind] : kinds.items()) EXPECT_EQ(read_kinds(name), Kinds{name});
}

TEST(KindWords, WordsForSeveral_GiveEachOfThem) {
  EXPECT_EQ(read_kinds("number"), (Kinds{"int", "int64", "real"}));
  EXPECT_EQ(read_kinds("array"), (Kinds{"int array", "int64 array", "double array", "bool array"}));
  EXPECT_EQ(read_kinds("array of numbers"), (Kinds{"int array", "int64 array", "double array"}));
}

TEST(KindWords, Lists_KeepTheirOrder) {
  EXPECT_EQ(read_kinds("int, int64 or real"), (Kinds{"int", "int64", "real"}));
  EXPECT_EQ(read_kinds("table or data literal"), (Kinds{"table", "data literal"}));
  EXPECT_EQ(read_kinds("nil, string or quoted call"), (Kinds{"nil", "string", "quoted call"}));
}

TEST(KindWords, NamesOfElementsBeforeAnArray_AreArrays) {
  EXPECT_EQ(read_kinds("int or int64 array"), (Kinds{"int array", "int64 array"}));
  EXPECT_EQ(read_kinds("int, int64 or double array"), (Kinds{"int array", "int64 array", "double array"}));
  EXPECT_EQ(read_kinds("number, int or int64 array"), (Kinds{"int", "int64", "real", "int array", "int64 array"}));
  EXPECT_EQ(read_kinds("int64 array or int"), (Kinds{"int64 array", "int"}));
}

TEST(KindWords, AKindThatComesTwice_StandsOnce) {
  EXPECT_EQ(read_kinds("number or int"), (Kinds{"int", "int64", "real"}));
  EXPECT_EQ(read_kinds("double array or array of numbers"), (Kinds{"double array", "int array", "int64 array"}));
}

TEST(KindWords, UnknownWords_AreNoList) {
  for (const char* list : {"", "float", "float array", "ints", "double arrays", "an int", "int,int64", "int or", "or"})
    EXPECT_EQ(read_kinds(list), std::nullopt) << list;
}

TEST(KindTable, HasTagsAndTypes) {
  const Json kinds = kinds_in_json();
  EXPECT_EQ(kinds["int"], Json({{"tag", 0}}));
  EXPECT_EQ(kinds["data literal"], Json({{"tag", 13}}));
  EXPECT_EQ(kinds["double array"], Json({{"tag", 16}, {"type", "$xdoublearray"}}));
  EXPECT_EQ(kinds["any"], Json::object());
}

TEST(AcceptsCell, KindsAlone_HaveNoConstraint) {
  const Accepted accepted = read_accepts("int, int64 or double array");
  EXPECT_EQ(accepted.kinds, (Kinds{"int array", "int64 array", "double array"}));
  EXPECT_EQ(accepted.read_as + accepted.kind_of, "");
  EXPECT_FALSE(accepted.least_dimensions || accepted.most_dimensions || accepted.least);
  EXPECT_FALSE(accepted.is_square || accepted.is_not_zero);
}

TEST(AcceptsCell, ReadAs_NamesWhatANumberBecomes) {
  for (const char* kind : {"int", "int64", "double"})
    EXPECT_EQ(read_accepts("number, read as " + std::string(kind)).read_as, kind);
}

TEST(AcceptsCell, Bounds_AreThoseOfTheNumber) {
  EXPECT_EQ(read_accepts("number, 0 or more").least, 0);
  EXPECT_EQ(read_accepts("number, 1 or more").least, 1);
  const Accepted step = read_accepts("number, read as int, not 0");
  EXPECT_TRUE(step.is_not_zero);
  EXPECT_EQ(step.least, std::nullopt);
  EXPECT_EQ(step.read_as, "int");
}

TEST(AcceptsCell, Dimensions_HaveBothEnds) {
  struct Case {
    const char* constraint;
    std::optional<int> least, most;
    bool is_square;
  };
  for (const Case& one : {Case{"vector", 1, 1, false}, Case{"matrix", 2, 2, false}, Case{"square matrix", 2, 2, true},
                          Case{"1 or 2 dimensions", 1, 2, false}, Case{"2 or more dimensions", 2, {}, false}}) {
    const Accepted accepted = read_accepts("double array, " + std::string(one.constraint));
    EXPECT_EQ(accepted.kinds, Kinds{"double array"}) << one.constraint;
    EXPECT_EQ(accepted.least_dimensions, one.least) << one.constraint;
    EXPECT_EQ(accepted.most_dimensions, one.most) << one.constraint;
    EXPECT_EQ(accepted.is_square, one.is_square) << one.constraint;
  }
}

TEST(AcceptsCell, TheKindOfAnother_IsNamed) {
  const Accepted accepted = read_accepts("number or array of numbers, of the kind of `a`");
  EXPECT_EQ(accepted.kind_of, "a");
  EXPECT_EQ(accepted.kinds.size(), 6u);
}

TEST(AcceptsCell, UnknownPhrases_AreToldInWhole) {
  for (const char* cell : {"", "matrix", "number, positive", "number, 2 or more", "double array, square", "array, 0 or",
                           "array, vector, of any length", "number, read as real"}) {
    try {
      read_accepts(cell);
      FAIL() << cell;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(std::string(error.what()), std::string(cell));
    }
  }
}

TEST(Counts, AreWordsOrDigits) {
  EXPECT_EQ(read_count("no"), 0);
  EXPECT_EQ(read_count("one"), 1);
  EXPECT_EQ(read_count("ten"), 10);
  EXPECT_EQ(read_count("12"), 12);
  for (const char* word : {"", "many", "-1", "1x", "99999"}) EXPECT_EQ(read_count(word), std::nullopt) << word;
}

}  // namespace
}  // namespace hvm::description
