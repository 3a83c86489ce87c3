// contract/function_table_test.cpp: the rows in their order, their minimum counts, and the course of PKG_Init

#include "support/functions.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

struct Row {
  const char* name;
  int minimum;  // of arguments
};

// Hosts have scripts that were written for 93 functions, and call each by its row: a function more or less, or another
// order, breaks them. The rows are therefore written down a second time.
constexpr std::size_t function_count = 93;
constexpr Row expected_rows[function_count] = {
    {"xarray", 1},        {"xrand", 1},      {"xamin", 1},
    {"xamax", 1},         {"xsum", 1},       {"xeye", 1},
    {"xzeros", 1},        {"xones", 1},      {"xempty", 1},
    {"xarange", 1},       {"xlinspace", 2},  {"xlogspace", 2},
    {"xargmin", 1},       {"xargmax", 1},    {"xsort", 1},
    {"xargsort", 1},      {"xunique", 1},    {"xpartition", 2},
    {"xsetdiff1d", 2},    {"xdiff", 1},      {"xargpartition", 2},
    {"xmedian", 1},       {"xrandn", 1},     {"xrandint", 1},
    {"xchoice", 0},       {"xshuffle", 1},   {"xpermutation", 1},
    {"xprod", 1},         {"xmean", 1},      {"xstddev", 1},
    {"xvariance", 1},     {"xtrapz", 1},     {"xcount_nonzero", 1},
    {"xabs", 1},          {"xsign", 1},      {"xremainder", 2},
    {"xminimum", 2},      {"xmaximum", 2},   {"xclip", 3},
    {"xfma", 3},          {"xinterp", 3},    {"xrad2deg", 1},
    {"xdegrees", 1},      {"xdeg2rad", 1},   {"xradians", 1},
    {"xexp", 1},          {"xexpm1", 1},     {"xlog", 1},
    {"xlog1p", 1},        {"xpow", 2},       {"xsqrt", 1},
    {"xsquare", 1},       {"xcube", 1},      {"xcbrt", 1},
    {"xsin", 1},          {"xcos", 1},       {"xtan", 1},
    {"xsinh", 1},         {"xcosh", 1},      {"xtanh", 1},
    {"xerf", 1},          {"xtgamma", 1},    {"xlgamma", 1},
    {"xisnan", 1},        {"xisinf", 1},     {"xisfinite", 1},
    {"xsearchsorted", 1}, {"xhistogram", 1}, {"xhistogram_bin_edges", 2},
    {"xbincount", 1},     {"xdigitize", 2},  {"xdot", 2},
    {"xvdot", 2},         {"xouter", 2},     {"xmatrix_power", 1},
    {"xkron", 2},         {"xcholesky", 1},  {"xqr", 1},
    {"xsvd", 1},          {"xeig", 1},       {"xeigvals", 1},
    {"xeigh", 1},         {"xeigvalsh", 1},  {"xnorm", 1},
    {"xcond", 1},         {"xdet", 1},       {"xmatrix_rank", 1},
    {"xslogdet", 1},      {"xtrace", 1},     {"xinv", 1},
    {"xpinv", 1},         {"xsolve", 2},     {"xlstsq", 2},
};

class FunctionTable : public ModuleTest {};

TEST_F(FunctionTable, HasTheRowsInTheirOrder) {
  const auto& rows = Module::loaded().rows();
  ASSERT_EQ(rows.size(), function_count);
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_STREQ(rows[i].name, expected_rows[i].name) << "row " << i;
  EXPECT_STREQ(rows[0].name, "xarray");
  EXPECT_STREQ(rows[function_count - 1].name, "xlstsq");
}

TEST_F(FunctionTable, IsTheListThatTestsRead) {
  const auto& functions = all_functions();
  ASSERT_EQ(functions.size(), function_count);
  for (std::size_t i = 0; i < function_count; ++i) {
    EXPECT_STREQ(functions[i].name, expected_rows[i].name);
    EXPECT_EQ(functions[i].minimum, expected_rows[i].minimum) << functions[i].name;
  }
}

