// refhost/script/syntax/unicode_test.cpp: characters in UTF-8 and UTF-16

#include "script/syntax/unicode.hpp"

#include <gtest/gtest.h>

#include "narrow_text.hpp"

namespace hvm::testing {
namespace {

TEST(Unicode, Characters_AreTakenFromTheFrontOfUtf8) {
  std::string_view text = "a\xCF\x80\xE4\xB8\xAD\xF0\x9F\x98\x80";
  EXPECT_EQ(take_character(text), U'a');
  EXPECT_EQ(take_character(text), U'\u03C0');
  EXPECT_EQ(take_character(text), U'\u4E2D');
  EXPECT_EQ(take_character(text), U'\U0001F600');
  EXPECT_TRUE(text.empty());
}

TEST(Unicode, BytesOfNoCharacter_CountOneByOne) {
  for (const char* bad : {"\xFF", "\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE4\xB8"}) {
    std::string_view text = bad;
    EXPECT_EQ(first_invalid_utf8(text), 0u) << bad;
    EXPECT_EQ(character_count(text), text.size()) << bad;
    EXPECT_EQ(take_character(text), static_cast<unsigned char>(bad[0])) << bad;
  }
  EXPECT_EQ(first_invalid_utf8("ab\xCF\x80\xFF"), 4u);
  EXPECT_EQ(first_invalid_utf8("ab\xCF\x80"), std::string_view::npos);
}

TEST(Unicode, SurrogatePairs_AreOneCharacter) {
  EXPECT_EQ(character_count(u"a\u03C0\U0001F600"), 3u);
  const std::u16string halves{u'\xD83D', u'x', u'\xDE00'};
  EXPECT_EQ(character_count(halves), 3u);
  std::u16string_view text = halves;
  EXPECT_EQ(take_character(text), char32_t{0xD83D});
}

TEST(Unicode, TheTwoForms_HoldTheSameText) {
  const std::string text = "a\xCF\x80\xE4\xB8\xAD\xF0\x9F\x98\x80";
  EXPECT_EQ(wide_text(text), u"a\u03C0\u4E2D\U0001F600");
  EXPECT_EQ(narrow_text(wide_text(text)), text);
}

TEST(Unicode, Widths_AreTwoForWideOnesAndZeroForCombiningOnes) {
  EXPECT_EQ(display_width(U'a'), 1u);
  EXPECT_EQ(display_width(U'\u03C0'), 1u);
  EXPECT_EQ(display_width(U'\u4E2D'), 2u);
  EXPECT_EQ(display_width(U'\uFF21'), 2u);
  EXPECT_EQ(display_width(U'\U0001F600'), 2u);
  EXPECT_EQ(display_width(U'\u0301'), 0u);
}

}  // namespace
}  // namespace hvm::testing
