// refhost/kernel/kernel_strings_test.cpp: text in its four forms, who owns it and how long it is

#include <cstring>
#include <set>

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using namespace std::string_view_literals;

using KernelStrings = KernelTest;

Value converted(std::string_view text) {
  Value value(text);
  value.record().tag = ValueTag::converted_string;
  return value;
}

TEST_F(KernelStrings, StringCheckAll_TakesTheFourTextTagsAlone) {
  const std::set<int> text_tags = {2, 6, 11, 24};
  for (int tag = 0; tag < 256; ++tag) {
    HostValue record = tagged(tag);
    record.lifetime = Lifetime::none;
    EXPECT_EQ(HVM_StringCheckAll(&record) != 0, text_tags.count(tag) == 1) << "tag " << tag;
  }
  EXPECT_FALSE(HVM_StringCheckAll(nullptr));
}

TEST_F(KernelStrings, SetString_StoresACopy) {
  char text[] = "abc";
  Value value;
  HVM_SetString(ctx(), value.address(), text);
  text[0] = 'x';
  EXPECT_EQ(value.tag(), ValueTag::string);
  EXPECT_STREQ(HVM_AsString(value.address()), "abc");
  EXPECT_EQ(HVM_StringLen(value.address()), 3);
  EXPECT_NE(value.record().owned, 0u);
  EXPECT_EQ(value.record().lifetime, Lifetime::temporary);
  EXPECT_EQ(counts().strings, before_.strings + 1);
}

TEST_F(KernelStrings, SetStringEx_CopiesTheGivenLengthAndTerminatesIt) {
  Value value;
  HVM_SetStringEx(ctx(), value.address(), "abcdef", 2);
  EXPECT_STREQ(HVM_AsString(value.address()), "ab");
  HVM_SetStringEx(ctx(), value.address(), "a\0b", 3);
  EXPECT_EQ(HVM_StringLen(value.address()), 3);
  EXPECT_EQ(text_of(value.record()), "a\0b"sv);
}

TEST_F(KernelStrings, SetString_OfNullOrNegativeLength_StoresAnEmptyText) {
  Value value;
  HVM_SetString(ctx(), value.address(), nullptr);
  EXPECT_EQ(value.tag(), ValueTag::string);
  EXPECT_EQ(HVM_StringLen(value.address()), 0);
  HVM_SetStringEx(ctx(), value.address(), "abc", -1);
  EXPECT_STREQ(HVM_AsString(value.address()), "");
  HVM_SetWString(ctx(), value.address(), nullptr);
  EXPECT_EQ(value.tag(), ValueTag::wide_string);
  EXPECT_EQ(HVM_StringLen(value.address()), 0);
  HVM_SetWStringEx(ctx(), value.address(), u"abc", -1);
  EXPECT_EQ(HVM_StringLen(value.address()), 0);
}

TEST_F(KernelStrings, SetString_OfTheRecordsOwnText_IsSafe) {
  Value value("abcdef");
  HVM_SetString(ctx(), value.address(), HVM_AsString(value.address()) + 2);
  EXPECT_STREQ(HVM_AsString(value.address()), "cdef");
}

TEST_F(KernelStrings, WideSetters_StoreCopiesOf16BitText) {
  Value value;
  HVM_SetWString(ctx(), value.address(), u"abc");
  EXPECT_EQ(value.tag(), ValueTag::wide_string);
  EXPECT_EQ(wide_text_of(value.record()), u"abc"sv);
  EXPECT_EQ(load<const char16_t*>(value.record().payload)[3], u'\0');
  HVM_SetWStringEx(ctx(), value.address(), u"abcdef", 4);
  EXPECT_EQ(wide_text_of(value.record()), u"abcd"sv);
  EXPECT_EQ(HVM_StringLen(value.address()), 4);
  EXPECT_NE(value.record().owned, 0u);
}

TEST_F(KernelStrings, StringLen_OfWideText_CountsUnits) {
  EXPECT_EQ(HVM_StringLen(Value(u"\U0001F600é").address()), 3);
}

