// linalg/linalg_frame_test.cpp: what the functions ask of the host, what they accept, and how results come

#include <cstring>
#include <sstream>

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

/// How a result comes.
enum class Form { array, scalar, arrays, numbers, nothing };

/// What becomes of integers, in whatever position.
enum class Integers { taken, fail };

struct Function {
  const char* name;
  std::size_t operands;
  Integers integers;
  Form form;
  int values = 0;  // of a table
};

constexpr Function functions[] = {
    {"xdot", 2, Integers::taken, Form::array},         {"xvdot", 2, Integers::taken, Form::scalar},
    {"xouter", 2, Integers::taken, Form::array},       {"xkron", 2, Integers::taken, Form::array},
    {"xcholesky", 1, Integers::fail, Form::array},     {"xqr", 1, Integers::fail, Form::arrays, 2},
    {"xsvd", 1, Integers::fail, Form::arrays, 3},      {"xeig", 1, Integers::fail, Form::arrays, 0},
    {"xeigvals", 1, Integers::fail, Form::nothing},    {"xeigh", 1, Integers::fail, Form::arrays, 2},
    {"xeigvalsh", 1, Integers::fail, Form::array},     {"xnorm", 1, Integers::fail, Form::scalar},
    {"xdet", 1, Integers::fail, Form::scalar},         {"xmatrix_rank", 1, Integers::fail, Form::scalar},
    {"xslogdet", 1, Integers::fail, Form::numbers, 2}, {"xtrace", 1, Integers::taken, Form::scalar},
    {"xinv", 1, Integers::fail, Form::array},          {"xpinv", 1, Integers::fail, Form::array},
    {"xsolve", 2, Integers::fail, Form::array},        {"xlstsq", 2, Integers::fail, Form::arrays, 4}};

/// Both have no regular result: the stub, and the function that always throws.
constexpr const char* without_result[] = {"xmatrix_power", "xcond"};

bool gives_object(const Function& function) { return function.form == Form::array || function.form == Form::scalar; }
bool gives_table(const Function& function) { return function.form == Form::arrays || function.form == Form::numbers; }

Words looked_at(std::size_t operands) {
  if (operands == 1) return {"AnyCheck 0", "GetAny 0"};
  return {"AnyCheck 0", "AnyCheck 1", "GetAny 0", "GetAny 1"};
}

Words operations_of(const Function& function) {
  Words words = looked_at(function.operands);
  const auto add = [&](const Words& more) { words.insert(words.end(), more.begin(), more.end()); };
  if (gives_object(function)) add({"NewAny", "SetTypeAny result"});
  if (gives_table(function)) add({"ForceTable result"});
  for (int n = 0; n < function.values; ++n)
    add(function.form == Form::arrays ? Words{"HashSetInt", "NewAny", "SetTypeAny"} : Words{"HashSetInt", "SetReal"});
  return words;
}

class LinalgFrame : public AlgebraTest {
 protected:
  /// A positive definite matrix suits all functions.
  Value matrix(Kind kind = Kind::float64) { return made(kind, {2, 2}, {2, 1, 1, 3}); }
  std::vector<Value> operands(std::size_t count, Kind kind = Kind::float64) {
    return std::vector<Value>(count, matrix(kind));
  }

  /// The name of every array in the result is that of the kind, and their number is the function's.
  void expect_form(const Function& function, const Answer& answer, const char* type_name) {
    EXPECT_EQ(answer.returned, 1) << function.name;
    EXPECT_EQ(answer.operations, operations_of(function)) << function.name;
    switch (function.form) {
      case Form::array:
      case Form::scalar:
        EXPECT_EQ(type_of(answer.result), type_name) << function.name;
        break;
      case Form::arrays:
      case Form::numbers: {
        const auto values = values_of(answer.result);
        EXPECT_EQ(values.size(), static_cast<std::size_t>(function.values)) << function.name;
        for (const Value& value : values) {
          EXPECT_EQ(type_of(value), function.form == Form::arrays ? type_name : "") << function.name;
          EXPECT_TRUE(function.form == Form::arrays || value.tag() == Value(1.5).tag()) << function.name;
        }
        break;
      }
      case Form::nothing:
        EXPECT_TRUE(answer.untouched) << function.name;
    }
  }

