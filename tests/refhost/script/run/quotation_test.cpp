// refhost/script/run/quotation_test.cpp: the trees of quotations, and what a module gets when it reads them

#include <fmt/format.h>

#include "code_text.hpp"
#include "script/library/script_end.hpp"
#include "script_run.hpp"

namespace hvm::testing {
namespace {

using arrayfold::HostContext;
using arrayfold::HVM_GetGlobalNilObj;

/// The variable of a tree's slot, found as a module finds it.
HostValue* variable_of(HostContext ctx, const HostCode& code, const HostCodeSlot& slot) {
  const std::uint32_t at = load<std::uint32_t>(slot.payload) - ctx->frame.get()->slot_base + code.frame_base;
  return ctx->read_slot.get()(ctx, static_cast<int>(at));
}

const HostCodeNode* node_of(const HostCodeSlot& slot) {
  return slot.tag == SlotTag::node ? load<const HostCodeNode*>(slot.payload) : nullptr;
}

Value argument_of(HostContext ctx, const HostCode& code, const HostCodeSlot& slot);

/// Calls what a call node names, with its arguments; the text "failed" when the call fails.
Value called(HostContext ctx, const HostCode& code, const HostCodeNode& call) {
  std::vector<Value> arguments;
  for (const HostCodeNode* cell = node_of(call.value); cell; cell = node_of(cell->link))
    arguments.push_back(argument_of(ctx, code, cell->value));
  Value result;
  const int answer = ctx->call_function.get()(load<const void*>(call.link.payload), ctx, records_of(arguments),
                                              static_cast<int>(arguments.size()), result.address());
  return answer ? result : Value("failed");
}

Value argument_of(HostContext ctx, const HostCode& code, const HostCodeSlot& slot) {
  if (slot.tag == SlotTag::integer) return Value(load<std::int32_t>(slot.payload));
  if (slot.tag == SlotTag::real) return Value(load<double>(slot.payload));
  if (slot.tag == SlotTag::string) return Value(load<const char*>(slot.payload));
  if (slot.tag == SlotTag::variable) return Value::sharing(*variable_of(ctx, code, slot));
  const HostCodeNode* node = node_of(slot);
  return node && node->kind == NodeKind::call ? called(ctx, code, *node) : Value();
}

/// reading(code): a table of the arguments of a quoted call; of a quoted variable its value.
int reading(HostContext ctx, HostValue* args, int, HostValue* result) {
  const HostCode& code = *load<const HostCode*>(args->payload);
  const HostCodeSlot& link = code.root.get()->link;
  if (link.tag == SlotTag::variable) return assign(*result, *variable_of(ctx, code, link)), 1;
  std::vector<Value> values;
  for (const HostCodeNode* cell = node_of(node_of(link)->value); cell; cell = node_of(cell->link))
    values.push_back(argument_of(ctx, code, cell->value));
  assign(*result, Value::table_of(values).record());
  return 1;
}

/// failing(code) reads and fails; throwing(code) reads and throws.
int failing(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  return reading(ctx, args, nargs, result), 0;
}
int throwing(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  reading(ctx, args, nargs, result);
  throw std::runtime_error("after reading");
}

/// frame(): whether text must be copied, as the running frame says.
int frame(HostContext ctx, HostValue*, int, HostValue* result) {
  assign(*result, Value(static_cast<int>(ctx->frame.get()->copy_strings)).record());
  return 1;
}

/// slot(n): the variable in a slot.
int slot(HostContext ctx, HostValue* args, int, HostValue* result) {
  HostValue* found = ctx->read_slot.get()(ctx, load<std::int32_t>(args->payload));
  assign(*result, found == HVM_GetGlobalNilObj() ? Value("none").record() : *found);
  return 1;
}

int nothing(HostContext, HostValue*, int, HostValue*) { return 1; }

const ModuleFunctions& reader_functions() {
  static const ModuleFunctions functions = [] {
    ModuleFunctions made;
    made.add("reading", reading);
    made.add("failing", failing);
    made.add("throwing", throwing);
    made.add("frame", frame);
    made.add("slot", slot);
    made.add("xarray", nothing);
    return made;
  }();
  return functions;
}

void expect_readings(std::initializer_list<ScriptRow> rows) { expect_outputs(reader_functions(), rows); }

/// The tree of the quotation that the last line of a script is. The variables of the outermost level are numbered as
/// they come in its text, from 16 on.
std::string tree_of(const std::string& script) {
  Interpreter interpreter(reader_functions(), {});
  const auto source = std::make_shared<SourceText>("test.hvm", script);
  const Program program = interpreter.parse(source);
  interpreter.define(program);
  for (std::size_t i = 0; i + 1 < program.statements.size(); ++i) interpreter.run(program.statements[i], source);
  const auto& last = std::get<ExpressionStatement>(program.statements.back().form);
  const Value value = interpreter.evaluate(*last.expression, source);
  EXPECT_EQ(value.tag(), ValueTag::code) << script;
  const HostCode& code = *load<const HostCode*>(value.record().payload);
  EXPECT_EQ(code.frame_base.get(), 0u);
  return code_text(*code.root.get());
}

void expect_trees(std::initializer_list<ScriptRow> rows) {
  for (const ScriptRow& row : rows) EXPECT_EQ(tree_of(row.script), row.output) << row.script;
}

TEST(Trees, OfQuotedNames_DependOnWhetherTheyAreVariables) {
  expect_trees({{"@double", "109(3('double' _) _)"},
                {"@double()", "109(3('double' _) _)"},
                {"n = 1\n@n", "109($16 _)"},
                {"m = 1; n = 1\n@n", "109($17 _)"},
                {"n = 1\n@n(1, 2)", "109(10($16 108(_ 105(105(_ 2) 1))) _)"},
                {"n = 1\n@n()", "109(10($16 108(_ _)) _)"},
                {"n = 1\n@@n", "109(109($16 _) _)"},
                {"@@double(2)", "109(109(3('double' 105(_ 2)) _) _)"},
                {"n = \"int\"\n@$n", "109(86(_ $16) _)"},
                {"@label: double(2)", "109(388(3('double' 105(_ 2)) \"label\"/6) _)"},
                {"n = 1\n@label: n", "109(388($16 \"label\"/6) _)"}});
}

TEST(Trees, OfArguments_AreCellsLinkedForward) {
  expect_trees({{"n = 1\n@double(2, n)", "109(3('double' 105(105(_ $16) 2)) _)"},
                {"@f(1, -2.5, \"text\", w\"w\\u{e9}\")",
                 "109(3('f' 105(105(105(105(_ w\"w\xC3\xA9\"/3) \"text\"/5) -2.5) 1)) _)"},
                {"@f(\"\")", "109(3('f' 105(_ \"\"/1)) _)"},
                {"@f(true)", "109(3('f' 105(_ 1)) _)"},
                {"n = 1\n@f(g(n, h()), 2)", "109(3('f' 105(105(_ 2) 3('g' 105(105(_ 3('h' _)) $16)))) _)"},
                {"@f(@double(2), 1)", "109(3('f' 105(105(_ 1) 109(3('double' 105(_ 2)) _))) _)"},
                {"n = 1\n@f(n, unknown)", "109(3('f' 105(77(\"unknown\"/8 unknown) $16)) _)"}});
}

TEST(Trees, OfOtherExpressions_AreCallsOfUnnamedFunctions) {
  expect_trees({{"n = 1\n@f(n * 2, -n, 3)", "109(3('f' 105(105(105(_ 3) 3('' _)) 3('' _))) _)"},
                {"@f(5L)", "109(3('f' 105(_ 3('' _))) _)"},
                {"@f(g(@double(2)))", "109(3('f' 105(_ 3('' _))) _)"},
                {"a = 5\n@f(a[1])", "109(3('f' 105(_ 3('' _))) _)"},
                {"t = []\n@f(t[1][2])", "109(3('f' 105(_ 3('' _))) _)"},
                {"n = 1\n@f([n])", "109(3('f' 105(_ 3('' _))) _)"}});
}

TEST(Trees, OfSelections_HaveACellForEachLevel) {
  expect_trees(
      {{"t = []\n@f(t[1])", "109(3('f' 105(_ 4(_ 4($16 105(1 _))))) _)"},
       {"t = []\n@f(t[1:3])", "109(3('f' 105(_ 4(_ 4($16 105(112(1 3) _))))) _)"},
       {"t = []\n@f(t[:2])", "109(3('f' 105(_ 4(_ 4($16 105(112(. 2) _))))) _)"},
       {"t = []\n@f(t[:])", "109(3('f' 105(_ 4(_ 4($16 105(112(. .) _))))) _)"},
       {"t = []\n@f(t[1:, \"k\"])", "109(3('f' 105(_ 4(_ 4($16 105(112(1 .) 105(\"k\"/2 _)))))) _)"},
       {"t = []; n = 1\n@f(t[n, 5L])", "109(3('f' 105(_ 4(_ 4($16 105($17 105(5L _)))))) _)"},
       {"t = []; n = 1\n@f(t[n + 1, g(2)])", "109(3('f' 105(_ 4(_ 4($16 105(3('' _) 105(3('g' 105(_ 2)) _)))))) _)"},
       {"t = []\n@f(t[[0, 2]])",
        "109(3('f' 105(_ 4(_ 4($16 105(45(_ 105(9(105(_ 0) .) 105(9(105(_ 2) .) .))) _))))) _)"}});
}

TEST(Trees, OfArrayLiterals_AreOneFlatChain) {
  expect_trees({{"@f([1, \"k\": 2, 3.0: 4, [5]])",
                 "109(3('f' 105(_ 45(_ 105(9(105(_ 1) .) 105(9(105(_ \"k\"/2) 2) 105(9(105(_ 3.0) 4) "
                 "105(7(_ _) 105(9(105(_ 5) .) 105(8(_ _) .))))))))) _)"},
                {"@f([\"k\": [\"a\", 5L], w\"w\": w\"x\"])",
                 "109(3('f' 105(_ 45(_ 105(9(105(_ \"k\"/2) 7(_ _)) 105(9(105(_ \"a\"/2) .) 105(9(105(_ 5L) .) "
                 "105(8(_ _) 105(9(105(_ w\"w\"/2) w\"x\"/2) .)))))))) _)"},
                {"@f([])", "109(3('f' 105(_ 45(_ 105(. .)))) _)"},
                {"@f([[]])", "109(3('f' 105(_ 45(_ 105(7(_ _) 105(8(_ _) .))))) _)"}});
}

TEST(Trees, OfDataLiterals_LinkCellsByTheirValues) {
  expect_trees({{"@[1.0, 2.0]", "109(106(1.0 105(2.0 .)) _)"},
                {"n = 1\n@[1.0, -2, n, 5L, \"s\"]", "109(106(1.0 105(-2 105($16 105(5L 105(\"s\"/2 .))))) _)"},
                {"@[[1.0, 2.0], [3.0, 4.0]]", "109(106(106(1.0 105(2.0 .)) 105(106(3.0 105(4.0 .)) .)) _)"},
                {"@[[[1.0]], [[2.0]]]", "109(106(106(106(1.0 .) .) 105(106(106(2.0 .) .) .)) _)"}});
}

TEST(Names, WithoutAValue_AreErrorsWhereATextDoesNotDo) {
  expect_readings({{"q = @f(unknwon, 2)\nunknown = 1", "!there is no variable 'unknwon'"},
                   {"unknown = 1\nq = @f(unknwon, 2)", "!there is no variable 'unknwon' (did you mean 'unknown'?)"},
                   {"q = @$n", "!there is no variable 'n'"},
                   {"q = @[1.0, x]", "!there is no variable 'x'"},
                   {"q = @f(t[1:2])", "!there is no variable 't'"},
                   {"t = []; q = @f(t[key])", "!there is no variable 'key'"},
                   {"fn f()\nq = @g(n, 1)\nn = 1\nend\nf()", "!'n' has no value yet in this fn"},
                   {"q = @f(len, 1)", "!'len' is a function; it is called with parentheses: len()"}});
}

TEST(Names, ThatGetAValue_AreVariablesFromThenOn) {
  expect_readings(
      {{"for i in range(2)\nq = @n\nif i == 0 then print(type(q)) else print(reading(q)) end\nn = 7\nend", "code|7"},
       {"q = @f(n)\nn = 1\nprint(reading(@f(n)))", "[1]"}});
}

TEST(Values, OfQuotations_AreCodes) {
  expect_readings(
      {{"q = @double(2)\nprint(q, type(q), str(q), [q, \"k\": q])", "<code> code <code> [<code>, \"k\": <code>]"},
       {"q = @f(1)\nr = q\nprint(reading(r))", "[1]"},
       {"fn f(q)\nreturn reading(q)\nend\nn = 4\nprint(f(@g(n)), f([@g(5)][0]))", "[4] [5]"},
       {"t = []; t[@f] = 1", "!a code is not a key of a table"},
       {"if @f then end", "!a condition must be a number, not a code"},
       {"q = @f + 1", "!'+' is not defined for a code and an int"},
       {"q = @f; q[0]", "!a code has no elements"},
       {"q = @f; q.x()", "!a code has no methods"},
       {"len(@f)", "!len: a code has no length"}});
}

TEST(Readings, OfVariables_AreThoseOfTheScopeInWhichTheQuotationWasWritten) {
  expect_readings({{"n = 5\nprint(reading(@n))", "5"},
                   {"fn show(q, n)\nreturn reading(q)\nend\nn = 5\nprint(show(@f(n), 7))", "[5]"},
                   {"fn show(q)\nn = 1; m = 2\nreturn reading(q)\nend\nfn f(n)\nm = n + 1\nreturn show(@g(n, m, n + "
                    "m))\nend\nprint(f(3))",
                    "[3, 4, 7]"},
                   {"g = 10\nfn f(n)\nreturn reading(@h(n, g, n + g))\nend\nprint(f(3))", "[3, 10, 13]"},
                   {"n = 1\nq = @f(n, n * 2)\nn = 2\nprint(reading(q))", "[2, 4]"}});
}

TEST(Readings, InRecursion_EachLevelHasItsOwnVariables) {
  expect_readings(
      {{"fn f(n, q)\nif n == 0 then return reading(q) end\nreturn [reading(@g(n, n * n)), f(n - 1, q)]\nend\n"
        "n = 9\nprint(f(2, @g(n)))",
        "[[2, 4], [[1, 1], [9]]]"},
       {"fn f(n)\nif n == 0 then return 0 end\nreturn reading(@g(f(n - 1), n))\nend\nprint(f(3))",
        "[[[0, 1], 2], 3]"}});
}

TEST(Readings, OfCalls_RunInTheHost) {
  expect_readings(
      {{"fn area(w, h)\nreturn w * h\nend\nn = 4\nprint(reading(@g(area(n, 3), len(\"abc\"))))", "[12, 3]"},
       {"print(reading(@g(reading(@h(1, reading(@i(2)))), 3)))", "[[1, [2]], 3]"},
       {"fn show(q)\nreturn type(q)\nend\nq = @h\nprint(reading(@g(show(q), show(@h(1)))))", "[\"code\", \"code\"]"},
       {"t = [5, [6]]; print(reading(@g(t[1][0] + t[0], -t[0], not 1, 5L)))", "[11, -5, 0, 5]"},
       {"fn f(t)\nt[0] = 9\nreturn t\nend\nprint(reading(@g(f([1, 2 + 0]))))", "[[9, 2]]"}});
}

TEST(Errors, InACallOutOfAModule_AreKeptUntilItReturns) {
  const char* script = "fn bad(n)\nreturn n / 0\nend\n%s(@g(bad(1), unknown_fn(), 2))";
  for (const char* entry : {"reading", "failing", "throwing"}) {
    const std::string text = std::string(script).replace(std::string(script).find("%s"), 2, entry);
    expect_readings({{text.c_str(), "!'/' by the integer zero"}});
  }
  expect_readings({{"reading(@g(missing + 1, 1 / 0))", "!there is no variable 'missing'"},
                   {"reading(@g(missing()))", "!there is no function 'missing'"},
                   {"reading(@g(reading(@h(1 / 0))))", "!'/' by the integer zero"},
                   {"reading(@g(throwing(@h(1))))", "!throwing: the module threw std::runtime_error: after reading"},
                   {"fn f(a)\nend\nreading(@g(f()))", "!f: it takes 1 argument, not 0"}});
}

TEST(Errors, EndlessRecursionThroughAModule_IsOne) {
  const std::string end = output_of(reader_functions(), "fn f(n)\nreturn reading(@g(f(n + 1)))\nend\nf(0)");
  EXPECT_EQ(end.find("!the calls nest too deeply: "), 0u) << end;
}

TEST(Errors, OfTheHostItself_DoNotPassThroughAModule) {
  const auto message = [](PrintLine print) {
    Interpreter interpreter(reader_functions(), {true, std::move(print)});
    try {
      interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", "x = reading(@g(print(1)))")));
    } catch (const ScriptError& error) {
      return error.report();
    }
    return std::string("no error");
  };
  const auto place = [](const std::string& words) {
    return "a.hvm:1:16: error: " + words + "\n    x = reading(@g(print(1)))\n                   ^\n";
  };
  const auto out_of_memory = [](const std::string&, const SourceText&, std::size_t) { throw std::bad_alloc(); };
  const auto broken = [](const std::string&, const SourceText&, std::size_t) { throw std::runtime_error("broken"); };
  EXPECT_EQ(message(out_of_memory), place("out of memory"));
  EXPECT_EQ(message(broken), place("broken"));
}

TEST(TheEndOfAScript, InACallOutOfAModule_PassesIt) {
  const auto text = [](const std::string& script) { return std::make_shared<SourceText>("a.hvm", script); };
  for (const char* entry : {"reading", "failing", "throwing"}) {
    const Counts before = counts();
    {
      Interpreter interpreter(reader_functions(),
                              {true, [](const std::string&, const SourceText&, std::size_t) { throw ScriptExit(3); }});
      const std::string script = fmt::format("fn f()\nprint(1)\nend\nx = {0}(@g([1], {0}(@h(f())), 1 / 0))", entry);
      try {
        interpreter.run(interpreter.parse(text(script)));
        FAIL() << entry;
      } catch (const ScriptExit& end) {
        EXPECT_EQ(end.status(), 3) << entry;
      }
      EXPECT_NO_THROW(interpreter.run(interpreter.parse(text("assert(reading(@g(1 + 1))[0] == 2)"))));
    }
    EXPECT_TRUE(counts() == before) << entry;
  }
}

TEST(Steps, OfCallsOutOfAModule_Count) {
  const auto runs = [](std::uint64_t limit, const char* script) {
    Interpreter interpreter(reader_functions(), {true, {}, {}, FileAccess::none, limit});
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", script)));
  };
  // A statement, the call of the module, a computed argument, and a named one that is a call twice: out of the module,
  // and by its name.
  const char* script = "reading(@g(1 + 1, len(\"abc\")))";
  EXPECT_NO_THROW(runs(5, script));
  EXPECT_THROW(runs(4, script), StepLimitReached);
  EXPECT_THROW(runs(1000, "fn f()\nwhile 1 do end\nend\nthrowing(@g(f()))"), StepLimitReached);
}

TEST(Errors, AfterAKeptOne_TheNextCallsAreClean) {
  const auto text = [](const std::string& script) { return std::make_shared<SourceText>("a.hvm", script); };
  Interpreter interpreter(reader_functions(), {});
  EXPECT_THROW(interpreter.run(interpreter.parse(text("reading(@g(1 / 0))"))), ScriptError);
  EXPECT_NO_THROW(interpreter.run(interpreter.parse(text("assert(reading(@g(1 + 1))[0] == 2)"))));
}

TEST(Errors, InACallOutOfAModule_NameTheCallsThatLedThere) {
  Interpreter interpreter(reader_functions(), {});
  try {
    interpreter.run(interpreter.parse(
        std::make_shared<SourceText>("a.hvm", "fn f(n)\nreturn n / 0\nend\n\nx = reading(@g(f(1)))")));
    FAIL() << "no error";
  } catch (const ScriptError& error) {
    EXPECT_EQ(error.report(),
              "a.hvm:2:10: error: '/' by the integer zero\n    return n / 0\n             ^\n"
              "  in f, called at a.hvm:5:16\n");
  }
}

TEST(Scopes, OfAFn_TakeTheirQuotationsWithThem) {
  const char* stale = "!a quotation cannot be used after the fn in which it was written has returned";
  expect_readings(
      {{"fn f()\nreturn @g(1)\nend\nq = f()\nprint(type(q))\nreading(q)", ("code" + std::string(stale)).c_str()},
       {"fn f()\nreturn @g(1)\nend\nreading(f())", stale},
       {"fn f(t)\nt[0] = @g(1)\nend\nt = []; f(t); f(t)\nreading(t[0])", stale},
       {"fn f(n)\nreturn @g(n)\nend\nfn h()\nq = f(1)\nr = @g(2)\nprint(reading(r))\nreading(q)\nend\nh()",
        ("[2]" + std::string(stale)).c_str()}});
}

TEST(Scopes, TheOutermostLevel_NeverEnds) {
  const auto text = [](const std::string& script) { return std::make_shared<SourceText>("a.hvm", script); };
  const Counts before = counts();
  {
    Interpreter interpreter(reader_functions(), {});
    interpreter.run(
        interpreter.parse(text("n = 3; fn twice(x)\nreturn x * 2\nend\nq = @g(\"text\", twice(n), n + 1)")));
    interpreter.run(interpreter.parse(text("n = 4")));
    const Program shown = interpreter.parse(text("reading(q)"));
    const auto& statement = std::get<ExpressionStatement>(shown.statements[0].form);
    const Value value = interpreter.evaluate(*statement.expression, shown.source);
    EXPECT_EQ(interpreter.shown(value, shown.source, {}), "[\"text\", 8, 5]");
  }
  EXPECT_TRUE(counts() == before);
}

TEST(Scopes, AQuotationInALoop_IsMadeOnce) {
  Interpreter interpreter(reader_functions(), {});
  const auto source = std::make_shared<SourceText>("a.hvm", "t = []\nfor i in range(3)\nt[i] = @g(i)\nend\nt");
  const Program program = interpreter.parse(source);
  for (const Statement& statement : program.statements) interpreter.run(statement, source);
  const auto& last = std::get<ExpressionStatement>(program.statements.back().form);
  const Value table = interpreter.evaluate(*last.expression, source);
  const auto record = [&](int key) { return load<const HostCode*>(find(table_of(table.record()), key)->payload); };
  EXPECT_EQ(record(0), record(1));
  EXPECT_EQ(record(1), record(2));
}

TEST(Frames, TellWhetherTextMustBeCopied) {
  expect_readings(
      {{"fn f()\nreturn frame()\nend\nprint(frame(), f(), frame())", "0 1 0"},
       {"fn f(q)\nreturn [reading(q), frame()]\nend\nprint(f(@g(frame() + 0)))", "[[0], 1]"},
       {"fn f()\n1 / 0\nend\nfn g()\nreading(@h(f()))\nend\nprint(frame())\ng()", "0!'/' by the integer zero"}});
}

TEST(Frames, SlotsOfNothing_ReadAsNil) {
  expect_readings(
      {{"a = 5\nprint(slot(0), slot(-1), slot(1000), slot(16777216), slot(2147483647))", "5 none none none none"},
       {"fn f(n)\nreturn [slot(16777216), slot(16777217)]\nend\nprint(f(8))", "[8, \"none\"]"}});
}

TEST(Warnings, OfElementsThatADataLiteralDrops_ComeOnceALine) {
  toy_functions();  // warnings are of a module with arrays of doubles
  std::string warnings;
  const auto take = [&](const Warning& warning) { warnings += warning.report(); };
  Interpreter interpreter(reader_functions(), {true, {}, take});
  const auto run = [&](const std::string& script) {
    warnings.clear();
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", script)));
    return warnings;
  };
  EXPECT_EQ(run("xarray(@int, @[1, 2]); xarray(@double, @[1.0, 2.5]); xarray(@double(2)); xarray(@double, [1])"), "");
  EXPECT_EQ(run("xarray(@double, @[[1.0, 2.0], [-3, 4]]); xarray(@double, @[1])"),
            "a.hvm:1:32: warning: a data literal of reals drops the integer -3; write -3.0 or use a table\n"
            "    xarray(@double, @[[1.0, 2.0], [-3, 4]]); xarray(@double, @[1])\n"
            "                                   ^\n"
            "  page: docs/functions/xarray.md#result\n"
            "  allow: # allow: dropped-element\n");
  Interpreter another(reader_functions(), {true, {}, take});
  another.run(another.parse(std::make_shared<SourceText>("b.hvm", "q = @[5L]; xarray(@double(1), q)")));
  EXPECT_NE(warnings.find("drops the integer 5; write 5.0 or"), std::string::npos) << warnings;
}

}  // namespace
}  // namespace hvm::testing
