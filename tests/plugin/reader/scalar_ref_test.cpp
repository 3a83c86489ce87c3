// reader/scalar_ref_test.cpp: the rules by which host values are read, written, passed on and dropped

#include "reader/scalar_ref.hpp"

#include <cstring>

#include "support/scripted_test.hpp"

namespace arrayfold::test {
namespace {

class ScalarRefs : public ScriptedTest {};

ValueTag tag(int number) { return static_cast<ValueTag>(number); }

// ---- Reading

TEST_F(ScalarRefs, Numbers_AreReadWithoutTheHost) {
  Value small(-7), large(std::int64_t{1} << 40), fraction(2.5);
  EXPECT_EQ(operations_of([&] {
              EXPECT_EQ(std::get<int_scalar>(read_value(small.address())), -7);
              EXPECT_EQ(std::get<int64_scalar>(read_value(large.address())), std::int64_t{1} << 40);
              EXPECT_EQ(std::get<real_scalar>(read_value(fraction.address())), 2.5);
            }),
            Words{});
}

TEST_F(ScalarRefs, AString_IsItsPayloadAndTheLengthThatTheHostTells) {
  Value text("abc");
  ScalarRef scalar;
  EXPECT_EQ(operations_of([&] { scalar = read_value(text.address()); }), Words{"StringLen"});
  EXPECT_EQ(std::get<text_scalar>(scalar), "abc");
  EXPECT_EQ(std::get<text_scalar>(scalar).data(), load<const char*>(text.record().payload));
}

TEST_F(ScalarRefs, AStringRecord_IsItsOwnTextAndLength) {
  Value text = Value::string_record("a record");
  ScalarRef scalar;
  EXPECT_EQ(operations_of([&] { scalar = read_value(text.address()); }), Words{});
  EXPECT_EQ(std::get<text_scalar>(scalar), "a record");
  EXPECT_EQ(std::get<text_scalar>(scalar).data(), load<const char*>(text.record().payload) + 36);
}

TEST_F(ScalarRefs, AConvertedString_IsReadThroughTheHostAlone) {
  static const char characters[] = "converted";
  std::uint64_t payload;
  const char* pointer = characters;
  std::memcpy(&payload, &pointer, sizeof payload);
  Value text = raw(ValueTag::converted_string, payload);
  ScalarRef scalar;
  EXPECT_EQ(operations_of([&] { scalar = read_value(text.address()); }), (Words{"AsString", "StringLen"}));
  EXPECT_EQ(std::get<text_scalar>(scalar), "converted");
}

TEST_F(ScalarRefs, AWideString_IsItsPayloadAndTheLengthThatTheHostTells) {
  Value text(u"wide");
  ScalarRef scalar;
  EXPECT_EQ(operations_of([&] { scalar = read_value(text.address()); }), Words{"StringLen"});
  EXPECT_EQ(std::get<wide_text_scalar>(scalar), u"wide");
}

TEST_F(ScalarRefs, AnyOtherTag_IsTheRecordItself) {
  for (const int number : {4, 5, 7, 8, 9, 10, 12, 13, 14, 15, 16, 17, 18, 19, 23, 25, 80, 81, 82, 255}) {
    Value value = raw(tag(number));
    ScalarRef scalar;
    EXPECT_EQ(operations_of([&] { scalar = read_value(value.address()); }), Words{}) << number;
    EXPECT_EQ(std::get<value_scalar>(scalar), value.address()) << number;
  }
}

TEST_F(ScalarRefs, ANullText_IsEmpty) {
  for (const int number : {2, 6, 11}) {
    Value value = raw(tag(number));
    const ScalarRef scalar = read_value(value.address());
    EXPECT_EQ(std::get<text_scalar>(scalar), "") << number;
  }
  Value wide = raw(ValueTag::wide_string);
  EXPECT_EQ(std::get<wide_text_scalar>(read_value(wide.address())), u"");
}

TEST_F(ScalarRefs, AStringRecordOfNegativeLength_IsEmpty) {
  HostStringRecord record{};
  record.length = -5;
  Value value = raw(ValueTag::string_record);
  store<HostStringRecord*>(value.record().payload, &record);
  EXPECT_EQ(std::get<text_scalar>(read_value(value.address())), "");
}

TEST_F(ScalarRefs, ANullRecord_IsUnreadable) { EXPECT_EQ(std::get<unreadable_scalar>(read_value(nullptr)), false); }

TEST_F(ScalarRefs, ThePlacesOfTheAlternatives_AreFixed) {
  EXPECT_EQ(ScalarRef(false).index(), 0u);
  EXPECT_EQ(ScalarRef(std::int32_t{1}).index(), 1u);
  EXPECT_EQ(ScalarRef(std::int64_t{1}).index(), 2u);
  EXPECT_EQ(ScalarRef(1.0).index(), 3u);
  EXPECT_EQ(ScalarRef(static_cast<HostValue*>(nullptr)).index(), 4u);
  EXPECT_EQ(ScalarRef(std::u16string_view()).index(), 5u);
  EXPECT_EQ(ScalarRef(std::string_view()).index(), 6u);
}

// ---- Writing

TEST_F(ScalarRefs, EachForm_IsWrittenByItsOwnOperation) {
  Value table = Value::table_of({Value(1)});
  const struct {
    ScalarRef scalar;
    std::string operation, printed;
  } rows[] = {
      {std::int32_t{-3}, "SetInt -3", "-3"},
      {std::int64_t{1} << 40, "SetInt64", "1099511627776"},
      {2.5, "SetReal", "2.5"},
      {table.address(), "DupObject", "[1]"},
      {std::u16string_view(u"wide"), "SetWStringEx 4", "wide"},
      {std::string_view("text"), "SetString", "text"},
      {std::string_view(), "SetString", ""},
      {std::u16string_view(), "SetWStringEx 0", ""},
  };
  for (const auto& row : rows) {
    Value written;
    EXPECT_EQ(operations_of([&] { write_scalar(ctx(), written.address(), row.scalar); }), Words{row.operation});
    EXPECT_EQ(hvm::printed(written.record()), row.printed);
  }
}

TEST_F(ScalarRefs, WhatCannotBeRead_LeavesTheRecord) {
  Value written(sentinel);
  for (const bool value : {false, true})
    EXPECT_EQ(operations_of([&] { write_scalar(ctx(), written.address(), ScalarRef(value)); }), Words{});
  EXPECT_EQ(hvm::printed(written.record()), std::to_string(sentinel));
}

TEST_F(ScalarRefs, ATable_IsWrittenAsACopy) {
  Value table = Value::table_of({Value(1)});
  Value written;
  write_scalar(ctx(), written.address(), read_value(table.address()));
  EXPECT_NE(hvm::table_of(written.record()), hvm::table_of(table.record()));
}

TEST_F(ScalarRefs, AWideStringWithAZeroInside_IsReadAndWrittenWhole) {
  const std::u16string_view text(u"a\0b\0", 4);
  Value value(text);
  const ScalarRef scalar = read_value(value.address());
  ASSERT_EQ(scalar.index(), std::size_t{wide_text_scalar});
  EXPECT_EQ(std::get<wide_text_scalar>(scalar), text);
  Value copy;
  write_scalar(ctx(), copy.address(), scalar);
  EXPECT_EQ(hvm::wide_text_of(copy.record()), text);
}

TEST_F(ScalarRefs, Required_NarrowTextGoesWithoutItsLength_WideTextWithIt) {
  Value written;
  write_scalar(ctx(), written.address(), std::string_view("abcdef", 3));
  EXPECT_EQ(hvm::text_of(written.record()), "abcdef");
  write_scalar(ctx(), written.address(), std::u16string_view(u"abcdef", 3));
  EXPECT_EQ(hvm::wide_text_of(written.record()), u"abc");
  write_scalar(ctx(), written.address(), std::string_view("a\0b", 3));
  EXPECT_EQ(hvm::text_of(written.record()), "a");
}

// ---- Literals

TEST_F(ScalarRefs, NumbersOfALiteral_AreWrittenWithoutTheHost) {
  HostValue record{};
  EXPECT_EQ(operations_of([&] {
              write_literal(ctx(), &record, integer(-7));
              EXPECT_EQ(record.tag, ValueTag::integer);
              EXPECT_EQ(load<std::int32_t>(record.payload), -7);
              write_literal(ctx(), &record, real(2.5));
              EXPECT_EQ(record.tag, ValueTag::real);
              EXPECT_EQ(load<double>(record.payload), 2.5);
              write_literal(ctx(), &record, integer64(std::int64_t{-1} << 40));
              EXPECT_EQ(record.tag, ValueTag::integer64);
              EXPECT_EQ(load<std::int64_t>(record.payload), std::int64_t{-1} << 40);
            }),
            Words{});
}

TEST_F(ScalarRefs, Required_OfALiteralString_OnlyARecordedLengthIsTrusted) {
  const struct {
    bool copy;
    HostCodeSlot slot;
    std::string operation;
  } rows[] = {
      {true, code.text("text"), "SetStringEx 4"},
      {false, code.text("text"), "SetConstStringEx 4"},
      {true, code.text("text", Length::unrecorded), "SetString"},
      {false, code.text("text", Length::unrecorded), "SetString"},
      {true, code.wide_text(u"text"), "SetWStringEx 4"},
      {false, code.wide_text(u"text"), "SetConstWStringEx 4"},
      {true, code.wide_text(u"text", Length::unrecorded), "SetWString"},
      {false, code.wide_text(u"text", Length::unrecorded), "SetWString"},
  };
  for (const auto& row : rows) {
    host.copy_strings(row.copy);
    Value written;
    EXPECT_EQ(operations_of([&] { write_literal(ctx(), written.address(), row.slot); }), Words{row.operation});
    EXPECT_EQ(hvm::printed(written.record()), "text");
    const bool refers = row.operation.find("Const") != std::string::npos;
    EXPECT_EQ(load<const void*>(written.record().payload) == load<const void*>(row.slot.payload), refers);
  }
}

TEST_F(ScalarRefs, ALiteralStringWithZeros_IsWrittenToItsRecordedLength) {
  const HostCodeSlot slot = code.text(std::string_view("a\0b", 3));
  for (const bool copy : {true, false}) {
    host.copy_strings(copy);
    Value written;
    write_literal(ctx(), written.address(), slot);
    EXPECT_EQ(hvm::text_of(written.record()), std::string_view("a\0b", 3));
  }
}

TEST_F(ScalarRefs, AnEmptyLiteral_IsWrittenByItsLengthOfZero) {
  Value written;
  EXPECT_EQ(operations_of([&] { write_literal(ctx(), written.address(), code.text("")); }), Words{"SetStringEx 0"});
}

TEST_F(ScalarRefs, ANullLiteral_IsEmpty) {
  for (const bool copy : {true, false}) {
    host.copy_strings(copy);
    for (const std::uint32_t length : {0u, 1u, 5u}) {
      Value narrow, wide;
      write_literal(ctx(), narrow.address(), slot_of<const char*>(SlotTag::string, nullptr, length));
      write_literal(ctx(), wide.address(), slot_of<const char*>(SlotTag::wide_string, nullptr, length));
      EXPECT_EQ(narrow.tag(), ValueTag::string);
      EXPECT_EQ(hvm::text_of(narrow.record()), "");
      EXPECT_EQ(wide.tag(), ValueTag::wide_string);
      EXPECT_EQ(hvm::wide_text_of(wide.record()), u"");
    }
  }
}

TEST_F(ScalarRefs, WithoutAFrame_LiteralStringsAreCopied) {
  host.copy_strings(false);
  host.without_frame();
  Value written;
  EXPECT_EQ(operations_of([&] { write_literal(ctx(), written.address(), code.text("text")); }), Words{"SetStringEx 4"});
}

TEST_F(ScalarRefs, WhatIsNoLiteral_LeavesTheRecord) {
  Value written(sentinel);
  for (const HostCodeSlot& slot : {nowhere(), absent(), variable(3), slot_of(static_cast<SlotTag>(6), 5)})
    EXPECT_EQ(operations_of([&] { write_literal(ctx(), written.address(), slot); }), Words{});
  EXPECT_EQ(hvm::printed(written.record()), std::to_string(sentinel));
}

// ---- Passing on

HostValue record_of(int tag_number, Lifetime lifetime) {
  HostValue record{};
  record.tag = tag(tag_number);
  store<std::uint64_t>(record.payload, 0x1122334455667788);
  std::memset(record.rest, 0x5A, sizeof record.rest);
  record.lifetime = lifetime;
  return record;
}

/// The bytes of a record, for comparing.
std::string bytes_of(const HostValue& record) {
  return {static_cast<const char*>(static_cast<const void*>(&record)), 18};
}

TEST_F(ScalarRefs, ADestination_IsReleasedWhenItIsATemporaryWithContent) {
  const std::set<int> without_release = {0, 1, 4, 10, 18, 20, 80, 81};
  for (const int number : {0, 1, 3, 4, 7, 8, 9, 10, 12, 13, 14, 15, 17, 18, 19, 20, 23, 25, 80, 81, 82}) {
    for (const Lifetime lifetime : {Lifetime::none, Lifetime::temporary, Lifetime::plain}) {
      HostValue destination = record_of(number, lifetime);
      TemporaryValue source;
      write_literal(ctx(), source.record(), integer(1));
      const bool released = lifetime == Lifetime::temporary && without_release.count(number) == 0;
      EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), &destination, false); }),
                released ? Words{"FreeObjectContent"} : Words{})
          << number;
      EXPECT_EQ(load<std::int32_t>(destination.payload), 1);
    }
  }
}

