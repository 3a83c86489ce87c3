// explanations/messages_test.cpp: what scripts are told when a call of the module fails

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "described_module.hpp"
#include "script/run/interpreter.hpp"
#include "support/allocations.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

InterpreterOptions options_with_description() {
  InterpreterOptions options;
  options.description = &module_description();
  return options;
}

/// The error of a script; empty when there is none.
ScriptError error_of(const std::string& script, const InterpreterOptions& options = options_with_description()) {
  Interpreter interpreter(module_functions(), options);
  const auto source = std::make_shared<SourceText>("a.hvm", script);
  try {
    interpreter.run(interpreter.parse(source));
  } catch (const ScriptError& error) {
    return error;
  }
  return {"", source, {}};
}

struct MessageRow {
  const char* script;
  const char* message;
};

void expect_messages(std::initializer_list<MessageRow> rows) {
  for (const MessageRow& row : rows) {
    const Counts before = counts();
    EXPECT_EQ(error_of(row.script).message(), row.message) << row.script;
    EXPECT_TRUE(counts() == before) << "left behind by: " << row.script;
  }
}

TEST(Messages, OfOperators_SayWhatToWriteInstead) {
  const std::string kinds_differ = "the kinds differ, and only arrays of one kind combine";
  const std::string of_bools = ": a bool array takes '*=' with a number, and no other operator";
  expect_messages({
      {"i = xlinspace(1, 3, 3); d = xones(3); i + d",
       ("int array + double array: " + kinds_differ + ". Make doubles of i with xminimum(i, i).").c_str()},
      {"i = xlinspace(1, 3, 3); d = xones(3); d -= i",
       ("double array -= int array: " + kinds_differ + ". Make doubles of i with xminimum(i, i).").c_str()},
      {"i = xlinspace(1, 3, 3); 2 * xones(3) * i",
       ("double array * int array: " + kinds_differ + ". Make doubles of i with xminimum(i, i).").c_str()},
      {"i = xlinspace(1, 3, 3); d = xones(3); i + 1 + d",
       ("int array + double array: " + kinds_differ + ". Make doubles of a with xminimum(a, a).").c_str()},
      {"m = xones(3) > 0; m * m", ("'*' is not defined for $xboolarray (3) and $xboolarray (3)" + of_bools +
                                   ". Make integers of it with as_int(m) of use \"arrays\".")
                                      .c_str()},
      {"m = xones(3) > 0; 2 + m", ("'+' is not defined for an int and $xboolarray (3)" + of_bools +
                                   ". Make integers of it with as_int(m) of use \"arrays\".")
                                      .c_str()},
      {"i = xlinspace(1, 3, 3); i / 0",
       "'/' of an integer array with zero. Divide by another number, or make doubles of i with xminimum(i, i)."},
  });
}

TEST(Messages, OfArgumentsThatDoNotFit_SayWhatTheyAreAndWhatIsWanted) {
  expect_messages({
      {"i = xarray(@int, [[1, 2], [3, 4]]); xinv(i)",
       "xinv: argument 1 must be an array of doubles; this is int (2, 2). Make doubles of it with xminimum(i, i)."},
      {"xinv(xarray(@int, [[1]]))",
       "xinv: argument 1 must be an array of doubles; this is int (1, 1). Make doubles of it with xminimum(a, a)."},
      {"xsqrt(2.0)",
       "xsqrt: argument 1 must be an array of ints, int64s or doubles; this is a real. "
       "Write sqrt(a), or make an array of it with xarray(@double, [a])."},
      {"xzeros(2, \"3\")", "xzeros: argument 2 must be a number; this is a string. Pass numbers."},
      {"xarray([1, 2])",
       "xarray: argument 1 must be a quotation; this is a table. Name the kind first: xarray(@double, [1, 2])."},
      {"xpow(2, 3)",
       "xpow: argument 1 must be an object; this is an int. Use power(a, p) of use \"arrays\", or pow(x, y) of "
       "numbers."},
      {"shape = [2, 3]; xzeros(shape)",
       "xzeros: argument 1 must be a number; this is a table. Pass each extent as an argument of its own."},
  });
}

