// self_contained/self_contained_test.cpp: the module for closed hosts, in a host that has an OpenBLAS of its own

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/module_test.hpp"

namespace {

int calls_of_names = 0;

}  // namespace

// This host has functions of its own under names of the libraries that are inside the module. The linker offers them to
// every library that is loaded.
#pragma GCC visibility push(default)
extern "C" {
void cblas_dgemm() { ++calls_of_names; }
void cblas_dgemv() { ++calls_of_names; }
void dgesv_() { ++calls_of_names; }
void dgesdd_() { ++calls_of_names; }
void dgetrf_() { ++calls_of_names; }
void gotoblas_init() { ++calls_of_names; }
void openblas_read_env() { ++calls_of_names; }
void _gfortran_concat_string() { ++calls_of_names; }
}
#pragma GCC visibility pop

namespace arrayfold::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> lines_of(const std::string& command) {
  std::FILE* const pipe = popen(command.c_str(), "r");
  std::vector<std::string> lines;
  std::array<char, 4096> line;
  while (pipe != nullptr && std::fgets(line.data(), line.size(), pipe)) lines.emplace_back(line.data());
  EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << command;
  return lines;
}

class SelfContained : public ModuleTest {
 protected:
  Value matrix() const { return array_of<XTDouble>(ctx(), {2, 2}, {4, 1, 2, 3}); }
  Value row() const { return array_of<XTDouble>(ctx(), {2}, {1, 2}); }
  std::vector<double> given(const char* name, const std::vector<Value>& args) const {
    return elements_of<XTDouble>(call(name, args).result);
  }
};

TEST_F(SelfContained, NamesOfTheHost_AreNotCalled) {
  EXPECT_EQ(given("xdot", {matrix(), matrix()}), (std::vector<double>{18, 7, 14, 11}));
  EXPECT_EQ(given("xdot", {matrix(), row()}), (std::vector<double>{6, 8}));
  const std::vector<double> solution = given("xsolve", {matrix(), row()});
  EXPECT_NEAR(solution[0], 0.1, 1e-15);
  EXPECT_NEAR(solution[1], 0.6, 1e-15);
  EXPECT_EQ(call("xsvd", {matrix()}).returned, 1);
  EXPECT_EQ(calls_of_names, 0);
}

TEST_F(SelfContained, AnOpenBlasOfTheHost_IsAnotherOne) {
  void* const host_openblas = dlopen(SHARED_OPENBLAS, RTLD_NOW | RTLD_GLOBAL);
  ASSERT_NE(host_openblas, nullptr) << dlerror();
  const auto of_host = [&](const char* name) { return dlsym(host_openblas, name); };
  const auto set_threads = reinterpret_cast<void (*)(int)>(of_host("openblas_set_num_threads"));
  const auto threads = reinterpret_cast<int (*)()>(of_host("openblas_get_num_threads"));
  const auto dot = reinterpret_cast<double (*)(int, const double*, int, const double*, int)>(of_host("cblas_ddot"));
  ASSERT_TRUE(set_threads != nullptr && threads != nullptr && dot != nullptr);

  set_threads(1);
  // Large enough for several threads.
  const std::int64_t n = 300;
  const std::vector<double> ones(n * n, 1);
  const Value square = array_of<XTDouble>(ctx(), {n, n}, ones);
  EXPECT_EQ(given("xdot", {square, square}), std::vector<double>(n * n, n));
  EXPECT_EQ(threads(), 1);
  EXPECT_EQ(dot(n, ones.data(), 1, ones.data(), 1), n);
}

int threads_of_process() {
  return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator()));
}

bool maps_module() {
  std::ifstream maps("/proc/self/maps");
  std::ostringstream text;
  text << maps.rdbuf();
  return text.str().find(SELF_CONTAINED_PATH) != std::string::npos;
}

/// A fork calls what libraries have asked for; those of an unloaded library would be gone.
bool forks() {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  int status = -1;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

/// Loads and unloads the module, and ends the process.
[[noreturn]] void end_after_unloading() {
  const int before = threads_of_process();
  void* const module = dlopen(SELF_CONTAINED_PATH, RTLD_NOW | RTLD_LOCAL);
  const int loaded = threads_of_process();
  const bool was_mapped = maps_module();
  const bool is_closed = module != nullptr && dlclose(module) == 0;
  std::fprintf(stderr, "mapped %d, closed %d, still mapped %d, threads left %d, forks %d, threads started %d\n",
               was_mapped, is_closed, maps_module(), threads_of_process() - before, forks(), loaded - before);
  std::exit(0);
}

TEST(SelfContainedDeathTest, Unloading_EndsItsThreadsAndLeavesNothing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // OpenBLAS starts no second thread where there is one processor.
  const std::string started = std::thread::hardware_concurrency() > 1 ? "1" : "0";
  EXPECT_EXIT(end_after_unloading(), ::testing::ExitedWithCode(0),
              "mapped 1, closed 1, still mapped 0, threads left 0, forks 1, threads started " + started + "\n");
}

TEST(SelfContainedFile, NeedsTheRuntimesAndTheHostAlone) {
  std::set<std::string> needed;
  for (const std::string& line : lines_of("readelf -dW '" SELF_CONTAINED_PATH "'")) {
    const std::size_t open = line.find('[');
    if (line.find("(NEEDED)") != std::string::npos) needed.insert(line.substr(open + 1, line.find(']') - open - 1));
  }
  for (const char* loader : {"ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}) needed.erase(loader);
  EXPECT_EQ(needed, (std::set<std::string>{"libHVMkrnl.so", "libHVMInterp.so", "libstdc++.so.6", "libgcc_s.so.1",
                                           "libm.so.6", "libc.so.6"}));
}

TEST(SelfContainedFile, StaysBelowFortyMegabytes) { EXPECT_LT(fs::file_size(SELF_CONTAINED_PATH), 40'000'000u); }

#ifdef LOAD_TIME_PROGRAM
// The medians of processes that take turns: a busy machine slows down both. Loading takes about 0.06 times as long.
TEST(SelfContainedFile, LoadsInAtMostOneAndAHalfTimesTheTimeOfTheOther) {
  const auto lines = lines_of("'" LOAD_TIME_PROGRAM "' 15 '" SELF_CONTAINED_PATH "' '" MODULE_PATH "'");
  ASSERT_EQ(lines.size(), 2u);
  const double own = std::stod(lines[0]), of_the_other = std::stod(lines[1]);
  EXPECT_GT(own, 0);
  EXPECT_LE(own, 1.5 * of_the_other);
}
#endif

#ifdef DIGEST_PROGRAM
TEST(SelfContainedFile, ComputesTheSameBits) {
  const auto own = lines_of("ARRAYFOLD_TEST_MODULE='" SELF_CONTAINED_PATH "' '" DIGEST_PROGRAM "'");
  const auto of_the_other = lines_of("unset ARRAYFOLD_TEST_MODULE; '" DIGEST_PROGRAM "'");
  EXPECT_GT(own.size(), 60u);
  EXPECT_EQ(own, of_the_other);
}
#endif

}  // namespace
}  // namespace arrayfold::test
