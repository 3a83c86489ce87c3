// refhost/script/library/builtins_test.cpp: the functions that the language itself has

#include <algorithm>
#include <string>

#include "script/library/builtins.hpp"
#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(Builtins, CheckTheirArguments) {
  expect_outputs({{"print()", ""},
                  {"print(1, \"a\", 2.5, [\"a\"])", "1 a 2.5 [\"a\"]"},
                  {"print(str(5L) + str(\"x\") + str([1.5, \"q\"]))", "5x[1.5, \"q\"]"},
                  {"print(type(1), type(2L), type(1.5), type(\"\"), type([]), type(toy_int(1)))",
                   "int int64 real string table $xintarray"},
                  {"print(len(toy_int(4, 2)))", "4"},
                  {"len(5)", "!len: an int has no length"},
                  {"len()", "!len: it takes 1 argument, not 0"},
                  {"range(1, 2, 3, 4)", "!range: it takes 1 to 3 arguments, not 4"},
                  {"assert(1 == 1, \"x\"); assert(1 > 2)", "!assertion failed"},
                  {"a = clock(); assert(clock() >= a and type(a) == \"real\")", ""}});
}

TEST(Builtins, SayWhatTheyDo) {
  for (const std::string_view name : builtin_names()) {
    const Builtin& builtin = *find_builtin(name);
    EXPECT_EQ(builtin.summary.substr(builtin.summary.size() - 1), ".") << name;
    for (std::string_view forms = builtin.usage; !forms.empty();) {
      const std::string_view form = forms.substr(0, forms.find('\n'));
      forms.remove_prefix(std::min(forms.size(), form.size() + 1));
      EXPECT_EQ(form.substr(0, name.size() + 1), std::string(name) + "(") << name;
      EXPECT_EQ(form.back(), ')') << name;
      const bool has_arguments = form.find("()") == std::string_view::npos;
      const auto count = has_arguments ? 1 + std::count(form.begin(), form.end(), ',') : 0;
      EXPECT_TRUE(count >= builtin.minimum && (builtin.maximum < 0 || count <= builtin.maximum)) << form;
    }
  }
}

TEST(Builtins, Len_CountsCharactersWhateverTheirBytesOrUnits) {
  expect_outputs({{"print(len(\"\"), len(\"abc\"), len(w\"abc\"))", "0 3 3"},
                  {"print(len(\"\\u{e4}\\u{3c0}\\u{1F600}\"), len(w\"\\u{e4}\\u{3c0}\\u{1F600}\"))", "3 3"},
                  {"print(len(\"\xCF\x80\" + w\"\xCF\x80\"))", "2"},
                  {"print(len(\"a\\xff\\x80z\"), len(\"\\0\\0\"))", "4 2"},
                  {"t = [\"\xCF\x80\": 1]; print(len(t))", "1"}});
}

TEST(Builtins, Len_OfAnArray_IsItsFirstExtent) {
  expect_outputs({{"print(len(toy_int(4, 2)), len(toy_int(0)))", "4 0"},
                  {"len(toy_int())", "!len: a zero-dimensional array has no length"}});
}

}  // namespace
}  // namespace hvm::testing
