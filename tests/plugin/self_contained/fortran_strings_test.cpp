// self_contained/fortran_strings_test.cpp: the texts that LAPACK gets from the module's own function

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

extern "C" void _gfortran_concat_string(std::size_t size, char* out, std::size_t first_size, const char* first,
                                        std::size_t second_size, const char* second);

namespace {

/// `first // second` in a text of `size` letters. What is behind it stays.
std::string joined(std::size_t size, const std::string& first, const std::string& second) {
  std::string out(size + 4, '#');
  _gfortran_concat_string(size, out.data(), first.size(), first.data(), second.size(), second.data());
  EXPECT_EQ(out.substr(size), "####");
  return out.substr(0, size);
}

TEST(FortranStrings, ThatFit_AreOneBehindTheOther) {
  EXPECT_EQ(joined(3, "L", "NU"), "LNU");
  EXPECT_EQ(joined(2, "", "NU"), "NU");
  EXPECT_EQ(joined(0, "", ""), "");
}

TEST(FortranStrings, WithRoomBehind_EndInBlanks) {
  EXPECT_EQ(joined(5, "L", "NU"), "LNU  ");
  EXPECT_EQ(joined(2, "", ""), "  ");
}

TEST(FortranStrings, WithoutRoom_AreCut) {
  EXPECT_EQ(joined(2, "L", "NU"), "LN");
  EXPECT_EQ(joined(1, "LR", "NU"), "L");
  EXPECT_EQ(joined(0, "L", "NU"), "");
}

}  // namespace