  template <class Visit>
  void for_all_names(Visit visit) {
    for (const Function& function : functions) visit(function.name, function.operands);
    for (const char* name : without_result) visit(name, std::size_t{1});
  }

  /// With the value in each position, the others being matrices: the call fails once it has looked at the value.
  void expect_failure_without_fetching(const Value& value, const std::string& what) {
    for_all_names([&](const char* name, std::size_t count) {
      for (std::size_t position = 0; position < count; ++position) {
        auto args = operands(count);
        args[position] = value;
        const Answer answer = call(name, args);
        expect_no_result(answer, 0, name + (" of " + what));
        EXPECT_EQ(answer.operations, position == 0 ? Words{"AnyCheck 0"} : (Words{"AnyCheck 0", "AnyCheck 1"})) << name;
      }
    });
  }

  /// The same with an object that is no numeric array: the call fails once both are fetched. The stub takes any object.
  void expect_failure_after_fetching(const Value& value, const std::string& what) {
    for_all_names([&](const char* name, std::size_t count) {
      for (std::size_t position = 0; position < count; ++position) {
        auto args = operands(count);
        args[position] = value;
        const Answer answer = call(name, args);
        expect_no_result(answer, contains(stubs, name) ? 1 : 0, name + (" of " + what));
        EXPECT_EQ(answer.operations, looked_at(count)) << name;
      }
    });
  }
};

TEST_F(LinalgFrame, Functions_AreThoseOfTheFamily) {
  Names names;
  for_all_names([&](const char* name, std::size_t) { names.push_back(name); });
  Names family = functions_of("linalg");
  std::sort(names.begin(), names.end());
  std::sort(family.begin(), family.end());
  EXPECT_EQ(names, family);
}

// ---- Kinds

TEST_F(LinalgFrame, EachFunctionOfDoubles_AsksTheHostInItsOrder) {
  for (const Function& function : functions)
    expect_form(function, call(function.name, operands(function.operands)), "$xdoublearray");
}

TEST_F(LinalgFrame, Required_FloatOperands_GiveDoublesUnderTheFloatName) {
  for (const Function& function : functions)
    expect_form(function, call(function.name, operands(function.operands, Kind::float32)), "$xfloatarray");
}

TEST_F(LinalgFrame, IntegersAreTakenByProductsAndTheTraceAlone) {
  for (const Function& function : functions) {
    const Answer ints = call(function.name, operands(function.operands, Kind::int32));
    const Answer longs = call(function.name, operands(function.operands, Kind::int64));
    if (function.integers == Integers::taken) {
      expect_form(function, ints, "$xintarray");
      expect_form(function, longs, "$xint64array");
      continue;
    }
    for (const Answer& answer : {ints, longs}) {
      expect_no_result(answer, 0, function.name);
      EXPECT_EQ(answer.operations, looked_at(function.operands)) << function.name;
    }
  }
}

TEST_F(LinalgFrame, Required_IntegersCountAsHandledByXcond) {
  for (const Value& integers : {matrix(Kind::int32), matrix(Kind::int64)}) {
    const Answer answer = call("xcond", {integers});
    expect_no_result(answer, 1, "xcond");
    EXPECT_EQ(answer.operations, looked_at(1));
  }
}

TEST_F(LinalgFrame, IntegersInAnyShape_FailByKindAlone) {
  const Extents shapes[] = {{}, {0}, {3}, {2, 3}, {0, 0}, {2, 2, 2}};
  for (const Extents& extents : shapes) {
    const Value whole = ints(extents, Numbers(size_of(extents), 1));
    for (const Function& function : functions) {
      if (function.integers == Integers::taken) continue;
      EXPECT_EQ(ending(function.name, std::vector<Value>(function.operands, whole)), "0") << function.name;
      if (function.operands < 2) continue;
      EXPECT_EQ(ending(function.name, {whole, matrix()}), "0") << function.name;
      EXPECT_EQ(ending(function.name, {matrix(), whole}), "0") << function.name;
    }
    EXPECT_EQ(ending("xcond", {whole}), "1");
  }
}

