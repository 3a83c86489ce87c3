// runtime/loading_test.cpp: loading, unloading, two modules in a process, and a process that forks

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "runtime/loaded_module.hpp"
#include "support/allocations.hpp"
#include "support/code_builder.hpp"

namespace arrayfold::test {
namespace {

namespace fs = std::filesystem;

/// An array of a kind that is found by its name, in the table that the module fills at load.
Value array_by_name(const LoadedModule& module, const char* dtype) {
  CodeBuilder code;
  return module.call("xarray", {code.quoted_call(dtype), Value::table_of({Value(3), Value(0), Value(1)})});
}

/// The matrix [[n, 1, ..], [1, n, ..], ..], whose product with itself is exact.
Value matrix(const LoadedModule& module, int n) {
  Value ones = module.call("xones", {Value(n), Value(n)}), diagonal = module.call("xeye", {Value(n)});
  Value factor(static_cast<double>(n - 1));
  Value scaled = LoadedModule::apply(Opcode::multiply, diagonal, factor);
  return LoadedModule::apply(Opcode::add, ones, scaled);
}

/// Whether products, solutions and the vectorised sort come out right, at a size for which BLAS starts its threads.
bool computes(const LoadedModule& module) {
  const int n = 240;
  const Value square = matrix(module, n);
  // A row of the product sums up to the square of a row's sum.
  const double row = 2.0 * n - 1;
  const bool has_product = module.number(module.call("xdot", {square, square})) == n * row * row;
  const Value solution = module.call("xsolve", {square, module.call("xones", {Value(n)})});
  const double error = module.number(solution) * row - n;
  const bool has_solution = error > -1e-9 && error < 1e-9;
  Value up = module.call("xarange", {Value(5000)});
  Value sorted = module.call("xsort", {module.call("xlinspace", {Value(4999.0), Value(0), Value(5000)})});
  const Value difference = LoadedModule::apply(Opcode::subtract, up, sorted);
  return has_product && has_solution && module.number(module.call("xabs", {difference})) == 0;
}

/// What scripts do first with a module.
void use(const LoadedModule& module) {
  EXPECT_EQ(LoadedModule::text(module.call("xarange", {Value(3)})), "[0.0,1.0,2.0]");
  EXPECT_EQ(LoadedModule::text(array_by_name(module, "double")), "[3.0,0.0,1.0]");
  EXPECT_EQ(LoadedModule::text(array_by_name(module, "int")), "[3,0,1]");
  EXPECT_EQ(LoadedModule::text(array_by_name(module, "int64")), "[3,0,1]");
  EXPECT_EQ(LoadedModule::text(array_by_name(module, "bool")), "[true,false,true]");
  EXPECT_TRUE(computes(module));
}

/// Copies of a module under other names.
class Copies {
 public:
  Copies() : folder_(fs::temp_directory_path() / ("arrayfold-copies-" + std::to_string(getpid()))) {
    fs::create_directory(folder_);
  }
  ~Copies() { fs::remove_all(folder_); }
  Copies(const Copies&) = delete;
  Copies& operator=(const Copies&) = delete;

  std::string of(const char* module, const char* name) const {
    fs::copy_file(module, folder_ / name);
    return folder_ / name;
  }

 private:
  fs::path folder_;
};

class ModuleLoadingTest : public ::testing::Test {
 protected:
  /// As much as before the test.
  void expect_nothing_left() const {
    EXPECT_EQ(hvm::counts(), before_) << "of the host";
    EXPECT_EQ(allocations().alive, alive_before_);
    EXPECT_EQ(threads_of_process(), threads_before_);
    for (const char* module : modules) EXPECT_EQ(mapped_parts(module), 0) << module;
  }

  static constexpr const char* modules[] = {TESTED_MODULES};

