// refhost/cli/loading_test.cpp: modules that cannot be loaded, and what is said of each

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

/// Loading `path` ends with status 3 and a message that names it and the cause.
void expect_unloadable(const std::string& path, const std::string& cause, const Conditions& conditions = {}) {
  const Outcome outcome = run_hvm({"--module", path, "-e", "print(1)"}, conditions);
  EXPECT_EQ(outcome.status, 3) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err.rfind("hvm: the module " + path + " cannot be loaded: ", 0), 0u) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr(cause));
}

TEST(Loading, MissingFile_CannotBeLoaded) {
  expect_unloadable("/no/such/module.so", "there is no such file");
  expect_unloadable("/tmp", "it is not a regular file");
}

TEST(Loading, FileThatIsNoSharedObject_CannotBeLoaded) {
  const Workplace place;
  expect_unloadable(place.write("text.so", "not a library, but long enough to hold the header of one: 0123456789"),
                    "it is not an ELF shared object");
  expect_unloadable(place.write("empty.so", ""), "it is not an ELF shared object");
}

TEST(Loading, CutOrForeignLibrary_CannotBeLoaded) {
  const Workplace place;
  const std::string whole = contents(module_path("module_failing"));
  expect_unloadable(place.write("cut.so", whole.substr(0, 100)), "its ELF structure is cut off");
  std::string foreign = whole;
  foreign[18] = static_cast<char>(foreign[18] ^ 0x55);
  expect_unloadable(place.write("foreign.so", foreign), "it is an ELF file for another machine");
  std::string object = whole;
  object[16] = 1;
  expect_unloadable(place.write("object.so", object), "it is an ELF file, but no shared object");
}

TEST(Loading, LibraryWithoutPkgInit_CannotBeLoaded) {
  expect_unloadable(module_path("module_without_init"), "it exports no PKG_Init");
}

TEST(Loading, ModuleWhoseInitFails_CannotBeLoaded) {
  expect_unloadable(module_path("module_failing"), "PKG_Init returns 0");
}

TEST(Loading, ModuleThatThrows_CannotBeLoaded) {
  expect_unloadable(module_path("module_throwing"), "PKG_Init threw std::runtime_error: no room today");
}

TEST(Loading, ModuleWithUnknownSymbol_CannotBeLoaded) {
  expect_unloadable(module_path("module_unresolved"), "HVM_OfAnotherWorld");
}

TEST(Loading, InterpreterWithoutTheVersionNode_StopsBeforeAnythingIsLoaded) {
  Conditions over_stand_in;
  over_stand_in.environment = {{"LD_LIBRARY_PATH", UNVERSIONED_DIRECTORY}};
  expect_unloadable(
      module_path("module_over_interp"),
      std::string(UNVERSIONED_DIRECTORY) + "/libHVMInterp.so has no lgamma and erf of version HVMINTERP_1",
      over_stand_in);
  EXPECT_EQ(run_hvm({"--module", module_path("module_over_interp"), "-e", ""}).status, 0);
}

TEST(Loading, ModuleThatEndsTheProcess_IsNamed) {
  const Outcome outcome = run_hvm({"--module", module_path("module_faulting"), "-e", ""});
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_THAT(outcome.err, HasSubstr(module_path("module_faulting")));
  EXPECT_THAT(outcome.err, HasSubstr("the module ended the process: SIGABRT"));
}

TEST(Loading, RelativePath_IsTakenFromTheCurrentDirectory) {
  const auto relative = std::filesystem::relative(module_path("toy_module"));
  EXPECT_EQ(run_hvm({"--module", relative, "-e", "print(toy_count(1))"}).out, "1\n");
}

}  // namespace
}  // namespace hvm::testing