TEST_F(ScalarRefs, AStringInTheDestination_IsReleasedOnce) {
  Value destination("old content");
  TemporaryValue source;
  write_literal(ctx(), source.record(), code.text("new content"));
  source.pass_to(ctx(), destination.address(), false);
  EXPECT_EQ(hvm::text_of(destination.record()), "new content");
}

TEST_F(ScalarRefs, APlainRecord_OrAnUnknownTag_IsCopiedAsItStands) {
  for (const bool copy : {false, true}) {
    for (const int number : {0, 1, 2, 5, 16, 24, 82, 83, 255}) {
      const Lifetime lifetime = number > 81 ? Lifetime::temporary : Lifetime::plain;
      HostValue destination = record_of(10, Lifetime::temporary);
      TemporaryValue source;
      *source.record() = record_of(number, lifetime);
      EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), &destination, copy); }), Words{});
      EXPECT_EQ(bytes_of(destination), bytes_of(record_of(number, lifetime))) << number;
      EXPECT_EQ(bytes_of(*source.record()), bytes_of(record_of(number, lifetime))) << number;
    }
  }
}

TEST_F(ScalarRefs, NumbersAndTwoWords_PassTheirPayloadWithTheirTag) {
  for (const bool copy : {false, true}) {
    for (const int number : {0, 1, 25}) {
      HostValue destination = record_of(10, Lifetime::none);
      TemporaryValue source;
      *source.record() = record_of(number, Lifetime::temporary);
      source.record()->owned = 77;
      EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), &destination, copy); }), Words{});
      EXPECT_EQ(destination.tag, tag(number));
      EXPECT_EQ(destination.lifetime, Lifetime::none);
      EXPECT_EQ(std::memcmp(destination.payload, source.record()->payload, number == 25 ? 16 : 8), 0);
    }
  }
}

