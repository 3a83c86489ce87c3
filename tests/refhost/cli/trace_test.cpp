// refhost/cli/trace_test.cpp: hvm --trace

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <regex>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// The text of a trace with every time 0.
std::string masked(const std::string& trace) {
  return std::regex_replace(trace, std::regex(R"("nanoseconds":[0-9]+)"), R"("nanoseconds":0)");
}

std::ptrdiff_t line_count(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

/// Runs code over the module with the arrays and gives its trace.
std::string real_trace(const std::string& code, const std::vector<std::string>& options = {}) {
  const Workplace place;
  const std::string path = place.path() + "/trace";
  std::vector<std::string> arguments{"--module", module_path("arrayfold"), "--trace", path};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.insert(arguments.end(), {"-e", code});
  const Outcome outcome = run_hvm(arguments);
  EXPECT_EQ(outcome.err, "") << code;
  EXPECT_EQ(outcome.status, 0) << code;
  return masked(contents(path));
}

TEST(TraceOption, TellsTheCallsOfAScriptLineByLine) {
  EXPECT_EQ(real_trace("a = xarray(@double, [1, 2.5])\nprint(xsum(a))"),
            R"({"call":1,"depth":0,"place":"<command line>:1","function":"xarray","arguments":)"
            R"([{"kind":"quotation","text":"@double"},{"kind":"table","count":2,"entries":)"
            R"([[0,{"kind":"int","value":1}],[1,{"kind":"real","value":2.5}]]}],"operations":)"
            R"([{"name":"HVM_NumberCheck","operands":["record 1"],"result":true},)"
            R"({"name":"HVM_AsDouble","operands":["record 1"],"result":1.0},)"
            R"({"name":"HVM_NumberCheck","operands":["record 2"],"result":true},)"
            R"({"name":"HVM_AsDouble","operands":["record 2"],"result":2.5},)"
            R"({"name":"HVM_NewAny","operands":[{"text":"$xdoublearray"},0,0],"result":"object 1"},)"
            R"({"name":"HVM_SetTypeAny","operands":["result","object 1"]}],)"
            R"("returned":1,"result":{"kind":"double array","object":1},"nanoseconds":0})"
            "\n"
            R"({"call":2,"depth":0,"place":"<command line>:2","function":"xsum","arguments":)"
            R"([{"kind":"double array","object":1}],"operations":)"
            R"([{"name":"HVM_AnyCheck","operands":["arg 0"],"result":true},)"
            R"({"name":"HVM_GetAny","operands":["arg 0"],"result":"object 1"},)"
            R"({"name":"HVM_SetReal","operands":["result",3.5]}],)"
            R"("returned":1,"result":{"kind":"real","value":3.5},"nanoseconds":0})"
            "\n");
}

TEST(TraceOption, TellsNestedCallsOnLinesOfTheirOwn) {
  const std::string trace =
      real_trace("fn count(n)\n  s = xsum(xones(n))\n  return n\nend\nb = xarray(@double(count(4)))\n");
  EXPECT_EQ(line_count(trace), 3);
  EXPECT_THAT(
      trace, ::testing::StartsWith(R"({"call":2,"depth":1,"within":1,"place":"<command line>:2","function":"xones",)"));
  EXPECT_THAT(trace, HasSubstr(R"({"call":3,"depth":1,"within":1,"place":"<command line>:2","function":"xsum")"));
  EXPECT_THAT(trace, HasSubstr(R"_({"call":1,"depth":0,"place":"<command line>:5","function":"xarray",)_"
                               R"_("arguments":[{"kind":"quotation","text":"@double(count(4))"}],"operations":)_"));
  // The outer call tells what it called, and none of the operations of the calls within it.
  EXPECT_THAT(trace, HasSubstr(R"({"name":"call_function","operands":[{"text":"count"},[{"kind":"int","value":4}],)"));
  const std::string outer = trace.substr(trace.find("{\"call\":1"));
  EXPECT_THAT(outer, Not(HasSubstr("HVM_AnyCheck")));
}

TEST(TraceOption, TellsVariablesThatAModuleReads) {
  EXPECT_THAT(real_trace("n = 3; b = xarray(@double(n))"),
              HasSubstr(R"("name":"read_slot","operands":[1],"result":"record 1","value":{"kind":"int","value":3}})"));
}

TEST(TraceOption, WithoutOperations_TellsTheCallsAlone) {
  EXPECT_EQ(real_trace("print(xsum(xones(3)))", {"--trace-operations", "off"}),
            R"({"call":1,"depth":0,"place":"<command line>:1","function":"xones","arguments":)"
            R"([{"kind":"int","value":3}],"returned":1,"result":{"kind":"double array","object":1},"nanoseconds":0})"
            "\n"
            R"({"call":2,"depth":0,"place":"<command line>:1","function":"xsum","arguments":)"
            R"([{"kind":"double array","object":1}],"returned":1,"result":{"kind":"real","value":3.0},"nanoseconds":0})"
            "\n");
}

TEST(TraceOption, OfACallWithManyOperations_CountsTheOmittedOnes) {
  const std::string trace = real_trace("t = []\nfor i in range(50000) do t[i] = i end\na = xarray(@int, t)");
  EXPECT_THAT(trace, HasSubstr(R"("omitted":90002,)"));
  EXPECT_LT(trace.size(), 2000000u);
  EXPECT_THAT(real_trace("t = [1, 2, 3]\na = xarray(@int, t)", {"--trace-operations", "3"}),
              HasSubstr(R"("omitted":5,)"));
}

TEST(TraceOption, OverwritesAnOlderTraceAndNothingElse) {
  const Workplace place;
  const std::string path = place.path() + "/trace";
  EXPECT_EQ(run_toy({"--trace", path, "-e", "toy_count(); toy_count()"}).status, 0);
  EXPECT_EQ(run_toy({"--trace", path, "-e", "toy_count()"}).status, 0);
  EXPECT_EQ(line_count(contents(path)), 1);
  const std::string script = place.write("a.hvm", "print(1)\n");
  const Outcome outcome = run_toy({"--trace", script}, "print(2)");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "hvm: the trace " + script + " cannot be written: it holds something else than a trace\n");
  EXPECT_EQ(contents(script), "print(1)\n");
}