TEST(Messages, OfArraysWithoutAxes_SayWhatReadsTheirNumber) {
  const std::string number = "; x[0] is the number in an array x without axes";
  expect_messages({
      {"round(xnorm(xones(4)), 2)", ("round: it takes a number, not $xdoublearray" + number).c_str()},
      {"t = [1, 2]; t[xargmax(xones(2))]", ("$xintarray is not a key of a table" + number).c_str()},
      {"t = [1, 2]; has(t, xargmax(xones(2)))", ("has: $xintarray is not a key of a table" + number).c_str()},
      {"a = xones(2); a[xargmax(a)]", ("an index must be a number, not $xintarray" + number).c_str()},
      {"xdet(xeye(2)) == 1", ("'==' is not defined for $xdoublearray () and an int" + number + ".").c_str()},
      {"1 == xdet(xeye(2))", ("'==' is not defined for an int and $xdoublearray ()" + number + ".").c_str()},
      {"format(\"{:.2f}\", xnorm(xones(4)))",
       ("format: invalid type specifier; behind the pattern: $xdoublearray" + number).c_str()},
      {"format(\"{:.2f}\", xones(1))", "format: invalid type specifier; behind the pattern: $xdoublearray"},
      {"round(xones(1))", "round: it takes a number, not $xdoublearray"},
  });
}

TEST(Messages, OfMissingArguments_ShowTheUsage) {
  expect_messages({
      {"xlinspace(1)", "xlinspace: argument 2 is missing: xlinspace(start, stop) or xlinspace(start, stop, count)"},
      {"xlinspace()", "xlinspace: argument 1 is missing: xlinspace(start, stop) or xlinspace(start, stop, count)"},
      {"xinv()", "xinv: argument 1 is missing: xinv(a)"},
  });
}

TEST(Messages, OfExceptions_KeepTheWordsOfTheModuleBehindTheReason) {
  expect_messages({
      {"xcholesky(xones(2, 3))",
       "xcholesky: argument 1 must be a square matrix; this is double (2, 3); the module threw std::runtime_error: "
       "Last "
       "2 dimensions of the array must be square. Pass a square matrix."},
      {"m = xones(2, 2); xinv(m)",
       "xinv: argument 1 is singular; the module threw std::runtime_error: Singular matrix not invertible (getrf). Use "
       "xpinv(m)."},
      {"xzeros(2, -1)",
       "xzeros: argument 2 must be 0 or more; this is -1; the module threw std::bad_alloc: std::bad_alloc. Pass 0 or "
       "more."},
      {"xlinspace(0.0, 1.0, -1.5)",
       "xlinspace: argument 3 must be 0 or more; this is -1.5, which is read as -1; the module threw std::bad_alloc: "
       "std::bad_alloc. Pass 0 or more."},
      {"xzeros(1000000, 1000000, 1000)",
       "xzeros: the result does not fit into memory; the module threw std::bad_alloc: std::bad_alloc"},
  });
}

TEST(Messages, OfCatch_AreTheSentenceWithoutTheNotes) {
  const ScriptError error = error_of("try xinv(5) catch e error(e) end");
  EXPECT_EQ(error.message().find('\n'), std::string::npos);
  EXPECT_THAT(error.message(), HasSubstr("xinv: argument 1 must be an array of doubles; this is an int."));
}

TEST(Messages, InReports_HaveUsageAndPageUnderTheCaret) {
  EXPECT_THAT(error_of("xinv(5)").report(),
              HasSubstr("\n    xinv(5)\n    ^\n  usage: xinv(a)\n  page: docs/functions/xinv.md\n"));
  EXPECT_THAT(error_of("fn f(x)\nreturn xinv(x)\nend\nf(5)").report(),
              HasSubstr("\n  page: docs/functions/xinv.md\n  in f, called at a.hvm:4:1\n"));
  EXPECT_THAT(error_of("xarange(3) + \"x\"").report(), HasSubstr("^\n  page: docs/functions/operator-add.md\n"));
  EXPECT_THAT(error_of("a = xarange(3); a /= [1]").report(), HasSubstr("  page: docs/functions/operator-divide.md\n"));
}

TEST(Messages, OfQuotationsThatNameNoArray_SayWhatIsWrongWithThem) {
  expect_messages({
      {"a = xarange(6); xarray(@int(a.shape()[0]))",
       "xarray: an extent in argument 1 is no int. Make an int of it with int, as in xarray(@double(int(n)))."},
      {"xarray(@int(2.0))",
       "xarray: an extent in argument 1 is no int. Make an int of it with int, as in xarray(@double(int(n)))."},
      {"xarray(@int)",
       "xarray: argument 1 stands alone and has no extents. Pass extents, as in xarray(@double(2, 3)), or data."},
      {"xarray(@complex(2))", "xarray: argument 1 stands alone and names no kind. Name bool, int, int64 or double."},
      {"xarray(@double, @double(2))",
       "xarray: argument 2 quotes something else than a data literal. Pass a table, or a data literal such as @[1.0, "
       "2.0]."},
  });
  EXPECT_EQ(error_of("a = xarange(6); b = xarray(@int(int(a.shape()[0])))").message(), "");
}