TEST_F(ScalarRefs, Content_MovesWithoutCopy) {
  for (const int number : {2, 5, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 19, 23, 24, 81}) {
    HostValue destination = record_of(10, Lifetime::temporary);
    TemporaryValue source;
    *source.record() = record_of(number, Lifetime::temporary);
    EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), &destination, false); }), Words{}) << number;
    EXPECT_EQ(bytes_of(destination), bytes_of(record_of(number, Lifetime::temporary))) << number;
    EXPECT_EQ(source.record()->lifetime, Lifetime::none) << number;
  }
}

TEST_F(ScalarRefs, Content_IsDuplicatedWithCopy) {
  for (const int number : {7, 8, 9, 12, 13, 14, 15, 17, 19, 23, 81}) {
    HostValue destination = record_of(10, Lifetime::temporary);
    TemporaryValue source;
    *source.record() = record_of(number, Lifetime::temporary);
    EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), &destination, true); }), Words{"DupObject"}) << number;
    EXPECT_EQ(source.record()->lifetime, Lifetime::temporary) << number;
  }
  Value destination;
  TemporaryValue source;
  write_literal(ctx(), source.record(), code.text("twice"));
  EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), destination.address(), true); }), Words{"DupObject"});
  EXPECT_EQ(hvm::text_of(destination.record()), "twice");
  EXPECT_EQ(hvm::text_of(*source.record()), "twice");
}