TEST(TraceOption, ThatCannotBeWritten_GivesStatusOneAndTheReason) {
  const Workplace place;
  const std::string path = place.path() + "/no/trace";
  const Outcome unknown = run_toy({"--trace", path, "-e", "print(1)"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.out, "");
  EXPECT_EQ(unknown.err, "hvm: the trace " + path + " cannot be written: No such file or directory\n");
  EXPECT_EQ(run_toy({"--trace", place.path(), "-e", "print(1)"}).err,
            "hvm: the trace " + place.path() + " cannot be written: Is a directory\n");
  // The script runs to its end; the status tells that its trace is lost.
  const Outcome full = run_toy({"--trace", "/dev/full", "-e", "toy_count(); toy_count(); print(1); exit(5)"});
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.out, "1\n");
  EXPECT_EQ(full.err, "hvm: the trace /dev/full cannot be written: No space left on device\n");
  Conditions conditions;
  conditions.file_size = 1000;
  const Outcome large =
      run_toy({"--trace", place.path() + "/t", "-e", "for i in range(99) do toy_count() end"}, conditions);
  EXPECT_EQ(large.status, 1);
  EXPECT_EQ(large.err, "hvm: the trace " + place.path() + "/t cannot be written: File too large\n");
}

TEST(TraceOption, Minus_IsTheStandardError) {
  const Outcome outcome = run_toy({"--trace", "-", "-e", "print(toy_count())"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "0\n");
  EXPECT_THAT(outcome.err, ::testing::StartsWith(R"({"call":1,"depth":0,"place":"<command line>:1",)"));
  EXPECT_EQ(line_count(outcome.err), 1);
}

TEST(TraceOption, OfAScriptThatAFaultEnds_LeavesTheLinesBefore) {
  const Workplace place;
  const std::string path = place.path() + "/trace";
  const Outcome outcome = run_toy({"--trace", path, "-e", "toy_count(1)\ntoy_int(2).shape()\ntoy_end(\"segv\")"});
  EXPECT_EQ(outcome.signal, SIGSEGV);
  const std::string trace = contents(path);
  EXPECT_EQ(line_count(trace), 3) << trace;
  EXPECT_EQ(trace.back(), '\n');
}

TEST(TraceOption, OfAScriptThatFails_KeepsItsStatusAndItsMessage) {
  const Workplace place;
  const Outcome outcome = run_toy({"--trace", place.path() + "/trace", "-e", "toy_fail()"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("toy_fail: the call failed"));
  EXPECT_THAT(contents(place.path() + "/trace"), HasSubstr("\"returned\":0"));
  EXPECT_EQ(run_toy({"--trace", place.path() + "/trace", "-e", "exit(7)"}).status, 7);
}

TEST(TraceOption, WithAWrongCountOrWithoutAFile_IsWrongUsage) {
  const Workplace place;
  for (const char* count : {"-1", "many", "", "1234567890", "1.5"}) {
    const Outcome outcome =
        run_toy({"--trace", place.path() + "/trace", "--trace-operations=" + std::string(count), "-e", "1"});
    EXPECT_EQ(outcome.status, 2) << count;
    EXPECT_NE(outcome.err, "") << count;
  }
  EXPECT_EQ(run_toy({"--trace-operations", "off", "-e", "1"}).status, 2);
  EXPECT_EQ(run_toy({"--trace", place.path() + "/trace", "--list"}).status, 2);
}

}  // namespace
}  // namespace hvm::testing