TEST_F(FunctionTable, BelowTheMinimumCount_ReturnsZeroAndTouchesNothing) {
  for (const Row& row : expected_rows)
    for (int nargs = row.minimum - 1; row.minimum > 0 && nargs >= -1; --nargs) {
      const EntryFunction function = Module::loaded().entry(row.name);
      // No argument is looked at, so there need not be any.
      Value result(sentinel);
      const HostValue before = result.record();
      hvm::record_calls(true);
      EXPECT_EQ(function(ctx(), nullptr, nargs, result.address()), 0) << row.name << " with " << nargs;
      hvm::record_calls(false);
      EXPECT_EQ(hvm::recorded_calls().size(), 0u) << row.name;
      EXPECT_EQ(std::memcmp(&before, result.address(), sizeof before), 0) << row.name;
    }
}

TEST_F(FunctionTable, WithTheMinimumCount_EveryEntryLooksAtItsArguments) {
  // A nil is neither a number nor an object nor code: whatever looks at its arguments fails.
  for (const Row& row : expected_rows) {
    if (row.minimum == 0 || std::string(row.name) == "xrandint") continue;  // the two that look at nothing
    std::vector<Value> args(static_cast<std::size_t>(row.minimum), Value(0));
    args.back() = Value();
    const Answer answer = call(row.name, args);
    EXPECT_EQ(answer.returned, 0) << row.name;
    EXPECT_TRUE(answer.untouched) << row.name;
    if (std::string(row.name) == "xarray") continue;  // which reads the tag of its first argument itself
    EXPECT_FALSE(answer.operations.empty()) << row.name;
  }
}

TEST_F(FunctionTable, Registration_ComesBeforeTheTypesInTheirOrder) {
  const std::vector<std::string> expected = {"register " + std::to_string(function_count),
                                             "NewAnyMan",
                                             "RegisterAnyMan",
                                             "NewAnyMan",
                                             "RegisterAnyMan",
                                             "NewAnyMan",
                                             "RegisterAnyMan",
                                             "NewAnyMan",
                                             "RegisterAnyMan"};
  EXPECT_EQ(Module::loaded().start(), expected);
  EXPECT_EQ(Module::loaded().init_returned(), 1);
  std::vector<std::string> types;
  for (const auto& type : hvm::registered_types()) types.push_back(type.name);
  const std::vector<std::string> expected_types = {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"};
  EXPECT_EQ(types, expected_types);
}

TEST_F(FunctionTable, Required_TheFloatTypeIsNotRegistered) { EXPECT_EQ(hvm::type_named("$xfloatarray"), nullptr); }

TEST_F(FunctionTable, TypesAreRegisteredUnderTheVeryNameOfTheirManager) {
  const auto& calls = Module::loaded().start_calls();
  ASSERT_EQ(calls.size(), 8u);
  const char* const names[] = {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"};
  for (std::size_t type = 0; type < 4; ++type) {
    const auto& made = calls[2 * type];
    const auto& registered = calls[2 * type + 1];
    EXPECT_STREQ(made.operation, "HVM_NewAnyMan");
    EXPECT_STREQ(registered.operation, "HVM_RegisterAnyMan");
    EXPECT_STREQ(static_cast<const char*>(made.subject), names[type]);
    EXPECT_EQ(made.subject, registered.subject);  // one pointer
    EXPECT_EQ(made.number, 0);                    // the last argument is null
    const auto callbacks = hvm::callbacks_of(hvm::type_named(names[type]));
    EXPECT_TRUE(callbacks.create && callbacks.destroy && callbacks.method && callbacks.op) << names[type];
  }
}

TEST_F(FunctionTable, Required_NoFailureOfRegistrationIsNoticed) {
  for (const int answer : {0, -1, 1}) {
    hvm::withhold_objects(true);  // managers neither
    hvm::record_calls(true);
    EXPECT_EQ(Module::loaded().init_again(answer), 1);
    hvm::record_calls(false);
    hvm::withhold_objects(false);
    EXPECT_EQ(hvm::recorded_calls().size(), 8u);
  }
}

}  // namespace
}  // namespace arrayfold::test