TEST_F(ScalarRefs, AllOtherTags_AreCopiedWhole) {
  for (const bool copy : {false, true}) {
    for (const int number : {3, 4, 6, 10, 18, 20, 21, 22, 26, 79, 80}) {
      HostValue destination = record_of(10, Lifetime::none);
      TemporaryValue source;
      *source.record() = record_of(number, Lifetime::temporary);
      EXPECT_EQ(operations_of([&] { source.pass_to(ctx(), &destination, copy); }), Words{}) << number;
      EXPECT_EQ(bytes_of(destination), bytes_of(record_of(number, Lifetime::temporary))) << number;
      EXPECT_EQ(source.record()->lifetime, Lifetime::temporary) << number;
    }
  }
}

// ---- Dropping

TEST_F(ScalarRefs, ANewTemporary_IsNil) {
  TemporaryValue temporary;
  EXPECT_EQ(temporary.record()->tag, ValueTag::nil);
  EXPECT_EQ(temporary.record()->lifetime, Lifetime::temporary);
}

TEST_F(ScalarRefs, OwnedText_IsGivenBackOnce) {
  EXPECT_EQ(operations_of([&] {
              TemporaryValue temporary;
              HVM_SetString(ctx(), temporary.record(), "owned");
            }),
            (Words{"SetString", "Free"}));
  EXPECT_EQ(operations_of([&] {
              TemporaryValue temporary;
              HVM_SetWString(ctx(), temporary.record(), u"owned");
            }),
            (Words{"SetWString", "Free"}));
}