TEST(Messages, OfUnknownMethods_NameTheMethodsThatThereAre) {
  expect_messages({
      {"a = xarange(3); a.shap()",
       "shap: an array has no such method; it has dump, reshape and shape (did you mean 'shape'?)"},
      {"a = xarange(3); a.mean()", "mean: an array has no such method; it has dump, reshape and shape; write xmean(a)"},
      {"a = xarange(3); a.sum()", "sum: an array has no such method; it has dump, reshape and shape; write xsum(a)"},
      {"a = xarange(3); a.zork(1)", "zork: an array has no such method; it has dump, reshape and shape"},
  });
}

TEST(Messages, OfReshape_SayThatNoExtentIsInferredAndGiveTheOneThatFits) {
  expect_messages({
      {"a = xarange(6); a.reshape(2, -1)",
       "reshape: the extents (2, -1) are negative, and none is inferred from the others. Write reshape(2, 3)."},
      {"a = xarange(6); a.reshape(-1)",
       "reshape: the extents (-1) are negative, and none is inferred from the others. Write reshape(6)."},
      {"a = xarange(0); a.reshape(2, -1)",
       "reshape: the extents (2, -1) are negative, and none is inferred from the others. Write reshape(2, 0)."},
  });
  for (const char* script :
       {"a = xarange(6); a.reshape(4, -1)", "a = xarange(6); a.reshape(-1, -1)", "a = xarange(6); a.reshape(0, -1)"})
    EXPECT_THAT(error_of(script).message(), ::testing::Not(HasSubstr("Write reshape"))) << script;
}

TEST(Messages, OfNumbersBeyond32Bits_AreToldBeforeTheModuleIsCalled) {
  for (const char* call : {"xzeros(4294967298L)", "xones(2, 4294967298L)", "xempty(-4294967298L)", "xrand(1e10)",
                           "xrandn(2, 1e300)", "xeye(4294967297L)", "xeye(2, 1e10)", "xlinspace(0, 1, 4294967298L)",
                           "xlogspace(0, 1, 1e10)", "xarange(4294967299L)", "xarange(0, 1e10)", "xrand(0.0 / 0)",
                           "a.reshape(4294967298L, 3)", "a.reshape(3, 1e10)", "xzeros(1.0 / 0)"}) {
    const std::string script = std::string("a = xarange(6); b = ") + call;
    const std::string message = error_of(script).message();
    EXPECT_THAT(message, HasSubstr(" must fit into 32 bits; this is ")) << call;
    EXPECT_THAT(message, HasSubstr(": argument ")) << call;
    InterpreterOptions without_description;
    EXPECT_THAT(error_of(script, without_description).message(), HasSubstr(" must fit into 32 bits; this is ")) << call;
  }
  for (const char* call : {"xzeros(2.9)", "xzeros(3L)", "xeye(2, 2, 1e10)", "xlinspace(0, 4294967298L, 3)",
                           "xlinspace(0L, 4294967298L)", "xsum(xarange(3), 1e10)", "xarange(2.9, 5.9)"})
    EXPECT_EQ(error_of(std::string("b = ") + call).message(), "") << call;
}

TEST(Messages, WithoutTheChecks_NumbersBeyond32BitsAreTheModules) {
  InterpreterOptions options = options_with_description();
  options.has_checks = false;
  std::string printed;
  options.print = [&](const std::string& text, const SourceText&, std::size_t) { printed += text; };
  EXPECT_EQ(error_of("print(xzeros(4294967298L).shape(), xeye(4294967297L).dump(), xarange(4294967299L))\n"
                     "print(xones(4294967298L).shape(), xempty(4294967298L).shape(), xrand(4294967298L).shape())\n"
                     "print(xrandn(4294967298L).shape(), xlogspace(0.0, 1.0, 4294967298L).shape())\n"
                     "print(xlinspace(0.0, 1.0, 4294967298L))\na = xones(6)\na.reshape(4294967299L, "
                     "2)\nprint(a.shape())",
                     options)
                .message(),
            "");
  EXPECT_EQ(printed, "[2] [[1.0]] double(3) [0.0, 1.0, 2.0][2] [2] [2][2] [2]double(2) [0.0, 1.0][3, 2]");
}

