// refhost/kernel/kernel_libraries_test.cpp: what the two libraries export, and the values of lgamma and erf

#include <dlfcn.h>
#include <gnu/lib-names.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::string> defined_symbols(const std::string& library) {
  const std::string command = "nm -DC --defined-only '" + library + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::vector<std::string> names;
  std::array<char, 4096> line;
  while (pipe && std::fgets(line.data(), line.size(), pipe.get())) {
    std::string text(line.data());
    text.pop_back();
    names.push_back(text.substr(text.find(' ', text.find(' ') + 1) + 1));
  }
  return names;
}

TEST(KernelLibraries, Kernel_ExportsTheOperationsAndItsOwnInterface) {
  int operations = 0;
  for (const std::string& name : defined_symbols(KERNEL_LIBRARY)) {
    const bool is_operation = name.rfind("HVM_", 0) == 0;
    operations += is_operation;
    EXPECT_TRUE(is_operation || name.rfind("hvm::", 0) == 0) << name;
    EXPECT_EQ(name.find("kernel::"), std::string::npos) << name;
  }
  EXPECT_EQ(operations, 44);
}

TEST(KernelLibraries, Interp_ExportsTwoFunctionsUnderTheirVersion) {
  std::vector<std::string> names;
  for (const std::string& name : defined_symbols(INTERP_LIBRARY))
    if (name.find('@') != std::string::npos) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"erf@@HVMINTERP_1", "lgamma@@HVMINTERP_1"}));
  EXPECT_LE(defined_symbols(INTERP_LIBRARY).size(), 3u);  // the version node itself is one
}

using Function = double (*)(double);

class Interp : public ::testing::Test {
 protected:
  static Function function(const char* library, const char* name, const char* version) {
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    void* symbol = version ? dlvsym(handle, name, version) : dlsym(handle, name);
    return reinterpret_cast<Function>(symbol);
  }
  static Function ours(const char* name) { return function(INTERP_LIBRARY, name, "HVMINTERP_1"); }
  static Function theirs(const char* name) { return function(LIBM_SO, name, nullptr); }

  static void expect_same_bits(Function ours, Function theirs, double x) {
    const double a = ours(x), b = theirs(x);
    EXPECT_TRUE((std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b))) << x;
  }
};

TEST_F(Interp, BothFunctions_AreFoundAndAreNotTheCLibrarys) {
  for (const char* name : {"erf", "lgamma"}) {
    ASSERT_NE(ours(name), nullptr);
    EXPECT_NE(ours(name), theirs(name));
  }
}

TEST_F(Interp, BothFunctions_GiveTheCLibrarysValues) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> spread(-30, 30);
  constexpr double infinity = std::numeric_limits<double>::infinity();
  std::vector<double> points = {0.0, -0.0, 1.0, 2.0, -1.0, -2.0, 0.5, -0.5, 1e-320, 1e300, infinity, -infinity, NAN};
  for (int n = 0; n < 10000; ++n) points.push_back(spread(random));
  for (const double x : points) {
    expect_same_bits(ours("erf"), theirs("erf"), x);
    expect_same_bits(ours("lgamma"), theirs("lgamma"), x);
  }
}

TEST_F(Interp, Values_AreThoseOfTheFunctions) {
  EXPECT_NEAR(ours("lgamma")(5.0), std::log(24.0), 1e-15);
  EXPECT_NEAR(ours("lgamma")(0.5), 0.5723649429247001, 1e-15);
  EXPECT_NEAR(ours("erf")(1.0), 0.8427007929497149, 1e-15);
  EXPECT_NEAR(ours("erf")(-0.5), -0.5204998778130465, 1e-15);
}

TEST_F(Interp, Lgamma_LeavesTheGlobalSignAlone) {
  auto* sign = static_cast<int*>(dlsym(dlopen(LIBM_SO, RTLD_NOW), "signgam"));
  ASSERT_NE(sign, nullptr);
  *sign = 42;
  ours("lgamma")(-0.5);
  EXPECT_EQ(*sign, 42);
}

}  // namespace