TEST_F(LinalgFrame, EveryPairOfKinds_OfTheSolvers) {
  const Value kinds[] = {matrix(Kind::int32), matrix(Kind::int64), matrix(Kind::float32), matrix()};
  const char* names[] = {"$xintarray", "$xint64array", "$xfloatarray", "$xdoublearray"};
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t j = 0; j < 4; ++j) {
      const Answer solved = call("xsolve", {kinds[i], kinds[j]});
      const Answer fitted = call("xlstsq", {kinds[i], kinds[j]});
      EXPECT_EQ(solved.operations, i >= 2 && i == j ? operations_of(functions[18]) : looked_at(2)) << i << j;
      EXPECT_EQ(fitted.operations, i >= 2 && j >= 2 ? operations_of(functions[19]) : looked_at(2)) << i << j;
      if (i >= 2 && i == j)
        expect_form(functions[18], solved, names[i]);
      else
        expect_no_result(solved, 0, "xsolve");
      if (i >= 2 && j >= 2)
        expect_form(functions[19], fitted, names[i]);
      else
        expect_no_result(fitted, 0, "xlstsq");
    }
}

TEST_F(LinalgFrame, Required_FloatAndDouble_AreNoPairForXsolve) {
  expect_no_result(call("xsolve", {matrix(Kind::float32), matrix()}), 0, "float, double");
  expect_no_result(call("xsolve", {matrix(), matrix(Kind::float32)}), 0, "double, float");
  // Kinds come before shapes.
  EXPECT_EQ(ending("xsolve", {ones({2, 3}), made(Kind::float32, {2}, {1, 2})}), "0");
  EXPECT_EQ(ending("xsolve", {ones({2, 3}), made(Kind::int32, {2}, {1, 2})}), "0");
  EXPECT_EQ(ending("xlstsq", {ones({2, 3}), made(Kind::int32, {2, 1, 1}, {1, 2})}), "0");
}

// ---- Tables

TEST_F(LinalgFrame, Required_EveryTable_IsForcedForFourAndFilledFromZeroOn) {
  for (const Function& function : functions) {
    if (!gives_table(function)) continue;
    call(function.name, operands(function.operands));
    int next_key = 0, forced = 0;
    for (const auto& recorded : hvm::recorded_calls()) {
      if (std::strcmp(recorded.operation, "HVM_ForceTable") == 0) {
        ++forced;
        EXPECT_EQ(recorded.number, 4) << function.name;
      }
      if (std::strcmp(recorded.operation, "HVM_HashSetInt") == 0) {
        EXPECT_EQ(recorded.number, next_key++) << function.name;
      }
    }
    EXPECT_EQ(forced, 1) << function.name;
    EXPECT_EQ(next_key, function.values) << function.name;
  }
}

TEST_F(LinalgFrame, ATableThatWasThere_KeepsNothing) {
  for (const Function& function : functions) {
    if (!gives_table(function)) continue;
    auto args = operands(function.operands);
    Value result = Value::table_of({Value(1), Value(2), Value(3), Value(4), Value(5), Value(6)});
    const Value before = result;
    EXPECT_EQ(Module::loaded().entry(function.name)(ctx(), hvm::records_of(args), static_cast<int>(args.size()),
                                                    result.address()),
              1);
    EXPECT_EQ(values_of(result).size(), static_cast<std::size_t>(function.values)) << function.name;
    EXPECT_EQ(values_of(before).size(), 6u) << function.name;
  }
}

TEST_F(LinalgFrame, Required_TheTableIsForcedOnlyAfterTheOperationSucceeded) {
  const Value bad = doubles({3, 3}, Doubles(9, not_a_number)), wide = ones({2, 3}), row = ones({3});
  const auto expect_no_table = [&](const char* name, const std::vector<Value>& args) {
    EXPECT_ANY_THROW(call(name, args)) << name;  // `call` looks at the result record
    for (const auto& recorded : hvm::recorded_calls()) EXPECT_STRNE(recorded.operation, "HVM_ForceTable") << name;
  };
  expect_no_table("xeig", {bad});
  expect_no_table("xeig", {wide});
  expect_no_table("xeigh", {wide});
  expect_no_table("xslogdet", {wide});
  expect_no_table("xqr", {row});
  expect_no_table("xsvd", {row});
  expect_no_table("xlstsq", {row, row});
  expect_no_table("xlstsq", {wide, row});
  expect_no_table("xlstsq", {wide, ones({2, 1, 1})});
}

