// refhost/script/run/memory_test.cpp: scripts that are read while memory runs out
//
// `operator new` is replaced for the whole program.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>

#include "script/library/script_file.hpp"
#include "script/syntax/names.hpp"
#include "script_run.hpp"

namespace {

int allocations_to_failure = 0;  // 0: none fails

void* allocated(std::size_t size) {
  if (allocations_to_failure > 0 && --allocations_to_failure == 0) throw std::bad_alloc();
  void* memory = std::malloc(size > 0 ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocated(size); }
void* operator new[](std::size_t size) { return allocated(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace hvm::testing {
namespace {

/// Runs `action` with its first allocation failing, then its second, and so on until none fails. Gives the number of
/// failures, after each of which `action` has thrown an `Error` that `check` accepts.
template <class Error, class Action, class Check>
int fail_each_allocation(Action action, Check check) {
  for (int nth = 1;; ++nth) {
    allocations_to_failure = nth;
    try {
      action();
      const bool has_failed = allocations_to_failure == 0;
      allocations_to_failure = 0;
      EXPECT_FALSE(has_failed) << "allocation " << nth << " failed without an error";
      return nth - 1;
    } catch (const Error& error) {
      allocations_to_failure = 0;
      check(error);
    }
  }
}

TEST(MemoryRunsOut, WhileAScriptIsParsed_TheErrorNamesTheScript) {
  const auto source = std::make_shared<SourceText>(
      "long/name/of/a/script.hvm", "fn f(a)\n  return [a, \"text\": w\"wide\"]\nend\nx = f(@double(2, 3))[0] + 1");
  Interpreter interpreter(toy_functions(), {});
  const int failures = fail_each_allocation<ScriptError>(
      [&] { interpreter.parse(source); },
      [](const ScriptError& error) {
        EXPECT_EQ(error.message(), "out of memory while the script is read");
        EXPECT_EQ(error.report().rfind("long/name/of/a/script.hvm:1:1: error: out of memory", 0), 0u) << error.report();
      });
  EXPECT_GT(failures, 20);
}

TEST(MemoryRunsOut, WhileANameIsAdded_NoTwoNamesShareASlot) {
  NameTable names;
  const std::string name(100, 'n');
  const int failures = fail_each_allocation<std::bad_alloc>([&] { names.slot_of(name); },
                                                            [&](const std::bad_alloc&) {
                                                              EXPECT_EQ(names.size(), 0u);
                                                              EXPECT_FALSE(names.find(name));
                                                            });
  EXPECT_GT(failures, 1);
  EXPECT_EQ(names.slot_of(name), 0u);
  EXPECT_EQ(names.slot_of("another"), 1u);
}

TEST(MemoryRunsOut, WhileAScriptIsReadFromItsFile_TheErrorNamesTheScript) {
  const std::string path = ::testing::TempDir() + "a-script-with-a-long-name.hvm";
  std::ofstream(path) << std::string(10000, '\n') << "print(1)";
  const int failures = fail_each_allocation<std::runtime_error>(
      [&] { read_script(path); },
      [&](const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
      });
  EXPECT_GT(failures, 3);
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace hvm::testing
