// elementwise/host_library_test.cpp: which functions are the host's, seen with a host library that counts
//
// Runs with LD_LIBRARY_PATH at the stand-in, which therefore takes the place of the reference host's library.

#include <cmath>

#include <dlfcn.h>

#include "functions.hpp"

namespace arrayfold::test {
namespace {

struct Calls {
  std::size_t erf;
  std::size_t lgamma;
};
bool operator==(const Calls& a, const Calls& b) { return a.erf == b.erf && a.lgamma == b.lgamma; }
std::ostream& operator<<(std::ostream& out, const Calls& calls) {
  return out << calls.erf << " of erf, " << calls.lgamma << " of lgamma";
}

class HostLibrary : public ModuleTest {
 protected:
  /// Calls so far, of the library that is loaded under the module's name of it.
  static Calls calls() {
    static void* const library = dlopen("libHVMInterp.so", RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) throw std::runtime_error("no interpreter library is loaded");
    return {counter(library, "erf_calls"), counter(library, "lgamma_calls")};
  }

  /// What a call of `function` adds.
  Calls added(const char* function, const Value& operand, std::vector<double>* values = nullptr) const {
    const Calls before = calls();
    const Answer answer = call(function, {operand});
    if (values != nullptr) *values = elements_of<XTDouble>(answer.result);
    const Calls after = calls();
    return {after.erf - before.erf, after.lgamma - before.lgamma};
  }

 private:
  static std::size_t counter(void* library, const char* name) {
    void* symbol = dlsym(library, name);
    if (symbol == nullptr) throw std::runtime_error("the stand-in is not what is loaded");
    return load<std::size_t (*)()>(&symbol)();
  }
};

constexpr std::size_t count = 1003;

std::vector<std::int32_t> counted() {
  std::vector<std::int32_t> elements(count);
  for (std::size_t i = 0; i < count; ++i) elements[i] = static_cast<std::int32_t>(i) - 500;
  return elements;
}

/// The counted numbers as doubles and as both kinds of integers.
std::vector<Value> operands(HostContext ctx) {
  const auto ints = counted();
  return {array_of<XTDouble>(ctx, {count}, {ints.begin(), ints.end()}), array_of<XTInt>(ctx, {count}, ints),
          array_of<XTInt64>(ctx, {count}, {ints.begin(), ints.end()})};
}

TEST_F(HostLibrary, Required_Xerf_CallsItOnceForEveryElement) {
  for (const Value& operand : operands(ctx())) {
    std::vector<double> values;
    EXPECT_EQ(added("xerf", operand, &values), (Calls{count, 0}));
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(values[i], 1000.0 + counted()[i]);
  }
}

TEST_F(HostLibrary, Required_Xlgamma_CallsItOnceForEveryElement) {
  if (is_under_address_sanitizer())
    GTEST_SKIP()
        << "the address sanitizer puts its own lgamma before that of every library, so no call can arrive; every "
           "other build runs this, and xerf shows here that calls reach the host";
  for (const Value& operand : operands(ctx())) {
    std::vector<double> values;
    EXPECT_EQ(added("xlgamma", operand, &values), (Calls{0, count}));
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(values[i], 2000.0 + counted()[i]);
  }
}

TEST_F(HostLibrary, XerfAndXlgammaWithoutElements_DoNotCallIt) {
  EXPECT_EQ(added("xerf", array_of<XTDouble>(ctx(), {0}, {})), (Calls{0, 0}));
  EXPECT_EQ(added("xlgamma", array_of<XTDouble>(ctx(), {3, 0}, {})), (Calls{0, 0}));
}

TEST_F(HostLibrary, Required_FloatsNeverReachIt) {
  FloatObject floats({3}, {0.5f, -1.5f, 2.f});
  std::vector<double> erfs, lgammas;
  EXPECT_EQ(added("xerf", floats.value(), &erfs), (Calls{0, 0}));
  EXPECT_EQ(added("xlgamma", floats.value(), &lgammas), (Calls{0, 0}));
  EXPECT_EQ(erfs[0], static_cast<double>(::erff(0.5f)));
  EXPECT_EQ(lgammas[2], static_cast<double>(::lgammaf(2.f)));
}

TEST_F(HostLibrary, NoOtherFunctionReachesIt) {
  const auto ints = counted();
  for (const auto& function : functions()) {
    const std::string name = function.name;
    if (name == "xerf" || name == "xlgamma") continue;
    EXPECT_EQ(added(function.name, array_of<XTDouble>(ctx(), {count}, {ints.begin(), ints.end()})), (Calls{0, 0}));
    EXPECT_EQ(added(function.name, array_of<XTInt>(ctx(), {count}, ints)), (Calls{0, 0})) << name;
  }
}

}  // namespace
}  // namespace arrayfold::test