TEST_F(LinalgFrame, WithoutATableOfTheHost_MemoryIsOut) {
  for (const Function& function : functions) {
    if (!gives_table(function)) continue;
    auto args = operands(function.operands);
    Value result;
    hvm::fail_allocation(1);
    EXPECT_THROW(Module::loaded().entry(function.name)(ctx(), hvm::records_of(args), static_cast<int>(args.size()),
                                                       result.address()),
                 std::bad_alloc)
        << function.name;
    hvm::fail_allocation(0);
  }
}

TEST_F(LinalgFrame, WithoutObjectsOfTheHost_ResultsAreNil) {
  for (const Function& function : functions) {
    const auto args = operands(function.operands);
    hvm::withhold_objects(true);
    const Answer answer = call(function.name, args);
    hvm::withhold_objects(false);
    EXPECT_EQ(answer.returned, 1) << function.name;
    EXPECT_EQ(answer.operations, operations_of(function)) << function.name;
    EXPECT_EQ(answer.result.is_nil(), gives_object(function)) << function.name;
    if (function.form != Form::arrays) continue;
    for (const Value& value : values_of(answer.result)) EXPECT_TRUE(value.is_nil()) << function.name;
  }
}

class LinalgWithoutFloatName : public ModuleTest {};

TEST_F(LinalgWithoutFloatName, Required_ResultsOfFloats_TellTheHostOfNull) {
  FloatObject floats({2, 2}, {2, 1, 1, 3});
  for (const Function& function : functions) {
    const Answer answer = call(function.name, std::vector<Value>(function.operands, floats.value()));
    EXPECT_EQ(answer.returned, 1) << function.name;
    EXPECT_EQ(answer.operations, operations_of(function)) << function.name;
    EXPECT_EQ(answer.result.is_nil(), gives_object(function)) << function.name;
  }
}

// ---- Failures

TEST_F(LinalgFrame, WithTooFewArguments_Fail) {
  for_all_names([&](const char* name, std::size_t count) {
    for (int nargs = -1; nargs < static_cast<int>(count); ++nargs) {
      const Answer answer = call_with_count(name, operands(2), nargs);
      expect_no_result(answer, 0, name);
      EXPECT_EQ(answer.operations, Words{}) << name << nargs;
    }
  });
}

TEST_F(LinalgFrame, ValuesOfEveryOtherTag_FailInEveryPosition) {
  for (int tag = 0; tag < 256; ++tag)
    if (tag != static_cast<int>(ValueTag::object))
      expect_failure_without_fetching(raw(static_cast<ValueTag>(tag)), "tag " + std::to_string(tag));
}

TEST_F(LinalgFrame, NumbersStringsAndTables_FailInEveryPosition) {
  for (const Value& value : {Value(3), Value(2.5), Value(std::int64_t{3}), Value("text"), Value(u"text"),
                             Value::table_of({Value(1), Value(2)}), Value()})
    expect_failure_without_fetching(value, "a value");
}

TEST_F(LinalgFrame, Bools_FailInEveryPosition) {
  for (const Extents& extents : {Extents{2, 2}, Extents{0}, Extents{}, Extents{3}})
    expect_failure_after_fetching(array_of<XTBool>(ctx(), extents, std::vector<bool>(size_of(extents), true)), "bools");
}

TEST_F(LinalgFrame, ForeignObjects_FailInEveryPosition) {
  for (const char* type_name : {"$foreign", "", "$xdoublearra", "$xdoublearrays", "$XDOUBLEARRAY"}) {
    ForeignObject foreign(type_name);
    expect_failure_after_fetching(foreign.value(), type_name);
  }
  ForeignObject nameless(nullptr);
  expect_failure_after_fetching(nameless.value(), "no name");
}

TEST_F(LinalgFrame, ObjectsThatTheHostMadeAlone_FailInEveryPosition) {
  for (const char* type_name : {"$xdoublearray", "$xintarray", "$xint64array", "$xboolarray"})
    expect_failure_after_fetching(Value::object(ctx(), type_name), type_name);
}

TEST_F(LinalgFrame, TheSecondOperand_IsFetchedButNotLookedAtWhenTheFirstIsNone) {
  HostAny without_manager{};
  hold(without_manager);
  const Value bools = array_of<XTBool>(ctx(), {2}, {true, false});
  for (const Function& function : functions) {
    if (function.operands < 2) continue;
    const Answer answer = call(function.name, {bools, Value::object(&without_manager)});
    expect_no_result(answer, 0, function.name);
    EXPECT_EQ(answer.operations, looked_at(2)) << function.name;
  }
}

