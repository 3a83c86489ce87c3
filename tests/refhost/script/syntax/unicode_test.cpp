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

TEST(Unicode, Boundaries_AreWhereCharactersBegin) {
  const std::string text = "a\xCF\x80\xE4\xB8\xAD\xF0\x9F\x98\x80\xE4\xB8z\x80\x80\x80\x80";
  std::string_view rest = text;
  for (std::size_t offset = 0; offset <= text.size(); ++offset) {
    const bool begins = offset == text.size() - rest.size();
    EXPECT_EQ(is_character_boundary(text, offset), begins) << offset;
    if (begins && !rest.empty()) take_character(rest);
  }
  EXPECT_FALSE(is_character_boundary(text, text.size() + 1));
  EXPECT_TRUE(is_character_boundary("", 0));
}

TEST(Unicode, Blanks_AreThoseOfUnicode) {
  for (const char* blank :
       {" ", "\t", "\n", "\v", "\f", "\r", "\xC2\x85", "\xC2\xA0", "\xE1\x9A\x80", "\xE2\x80\x80", "\xE2\x80\x8A",
        "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"}) {
    EXPECT_EQ(blank_length(blank), std::string_view(blank).size());
    EXPECT_EQ(trimmed(std::string(blank) + "a" + blank + "b" + blank), std::string("a") + blank + "b");
  }
  for (const char* other :
       {"", "a", "\x08", "\x1F", "\x7F", "\x85", "\xA0", "\xE2\x80\x8B", "\xEF\xBB\xBF", "\xCF\x80"}) {
    EXPECT_EQ(blank_length(other), 0u) << other;
    EXPECT_EQ(trimmed(other), other);
  }
  EXPECT_EQ(trimmed(" \t\n"), "");
}

TEST(Unicode, Forms_AreOfOneCharacter) {
  EXPECT_EQ(upper_case("az09 \xCF\x80\xC3\xA4\xC3\x9F\xF0\x90\x90\xA8"),
            "AZ09 \xCE\xA0\xC3\x84\xC3\x9F\xF0\x90\x90\x80");
  EXPECT_EQ(lower_case("AZ09 \xCE\xA0\xC3\x84\xF0\x90\x90\x80"), "az09 \xCF\x80\xC3\xA4\xF0\x90\x90\xA8");
  EXPECT_EQ(upper_case("\xE4\xFF"), "\xE4\xFF");
  EXPECT_EQ(upper_case(std::string_view("\0a", 2)), std::string("\0A", 2));
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