TEST_F(KernelStrings, AsString_OfWideText_GivesUtf8) {
  Value value(u"aé€\U0001F600");
  EXPECT_STREQ(HVM_AsString(value.address()), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  const char16_t lone[] = {0xD800, u'x', 0};
  EXPECT_STREQ(HVM_AsString(Value(lone).address()), "\xED\xA0\x80x");
}

TEST_F(KernelStrings, AsString_OfWideText_LastsForSevenMoreConversions) {
  std::vector<Value> values;
  std::vector<const char*> texts;
  for (char16_t c = u'a'; c < u'a' + 8; ++c) values.emplace_back(std::u16string_view(&c, 1));
  for (Value& value : values) texts.push_back(HVM_AsString(value.address()));
  for (std::size_t n = 0; n < texts.size(); ++n) EXPECT_EQ(texts[n], std::string(1, static_cast<char>('a' + n)));
}

TEST_F(KernelStrings, ConstSetters_ReferToTheLiteral) {
  static const char text[] = "literal";
  static const char16_t wide[] = u"literal";
  Value value;
  HVM_SetConstStringEx(nullptr, value.address(), text, 7);
  EXPECT_EQ(HVM_AsString(value.address()), text);
  EXPECT_EQ(value.record().owned, 0u);
  EXPECT_EQ(HVM_StringLen(value.address()), 7);
  HVM_SetConstStringEx(nullptr, value.address(), text, 3);
  EXPECT_EQ(text_of(value.record()), "lit"sv);
  HVM_SetConstWStringEx(nullptr, value.address(), wide, 7);
  EXPECT_EQ(wide_text_of(value.record()).data(), wide);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelStrings, ConstSetters_OfNull_GiveAnEmptyText) {
  Value value;
  HVM_SetConstStringEx(nullptr, value.address(), nullptr, 4);
  EXPECT_STREQ(HVM_AsString(value.address()), "");
  HVM_SetConstWStringEx(nullptr, value.address(), nullptr, 4);
  EXPECT_EQ(HVM_StringLen(value.address()), 0);
}

TEST_F(KernelStrings, Setters_OfNullRecord_LeaveNothingBehind) {
  HVM_SetString(ctx(), nullptr, "text");
  HVM_SetStringEx(ctx(), nullptr, "text", 2);
  HVM_SetWString(ctx(), nullptr, u"text");
  HVM_SetWStringEx(ctx(), nullptr, u"text", 2);
  HVM_SetConstStringEx(nullptr, nullptr, "text", 2);
  HVM_SetConstWStringEx(nullptr, nullptr, u"text", 2);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelStrings, Length_ThatIsNotRecorded_IsMeasured) {
  HostValue record{};
  record.tag = ValueTag::string;
  store<const char*>(record.payload, "by hand");
  EXPECT_EQ(HVM_StringLen(&record), 7);
  record.tag = ValueTag::wide_string;
  store<const char16_t*>(record.payload, u"hand");
  EXPECT_EQ(HVM_StringLen(&record), 4);
}

TEST_F(KernelStrings, StringRecord_HasLengthAndTextAtTheirOffsets) {
  Value value = Value::string_record("key");
  EXPECT_EQ(value.tag(), ValueTag::string_record);
  const auto* record = load<const char*>(value.record().payload);
  EXPECT_EQ(load<std::int32_t>(record + 16), 3);
  EXPECT_STREQ(record + 36, "key");
  EXPECT_STREQ(HVM_AsString(value.address()), "key");
  EXPECT_EQ(HVM_StringLen(value.address()), 3);
}

TEST_F(KernelStrings, ConvertedString_ReadsLikeAString) {
  Value value = converted("form");
  EXPECT_STREQ(HVM_AsString(value.address()), "form");
  EXPECT_EQ(HVM_StringLen(value.address()), 4);
}

TEST_F(KernelStrings, AsString_OfWhatIsNoText_IsEmpty) {
  HostValue without_text = tagged(2);
  EXPECT_STREQ(HVM_AsString(&without_text), "");
  EXPECT_STREQ(HVM_AsString(Value(5).address()), "");
  EXPECT_STREQ(HVM_AsString(nullptr), "");
  EXPECT_EQ(HVM_StringLen(Value(5).address()), 0);
  EXPECT_EQ(HVM_StringLen(nullptr), 0);
  EXPECT_EQ(wide_text_of(Value("narrow").record()), u""sv);
}

TEST_F(KernelStrings, OwnedText_GoesBackThroughFree) {
  HostValue value = Value("text").give_up();
  HVM_Free(load<void*>(value.payload));
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelStrings, Copies_ShareOwnedText) {
  for (Value value : {Value("text"), Value(u"text"), Value::string_record("text"), converted("text")}) {
    Value other = value;
    EXPECT_EQ(load<void*>(other.record().payload), load<void*>(value.record().payload));
    value = Value();
    EXPECT_EQ(text_of(other.record()), "text");
  }
}

TEST_F(KernelStrings, Copies_OfBorrowedText_HaveTheirOwn) {
  Value owner("text");
  HostValue borrowed = owner.record();
  borrowed.lifetime = Lifetime::none;
  Value copy = Value::sharing(borrowed);
  owner = Value();
  EXPECT_EQ(text_of(copy.record()), "text");
}

TEST_F(KernelStrings, DeepCopies_HaveTheirOwnText) {
  static const char literal[] = "text";
  for (Value value : {Value("text"), Value(u"text"), Value::string_record("text"), converted("text"),
                      Value::literal(literal), Value::literal(u"text")}) {
    Value copy;
    HVM_DupObject(ctx(), copy.address(), value.address(), 1);
    EXPECT_EQ(copy.tag(), value.tag());
    EXPECT_NE(load<void*>(copy.record().payload), load<void*>(value.record().payload));
    EXPECT_EQ(text_of(copy.record()), "text");
    EXPECT_EQ(HVM_StringLen(copy.address()), 4);
  }
}

}  // namespace
}  // namespace hvm::testing