using LinalgFrameDeathTest = LinalgFrame;

TEST_F(LinalgFrameDeathTest, Required_ArraysWithoutAContainer_AreReadThroughNull) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const Value hollow = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  ASSERT_EQ(type_of(hollow), "$xdoublearray");
  for (const Function& function : functions)
    EXPECT_DEATH(call(function.name, std::vector<Value>(function.operands, hollow)), "") << function.name;
  expect_no_result(call("xmatrix_power", {hollow}), 1, "xmatrix_power");
}

// ---- The stub

TEST_F(LinalgFrame, Required_XmatrixPowerOfAnyObject_IsHandledWithoutAResult) {
  ForeignObject foreign;
  for (const Value& object : {matrix(), matrix(Kind::float32), matrix(Kind::int32), ones({2, 3}), foreign.value(),
                              array_of<XTBool>(ctx(), {2}, {true, false}), Value::object(ctx(), "$xintarray")})
    for (const std::vector<Value>& args : {std::vector<Value>{object}, {object, Value(3)}, {object, Value("x")}}) {
      const Answer answer = call("xmatrix_power", args);
      expect_no_result(answer, 1, "xmatrix_power");
      EXPECT_EQ(answer.operations, looked_at(1));
    }
}

// ---- What calls leave alone

/// The text of a result of doubles: an array, a number, or a table of these.
std::string text(const Value& result) {
  std::ostringstream out;
  if (result.is_table()) {
    const HostHash* hash = hvm::table_of(result.record());
    for (int key = 0; key < hvm::entry_count(hash); ++key) out << text(Value::sharing(*hvm::find(hash, key))) << ' ';
  } else if (result.is_object()) {
    out << type_of(result) << contents_of(result, Kind::float64);
  } else {
    out << hvm::printed(result.record());
  }
  return out.str();
}

TEST_F(LinalgFrame, FurtherArguments_AreNotReadAndNotChecked) {
  for (const Function& function : functions) {
    const Answer alone = call(function.name, operands(function.operands));
    for (const Value& further : {Value(0), Value(-1), Value("complete"), Value(), raw(static_cast<ValueTag>(77)),
                                 matrix(), matrix(Kind::int32)}) {
      auto args = operands(function.operands);
      args.insert(args.end(), {further, Value(2), further});
      const Answer answer = call(function.name, args);
      EXPECT_EQ(answer.returned, 1) << function.name;
      EXPECT_EQ(answer.operations, alone.operations) << function.name;
      EXPECT_EQ(text(answer.result), text(alone.result)) << function.name;
    }
  }
  EXPECT_EQ(ending("xcond", {matrix(), Value(2)}), "runtime_error: Norm 0 not implemented!");
}

TEST_F(LinalgFrame, Operands_StayAsTheyWere) {
  const Doubles elements = {2, 1, 1, 3};
  const auto expect_kept = [&](const char* name, std::size_t count) {
    const auto args = operands(count);
    const void* container = container_address(args[0]);
    const std::uint32_t references = hvm::references(hvm::object_of(args[0].record()));
    try {
      call(name, args);
    } catch (const std::runtime_error&) {
      EXPECT_STREQ(name, "xcond");
    }
    EXPECT_EQ(container_address(args[0]), container) << name;
    EXPECT_EQ(contents_of(args[0], Kind::float64), (Contents{{2, 2}, elements})) << name;
    EXPECT_EQ(hvm::references(hvm::object_of(args[0].record())), references) << name;
  };
  for_all_names(expect_kept);
}

TEST_F(LinalgFrame, IntoAnOperandsOwnRecord_TheResultReplacesTheArray) {
  for (const Function& function : functions) {
    if (function.form == Form::nothing) continue;
    const std::string expected = text(call(function.name, operands(function.operands)).result);
    for (std::size_t position = 0; position < function.operands; ++position) {
      std::vector<Value> args;
      for (std::size_t n = 0; n < function.operands; ++n) args.push_back(matrix());
      EXPECT_EQ(Module::loaded().entry(function.name)(ctx(), hvm::records_of(args), static_cast<int>(args.size()),
                                                      args[position].address()),
                1);
      EXPECT_EQ(text(args[position]), expected) << function.name;
    }
  }
}

}  // namespace
}  // namespace arrayfold::test