TEST_F(ScalarRefs, ADrop_GivesBackOwnedTextOfTemporariesAlone) {
  const struct {
    int tag;
    std::uint32_t owned;
    Lifetime lifetime;
    bool freed;
  } rows[] = {
      {2, 1, Lifetime::temporary, true},  {24, 1, Lifetime::temporary, true},  {11, 1, Lifetime::temporary, false},
      {2, 0, Lifetime::temporary, false}, {24, 0, Lifetime::temporary, false}, {2, 1, Lifetime::none, false},
      {2, 1, Lifetime::plain, false},     {24, 1, Lifetime::none, false},      {5, 1, Lifetime::temporary, false},
      {0, 1, Lifetime::temporary, false}, {10, 1, Lifetime::temporary, false}, {16, 1, Lifetime::temporary, false},
  };
  for (const auto& row : rows) {
    // The payload is null: tags 2 and 24 are given back all the same, tag 11 is not.
    EXPECT_EQ(operations_of([&] {
                TemporaryValue temporary;
                temporary.record()->tag = tag(row.tag);
                temporary.record()->owned = row.owned;
                temporary.record()->lifetime = row.lifetime;
              }),
              row.freed ? Words{"Free"} : Words{})
        << row.tag;
  }
}

TEST_F(ScalarRefs, AnOwnedConvertedString_IsGivenBack) {
  EXPECT_EQ(operations_of([&] {
              TemporaryValue temporary;
              HVM_SetString(ctx(), temporary.record(), "owned");
              temporary.record()->tag = ValueTag::converted_string;
            }),
            (Words{"SetString", "Free"}));
}

TEST_F(ScalarRefs, ASlotThatIsEmptied_IsNilAfterwards) {
  // A host may leave the tag behind, and the slot must not be released twice.
  Value slot("content");
  EXPECT_EQ(operations_of([&] { free_content(ctx(), slot.address()); }), Words{"FreeObjectContent"});
  EXPECT_TRUE(slot.is_nil());
  EXPECT_EQ(operations_of([&] { free_content(ctx(), slot.address()); }), Words{});
}

}  // namespace
}  // namespace arrayfold::test
