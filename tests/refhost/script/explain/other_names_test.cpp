// Names of other languages lead to what there is: every function that the table names exists.

#include "script/explain/other_names.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "script/library/builtins.hpp"

namespace hvm {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

int never_called(HostContext, HostValue*, int, HostValue*) { return 0; }

/// A module with the functions of the arrays' module, none of which does anything.
ModuleFunctions module_of_arrays() {
  ModuleFunctions functions;
#define FUNCTION(name, family, minimum, status) functions.add(#name, never_called);
#include "host/functions.def"
#undef FUNCTION
  return functions;
}

std::set<std::string> functions_of_library() {
  std::ifstream file(SOURCE_DIRECTORY "/refhost/script/library/arrays.hvm");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::regex fn("(?:^|\\n)fn (\\w+)\\(");
  std::set<std::string> names;
  for (std::sregex_iterator found(text.begin(), text.end(), fn), end; found != end; ++found) names.insert((*found)[1]);
  return names;
}

TEST(OtherNames, LeadToFunctionsThatExist) {
  const ModuleFunctions module = module_of_arrays();
  const std::set<std::string> library = functions_of_library();
  ASSERT_GT(library.size(), 20U);
  const std::regex call("(\\.?)(\\w+)\\(");
  for (const OtherName& other : other_names()) {
    const std::string text(other.instead);
    for (std::sregex_iterator found(text.begin(), text.end(), call), end; found != end; ++found) {
      const std::string name = (*found)[2];
      if ((*found)[1].length() > 0) {
        EXPECT_TRUE(name == "shape" || name == "reshape" || name == "dump") << other.name << ": " << text;
        continue;
      }
      const bool is_of_library = library.count(name) != 0;
      EXPECT_TRUE(find_builtin(name) || module.find(name) || is_of_library) << other.name << ": " << text;
      if (is_of_library) {
        EXPECT_THAT(text, HasSubstr("use \"arrays\"")) << other.name;
      }
    }
  }
}

TEST(OtherNames, AreNotOurs) {
  const ModuleFunctions module = module_of_arrays();
  const std::set<std::string> library = functions_of_library();
  for (const OtherName& other : other_names()) {
    const std::string name(other.name);
    EXPECT_FALSE(module.find(name)) << name;
    EXPECT_EQ(library.count(name), 0U) << name;
  }
}

TEST(OtherNames, HaveACounterpartAtTheEndOfASentence) {
  EXPECT_EQ(counterpart("astype"), "; write as_double(a) or as_int(a), after use \"arrays\"");
  EXPECT_EQ(counterpart("False"), "; write false");
  EXPECT_EQ(counterpart("zip"), "; write for i in range(len(t)), and t[i], u[i]");
  EXPECT_EQ(counterpart("Zip"), "");
  EXPECT_EQ(counterpart(""), "");
  EXPECT_EQ(counterpart("zzz"), "");
}

TEST(OtherNames, OfFunctionsMayHaveTheXOfTheModule) {
  EXPECT_EQ(counterpart_of_function("xstd"), "; write xstddev(a)");
  EXPECT_EQ(counterpart_of_function("std"), "; write xstddev(a)");
  EXPECT_EQ(counterpart_of_function("xwhere"), "; write where(m), after use \"arrays\"");
  EXPECT_EQ(counterpart_of_function("xlog10"), "; write xlog(a) / log(10)");
  EXPECT_EQ(counterpart_of_function("xarctan"), "; write atan(x) of a number");
  EXPECT_EQ(counterpart("xstd"), "");
  EXPECT_EQ(counterpart_of_function("xzzz"), "");
  EXPECT_EQ(counterpart_of_function("x"), "");
  EXPECT_EQ(counterpart_of_function(""), "");
}

TEST(OtherNames, OfArraysLeadToTheFunctionWithAnXInFront) {
  const ModuleFunctions module = module_of_arrays();
  EXPECT_EQ(counterpart_for_arrays("mean", module), "; write xmean(a)");
  EXPECT_EQ(counterpart_for_arrays("max", module), "; write xamax(a)");
  EXPECT_EQ(counterpart_for_arrays("pow", module), "; write power(a, p), after use \"arrays\"");
  EXPECT_EQ(counterpart_for_arrays("dot", module), "; write xdot(a, b)");
  EXPECT_EQ(counterpart_for_arrays("frobnicate", module), "");
  EXPECT_EQ(counterpart_for_arrays("mean", ModuleFunctions()), "");
}

TEST(OtherNames, OfMethodsLeadToTheFunctionOfTheLibrary) {
  const ModuleFunctions module = module_of_arrays();
  const std::set<std::string> library = functions_of_library();
  for (const char* name : {"argpartition", "choice", "clip", "column", "count", "cumsum", "mask", "permutation",
                           "quantile", "row", "slice", "take", "transpose", "where"}) {
    EXPECT_EQ(library.count(name), 1U) << name;
    EXPECT_THAT(counterpart_for_arrays(name, module),
                MatchesRegex(std::string("; write ") + name + "\\(.*\\), after use \"arrays\""));
    EXPECT_EQ(counterpart(name), "") << name;
  }
}

TEST(OtherNames, LeadToNoFunctionThatComputesNothing) {
  const ModuleFunctions module = module_of_arrays();
  for (const char* name : {"argpartition", "choice", "clip", "eig", "eigvals", "fma", "interp", "matrix_power",
                           "permutation", "pow", "randint", "remainder", "searchsorted", "setdiff1d"}) {
    const std::string written = counterpart_for_arrays(name, module);
    EXPECT_NE(written, "") << name;
    EXPECT_THAT(written, Not(HasSubstr(std::string("x") + name + "("))) << name;
  }
}

}  // namespace
}  // namespace hvm
