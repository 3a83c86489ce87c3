// runtime/neighbours_test.cpp: the module in a host that has xtensor, Highway and OpenBLAS itself
//
// The program offers all its names to the libraries that it loads. Its xtensor has other settings than the module's,
// its Highway knows no vector instructions, and its OpenBLAS is the shared library.

#include <cblas.h>
#include <hwy/targets.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "runtime/loaded_module.hpp"
#include "runtime/neighbours_arrays.hpp"

namespace {

int questions_about_processor = 0;

}  // namespace

// The host's Highway.
namespace hwy {

std::int64_t SupportedTargets() { return HWY_SCALAR; }

ChosenTarget& GetChosenTarget() {
  ++questions_about_processor;
  static ChosenTarget chosen;
  return chosen;
}

}  // namespace hwy

namespace arrayfold::test {
namespace {

struct Tested {
  const char* path;
  bool is_self_contained;
};
std::vector<Tested> tested_modules() {
  std::vector<Tested> modules;
  for (const char* path : {TESTED_MODULES}) modules.push_back({path, !modules.empty()});
  return modules;
}

class Neighbours : public ::testing::TestWithParam<Tested> {
 protected:
  int threads_before = threads_of_process();
  LoadedModule module{GetParam().path};
};
INSTANTIATE_TEST_SUITE_P(Modules, Neighbours, ::testing::ValuesIn(tested_modules()), [](const auto& tested) {
  return tested.param.is_self_contained ? "self_contained" : "shared";
});

TEST_P(Neighbours, WithAnXtensorOfTheirOwn_ComputeBesideTheModule) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(neighbours::sum_of_own_arrays(1000), 999000);
    Value up = module.call("xarange", {Value(1000)}), two(2.0);
    Value product = LoadedModule::apply(Opcode::multiply, up, two);
    EXPECT_EQ(module.number(module.call("xsort", {product})), 999000);
    // Rows come first in the module, whatever the layout of the host's arrays is.
    Value six = module.call("xarange", {Value(6)});
    LoadedModule::method(six, "reshape", {Value(2), Value(3)});
    EXPECT_EQ(LoadedModule::text(six), "[[0.0,1.0,2.0],[3.0,4.0,5.0]]");
  }
}

TEST_P(Neighbours, WithAnXtensorOfTheirOwn_CatchWhatTheModuleThrows) {
  Value two = module.call("xones", {Value(2)}), three = module.call("xones", {Value(3)});
  std::string message;
  try {
    LoadedModule::apply(Opcode::add, two, three);
  } catch (const std::exception& error) {
    message = error.what();
  }
  EXPECT_EQ(message, neighbours::own_broadcast_error());
  EXPECT_NE(message.find("dimension"), std::string::npos) << message;
}

// Every target computes the same bits, so it does not matter whose answer the module takes.
TEST_P(Neighbours, WithAHighwayOfTheirOwn_GetTheSameResults) {
  questions_about_processor = 0;
  Value waves = module.call("xsin", {module.call("xarange", {Value(2000)})});
  double sum_of_squares = 0;
  for (int n = 0; n < 2000; ++n) sum_of_squares += std::sin(n) * std::sin(n);
  EXPECT_NEAR(module.number(module.call("xsquare", {waves})), sum_of_squares, 1e-9);
  Value sorted = module.call("xsort", {module.call("xlinspace", {Value(1999.0), Value(0), Value(2000)})});
  Value up = module.call("xarange", {Value(2000)});
  EXPECT_EQ(module.number(module.call("xabs", {LoadedModule::apply(Opcode::subtract, up, sorted)})), 0);
  if (GetParam().is_self_contained) {
    EXPECT_EQ(questions_about_processor, 0) << "the module asks the processor itself";
  } else {
    EXPECT_GT(questions_about_processor, 0) << "the loader takes the first function of this name";
  }
}

// The shared module uses the OpenBLAS that is there already, with its number of threads.
TEST_P(Neighbours, WithAnOpenBlasOfTheirOwn_ComputeBesideTheModule) {
  if (std::thread::hardware_concurrency() > 1) {
    EXPECT_EQ(threads_of_process() - threads_before, GetParam().is_self_contained ? 1 : 0);
  }
  const int n = 240;
  const std::vector<double> ones(n * n, 1);
  std::vector<double> product(n * n);
  Value square = module.call("xones", {Value(n), Value(n)});
  for (const int threads : {1, 2, 1}) {
    openblas_set_num_threads(threads);
    EXPECT_EQ(module.number(module.call("xdot", {square, square})), 1.0 * n * n * n);
    EXPECT_EQ(openblas_get_num_threads(), threads);
    cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1, ones.data(), n, ones.data(), n, 0,
                product.data(), n);
    EXPECT_EQ(product, std::vector<double>(n * n, n));
  }
}

}  // namespace
}  // namespace arrayfold::test