TEST(Messages, OfLibraryFunctions_AreAboutTheLineOfTheScript) {
  const ScriptError error = error_of("fn f(a)\nreturn xdot(a, xones(3, 2))\nend\nf(xones(2, 2))");
  EXPECT_EQ(error.line(), 2u);
  EXPECT_THAT(error.message(), HasSubstr("these are double (2, 2) and double (3, 2); the module threw"));
}

TEST(Explanations, ReadFewElementsOfALargeArray) {
  InterpreterOptions options = options_with_description();
  options.explains = true;
  Interpreter interpreter(module_functions(), options);
  const auto source = std::make_shared<SourceText>("a.hvm", "a = xones(3000, 3000) > 0\nxinv(a)");
  EXPECT_THROW(interpreter.run(interpreter.parse(source)), ScriptError);
  const std::string text = interpreter.last_explanation().text();
  EXPECT_THAT(text, HasSubstr("argument 1, a: bool (3000, 3000): true, true, true, true, true, true, ...; wanted: "
                              "double array, square matrix\n"));
  EXPECT_THAT(text, HasSubstr("    no argument: no\n"));
  EXPECT_THAT(text, HasSubstr("    a is a bool array: yes\n"));
  EXPECT_LT(text.size(), 2000u);
}

TEST(Explanations, ReadFewCharactersOfALongString) {
  InterpreterOptions options = options_with_description();
  options.explains = true;
  Interpreter interpreter(module_functions(), options);
  const auto explained = [&](const std::string& script) {
    EXPECT_THROW(interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", script))), ScriptError);
    return interpreter.last_explanation().text();
  };
  const std::string shown = "argument 1, a: the string \"" + std::string(40, '-') + "...\"";
  EXPECT_THAT(explained("s = \"-\" * 1000000\nxinv(s)"), HasSubstr(shown));
  EXPECT_THAT(explained("w = w\"-\" * 1000000\nxinv(w)"), HasSubstr(shown));
  EXPECT_THAT(explained("xinv(\"\")"), HasSubstr("argument 1, a: the string \"\""));
}

TEST(Explanations, OfOperators_ShowBothOperands) {
  InterpreterOptions options = options_with_description();
  options.explains = true;
  Interpreter interpreter(module_functions(), options);
  const auto source = std::make_shared<SourceText>("a.hvm", "5 - (xarange(3) > 1)");
  EXPECT_THROW(interpreter.run(interpreter.parse(source)), ScriptError);
  EXPECT_THAT(interpreter.last_explanation().text(),
              HasSubstr("the left operand: the int 5\n    the right operand: bool "
                        "(3): false, false, true\n"));
}

TEST(Explanations, LeaveNothingBehindWhenAnyAllocationFails) {
  InterpreterOptions options = options_with_description();
  options.explains = true;
  for (const char* call : {"xinv(i)", "xinv(d)", "xzeros(-1)", "xzeros(4294967298L)", "i.shap()", "i.reshape(2, -1)",
                           "i + d", "xarray(@int(2.0))", "xlinspace(1)"}) {
    Interpreter interpreter(module_functions(), options);
    const auto parsed = [&](const std::string& text) {
      return interpreter.parse(std::make_shared<SourceText>("a.hvm", text));
    };
    interpreter.run(parsed("i = xarray(@int, [1, 2, 3, 4])\nd = xones(2, 3)\ne = nil"));
    const Program program = parsed(std::string("try\n") + call + "\ncatch e\nend\ne = nil");
    const auto run = [&] {
      try {
        interpreter.run(program);
      } catch (const ScriptError& error) {
        EXPECT_THAT(error.message(), HasSubstr("memory")) << call;
      }
      try {
        interpreter.set_global("e", Value());
      } catch (const std::bad_alloc&) {
      }
    };
    const Counts before = counts();
    struct Memory {
      void (*fail)(std::int64_t);
      bool (*has_failed)();
    };
    for (const auto& [fail, has_failed] :
         {Memory{arrayfold::test::fail_allocation, arrayfold::test::allocation_has_failed},
          Memory{fail_allocation, allocation_has_failed}}) {
      int failures = 0;
      for (bool comes = true; comes; failures += comes) {
        fail(failures + 1);
        run();
        comes = has_failed();
        fail(0);
        EXPECT_TRUE(counts() == before) << call << " with failure " << failures + 1;
      }
      EXPECT_GT(failures, 0) << call;
      EXPECT_LT(failures, 500) << call;
    }
  }
}

}  // namespace
}  // namespace hvm::testing