 private:
  hvm::Counts before_ = hvm::counts();
  std::int64_t alive_before_ = allocations().alive;
  int threads_before_ = threads_of_process();
};
class ModuleLoading : public ModuleLoadingTest, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Modules, ModuleLoading, ::testing::Values(TESTED_MODULES),
                         [](const auto& tested) { return tested.index == 0 ? "shared" : "self_contained"; });

// ---- Unloading

TEST_P(ModuleLoading, AgainAndAgain_WorksAndLeavesNothingBehind) {
  for (int round = 0; round < 4; ++round) {
    LoadedModule module(GetParam());
    EXPECT_GT(mapped_parts(GetParam()), 0);
    use(module);
    module.close();
    expect_nothing_left();
  }
}

TEST_P(ModuleLoading, Again_StartsTheRandomNumbersFromTheBeginning) {
  const auto first_draws = [] {
    const LoadedModule module(GetParam());
    return LoadedModule::text(module.call("xrand", {Value(3)}));
  };
  EXPECT_EQ(first_draws().substr(0, 8), "[0.13547") << "the first number of the engine";
  EXPECT_EQ(first_draws(), first_draws());
  expect_nothing_left();
}

TEST_P(ModuleLoading, WithoutAnyUse_LeavesNothingBehind) {
  LoadedModule(GetParam()).close();
  expect_nothing_left();
}

// The loader counts: the second closing unloads the module.
TEST_P(ModuleLoading, Twice_IsOneModule) {
  LoadedModule module(GetParam());
  {
    LoadedModule same(GetParam());
    const double first = module.number(module.call("xrand", {Value(1)}));
    EXPECT_NE(same.number(same.call("xrand", {Value(1)})), first) << "both draw from one engine";
  }
  EXPECT_GT(mapped_parts(GetParam()), 0);
  module.close();
  expect_nothing_left();
}

// ---- Two modules

/// Each computes with its own arrays and with those of the other, and draws from its own engine. Whoever was loaded
/// last makes the objects of both.
void use_both(LoadedModule& one, LoadedModule& other) {
  use(one);
  use(other);
  EXPECT_EQ(LoadedModule::text(one.call("xrand", {Value(2)})), LoadedModule::text(other.call("xrand", {Value(2)})));
  Value of_one = one.call("xarange", {Value(3)}), of_other = other.call("xarange", {Value(3)});
  EXPECT_EQ(LoadedModule::text(LoadedModule::apply(Opcode::add, of_one, of_other)), "[0.0,2.0,4.0]");
  EXPECT_EQ(one.number(of_other), 3);
  EXPECT_EQ(other.number(of_one), 3);
  EXPECT_EQ(LoadedModule::text(other.call("xdot", {of_one, of_other})), "[5.0]");
}

/// Both orders of loading, and both of unloading.
void use_both_in_any_order(const std::string& path, const std::string& other_path) {
  for (const bool closes_first_one_first : {true, false}) {
    for (const auto& [first_path, second_path] : {std::pair(path, other_path), std::pair(other_path, path)}) {
      LoadedModule first(first_path), second(second_path);
      use_both(first, second);
      (closes_first_one_first ? first : second).close();
      EXPECT_EQ(mapped_parts(closes_first_one_first ? first_path : second_path), 0);
      // The other one is still there. The host has forgotten the types of both, so no object can be made.
      EXPECT_GT(mapped_parts(closes_first_one_first ? second_path : first_path), 0);
      EXPECT_EQ((closes_first_one_first ? second : first).call("xarange", {Value(3)}).tag(), ValueTag::nil);
    }
  }
}

TEST_P(ModuleLoading, OfTwoCopiesUnderOtherNames_GivesTwoModules) {
  {
    const Copies copies;
    use_both_in_any_order(copies.of(GetParam(), "one.so"), copies.of(GetParam(), "other.so"));
  }
  expect_nothing_left();
}

TEST_F(ModuleLoadingTest, OfTheSharedAndTheSelfContainedModule_GivesTwoModules) {
  if (std::size(modules) < 2) GTEST_SKIP() << "this build has the shared module alone; the release build has both";
  use_both_in_any_order(modules[0], modules[std::size(modules) - 1]);
  expect_nothing_left();
}

// ---- Forks

/// Whether a child of this process ends well with what `works` says. A child that waits for something that its parent
/// had, such as a thread, is ended.
bool child_ends_well(const std::function<bool()>& works) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    _exit(works() ? 0 : 1);
  }
  int status = -1;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

TEST_P(ModuleLoading, BeforeAFork_ServesParentAndChild) {
  LoadedModule module(GetParam());
  EXPECT_TRUE(computes(module));  // the threads of BLAS have run
  EXPECT_TRUE(child_ends_well([&] { return computes(module) && child_ends_well([&] { return computes(module); }); }));
  EXPECT_TRUE(computes(module));
}

TEST_P(ModuleLoading, BeforeAFork_LetsTheChildUnloadTheModule) {
  LoadedModule module(GetParam());
  EXPECT_TRUE(computes(module));
  EXPECT_TRUE(child_ends_well([&] {
    module.close();
    return mapped_parts(GetParam()) == 0;
  }));
  EXPECT_TRUE(computes(module));
}

TEST_P(ModuleLoading, BeforeAFork_GivesTheChildTheSameRandomNumbers) {
  LoadedModule module(GetParam());
  module.call("xrand", {Value(5)});
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const auto draws = [&] { return LoadedModule::text(module.call("xrand", {Value(1)})); };
  ASSERT_TRUE(child_ends_well([&] {
    const std::string text = draws();
    return write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }));
  char text[64];
  const ssize_t size = read(ends[0], text, sizeof text);
  close(ends[0]);
  close(ends[1]);
  ASSERT_GT(size, 0);
  EXPECT_EQ(std::string(text, static_cast<std::size_t>(size)), draws());
}

}  // namespace
}  // namespace arrayfold::test
