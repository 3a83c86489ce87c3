// refhost/script/module/object_text_test.cpp: arrays as text

#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(ObjectText, ShowsKindShapeAndElements) {
  expect_outputs({{"print(toy_double(2, 3))", "double(2, 3) [[0.0, 1.0, 2.0], [3.0, 4.0, 5.0]]"},
                  {"print(toy_int())", "int() 0"},
                  {"print(toy_int(0))", "int(0) []"},
                  {"print([toy_int(2), \"k\": toy_double(1)])", "[int(2) [0, 1], \"k\": double(1) [0.0]]"},
                  {"print(str(toy_double(2)))", "[0.0,1.0]"},
                  {"print(toy_double(2) / 3)", "double(2) [0.0, 0.333333]"},
                  {"a = toy_double(3) - 1; a[0] = 1.0 / 0; a[1] = 0.0 / 0; print(a)", "double(3) [inf, nan, 1.0]"}});
}

TEST(ObjectText, BreaksWideMatricesIntoRows) {
  EXPECT_EQ(output_of("print(toy_double(2, 12))"),
            "double(2, 12)\n[[0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0],\n"
            " [12.0, 13.0, 14.0, 15.0, 16.0, 17.0, 18.0, 19.0, 20.0, 21.0, 22.0, 23.0]]");
}

TEST(ObjectText, BeyondAThousandElements_ShowsHeadAndTail) {
  EXPECT_EQ(output_of("print(toy_int(1000))").find("..."), std::string::npos);
  const std::string short_text = "int(1001) [0, 1, 2, ..., 998, 999, 1000]";
  EXPECT_EQ(output_of("print(toy_int(1001))"), short_text);
  EXPECT_EQ(output_of("toy_serve_elements(0); print(toy_int(1001)); toy_serve_elements(1)"), short_text);
  EXPECT_EQ(output_of("print(toy_int(2, 1000))"),
            "int(2, 1000) [[0, 1, 2, ..., 997, 998, 999], [1000, 1001, 1002, ..., 1997, 1998, 1999]]");
  EXPECT_EQ(output_of("print(toy_bool(1001))"), "bool(1001) [false, true, true, ..., true, true, true]");
  const std::string eight = output_of("print(toy_int(3, 3, 3, 3, 3, 3, 3, 3))");
  EXPECT_LT(eight.size(), 6000u);
  EXPECT_NE(eight.find("6560"), std::string::npos);
}

}  // namespace
}  // namespace hvm::testing
