// refhost/cli/limits_test.cpp: scripts that want more depth or more memory than there is
//
// Each ends with an error of the script and status 1, never by a signal, and never with a value lost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

/// Runs a script over the module with the arrays. Memory is in bytes; 0: any.
Outcome run_real(const std::string& script, std::size_t memory = 0) {
  const Workplace place;
  Conditions conditions;
  conditions.memory = memory;
  return run_hvm({"--module", module_path("arrayfold"), place.write("a.hvm", script)}, conditions);
}

void expect_error(const Outcome& outcome, const std::string& message, const std::string& script) {
  EXPECT_EQ(outcome.signal, 0) << script;
  EXPECT_EQ(outcome.status, 1) << script;
  EXPECT_THAT(outcome.err, HasSubstr(message)) << script;
  EXPECT_EQ(outcome.out, "") << script;
}

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

// ---- Depth

TEST(Nesting, OfAScriptsText_IsLimited) {
  struct Row {
    const char* begin;
    const char* open;
    const char* inner;
    const char* close;
  };
  for (const Row& row : std::initializer_list<Row>{{"x = ", "(", "1", ")"},
                                                   {"x = ", "[", "1", "]"},
                                                   {"x = ", "[1: ", "1", "]"},
                                                   {"x = ", "f(", "1", ")"},
                                                   {"x = ", "t[", "1", "]"},
                                                   {"t", "[t", "[1]", "]"},
                                                   {"x = ", "a.dump(", "1", ")"},
                                                   {"x = ", "@f(", "1", ")"},
                                                   {"x = @", "[", "1", "]"},
                                                   {"x = ", "-", "1", ""},
                                                   {"x = ", "not ", "1", ""},
                                                   {"x = ", "1 + 2 * (", "3", ")"},
                                                   {"", "if 1 then\n", "x = 1\n", "end\n"},
                                                   {"", "if 0 then\nelse\n", "x = 1\n", "end\n"},
                                                   {"", "while 0\n", "x = 1\n", "end\n"},
                                                   {"", "for i in [1]\n", "x = 1\n", "end\n"},
                                                   {"", "try\n", "x = 1\n", "catch e\nend\n"},
                                                   {"", "try\ncatch e\n", "x = 1\n", "end\n"}}) {
    const std::string script = row.begin + repeated(row.open, 100000) + row.inner + repeated(row.close, 100000);
    expect_error(run_real(script), "the script nests too deeply here", row.open);
  }
}

TEST(Nesting, OfCalls_IsLimited) {
  for (const char* script :
       {"fn f(n)\nreturn f(n + 1)\nend\nf(0)",
        "fn f(n)\nfor v in [1]\nwhile 1 do if 1 then try f(n) catch e error(e) end end end\nend\n"
        "end\nf(0)",
        "fn f(n)\nreturn [1, [n: [f(n + 1)]]]\nend\nf(0)",
        "fn f(n)\nreturn g(n)\nend\nfn g(n)\nreturn -f(n) + len([f(n)])\nend\ng(0)",
        "fn f(n)\nreturn xarray(@double(f(n + 1)))\nend\nf(0)", "fn f(n)\nreturn xarray(@int, @[[n]])[f(n)]\nend\nf(0)",
        "fn f(n)\nreturn xarray(@double(xarray(@int(f(n)))[0]))\nend\nf(0)"})
    expect_error(run_real(script), "the calls nest too deeply", script);
}

TEST(Nesting, OfTables_IsNot) {
  const std::string script =
      "t = [1]\nfor i in range(100000)\nu = [t]\nt = u\nend\n"
      "print(len(str(t)), len(str([t, t])), t != nil)\n"
      "t[0] = [t[0], 2]\n"
      "v = t\nt = nil\nfor i in range(100000) do v = v[0] end\nprint(v)\n"
      "for i in range(100000) do t = [i, t] end\nprint(len(t), type(xarray(@double, t)))\n";
  const Outcome outcome = run_real(script);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "200003 400010 1\n[[1]]\n2 $xdoublearray\n");
}

// ---- Memory

using Memory = LimitedMemory;

TEST_F(Memory, ThatIsMissing_IsAnError) {
  for (const char* script : {
           "s = \"x\"\nwhile 1 do s += s end",
           "s = w\"x\"\nwhile 1 do s += s end",
           "s = \"-\" * 2000000000",
           "s = w\"-\" * 2000000000",
           "s = w\"x\" * 30000000\nt = []\nt[s] = 1",
           "t = []\ni = 0\nwhile 1\nt[i] = i\ni += 1\nend",
           "t = []\ni = 0\nwhile 1\nt[str(i)] = i\ni += 1\nend",
           "t = []\ni = 0\nwhile 1\nt[i + 0.5] = i\ni += 1\nend",
           "t = []\nwhile 1\nu = [t]\nt = u\nend",
           "t = []\nwhile 1 do t = [t, t, \"key\": \"text\"] end",
           "t = range(10000000)",
           "t = []\nfor i in range(100) do t[i] = range(100000) end",
           "t = range(700000)\nfor k, v in t do for l, w in t do for m, x in t do print(v) end end end",
           "t = range(1000000)\ns = str([t, t])\nu = [s, s, s, s]\nv = str([u, u, u, u])",
           "fn f(s)\nreturn f(s + s)\nend\nf(\"text\")",
           "fn f(s)\nreturn xarray(@double(f(s + s)))\nend\nf(\"text\")",
           "t = []\nfor i in range(1000) do t[i] = xzeros(1000000) end",
           "a = xzeros(9000000)\ns = a.dump()",
           "a = xones(40, 1000000)",
           "a = xones(10000000)\nb = a + a\nc = a * b + 1",
           "t = range(1000000)\na = xarray(@double, [t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, "
           "t])",
       }) {
    const Outcome outcome = run_real(script, std::size_t{256} << 20);
    EXPECT_EQ(outcome.signal, 0) << script;
    EXPECT_EQ(outcome.status, 1) << script;
    const bool is_the_modules = outcome.err.find("the module threw std::bad_alloc") != std::string::npos;
    EXPECT_THAT(outcome.err, HasSubstr(is_the_modules ? "a.hvm:" : "error: out of memory")) << script;
    EXPECT_EQ(outcome.out, "") << script;
  }
}

TEST_F(Memory, ThatIsMissing_CanBeCaught) {
  const Outcome outcome = run_real(
      "fn fill()\nt = []\ni = 0\nwhile 1\nt[i] = [i]\ni += 1\nend\nend\n"
      "for i in range(3)\ntry fill() catch e print(e) end\nend\nprint(len(range(100000)))",
      std::size_t{256} << 20);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "out of memory\nout of memory\nout of memory\n100000\n");
}

TEST_F(Memory, ForTheScriptItself_IsAnErrorThatNamesIt) {
  const std::size_t memory = std::size_t{256} << 20;
  for (const std::string& script : {repeated("x = 1\n", 1000000), "x = [" + repeated("1,", 2000000) + "1]",
                                    "x = \"" + repeated("text", 15000000) + "\"", repeated("fn f()\nend\n", 1000000)}) {
    const Outcome outcome = run_real(script, memory);
    EXPECT_EQ(outcome.signal, 0) << script.substr(0, 20);
    EXPECT_EQ(outcome.status, 1) << script.substr(0, 20);
    EXPECT_THAT(outcome.err, HasSubstr("a.hvm")) << script.substr(0, 20);
    EXPECT_THAT(outcome.err, HasSubstr("out of memory while the script is read")) << script.substr(0, 20);
  }
}

}  // namespace
}  // namespace hvm::testing
