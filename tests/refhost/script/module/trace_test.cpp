// refhost/script/module/trace_test.cpp: the lines of a trace over the toy module

#include "script/module/trace.hpp"

#include <limits>
#include <regex>
#include <sstream>
#include <vector>

#include "folder.hpp"
#include "script/data/json_values.hpp"
#include "script/module/trace_values.hpp"

namespace hvm::testing {
namespace {

constexpr std::size_t any_number = Trace::most_operations_by_default;

/// The lines that a script leaves over the toy module, objects counted from the first of the script and every time 0.
std::vector<std::string> trace_of(const std::string& script, std::size_t most_operations = any_number) {
  const Folder folder;
  const std::uint64_t made_before = number_of(object_of(Value::object(youngest_context(), "$xintarray").record()));
  Trace trace(folder / "trace", most_operations);
  {
    InterpreterOptions options;
    options.has_checks = false;
    options.print = [](const std::string&, const SourceText&, std::size_t) {};
    options.trace = &trace;
    Interpreter interpreter(toy_functions(), options);
    try {
      interpreter.run(interpreter.parse(std::make_shared<SourceText>("t", script)));
    } catch (const ScriptError&) {
    }
  }
  trace.finish();
  std::vector<std::string> lines;
  std::istringstream text(folder.read("trace"));
  for (std::string line; std::getline(text, line);) {
    EXPECT_NO_THROW(json_value(line)) << line;
    line = std::regex_replace(line, std::regex(R"("nanoseconds":[0-9]+)"), R"("nanoseconds":0)");
    std::smatch found;
    std::string told;
    const std::regex object(R"(object(":| )([0-9]+))");
    while (std::regex_search(line, found, object)) {
      told += found.prefix().str() + "object" + found[1].str() + std::to_string(std::stoull(found[2]) - made_before);
      line = found.suffix();
    }
    lines.push_back(told + line);
  }
  return lines;
}

void expect_trace(const std::string& script, const std::vector<std::string>& lines) {
  const Counts before = counts();
  EXPECT_EQ(trace_of(script), lines) << script;
  EXPECT_TRUE(counts() == before) << "left behind by: " << script;
}

/// The line of a call at the outermost level on line 1 of the script.
std::string line(int number, const std::string& rest) {
  return "{\"call\":" + std::to_string(number) + R"(,"depth":0,"place":"t:1",)" + rest + R"(,"nanoseconds":0})";
}

TEST(Trace, OfAFunction_TellsArgumentsOperationsAndResult) {
  expect_trace("toy_count(1, 2.5, \"x\")", {line(1, R"("function":"toy_count","arguments":[{"kind":"int","value":1},)"
                                                    R"({"kind":"real","value":2.5},{"kind":"string","value":"x"}],)"
                                                    R"("operations":[{"name":"HVM_SetInt","operands":["result",3]}],)"
                                                    R"("returned":1,"result":{"kind":"int","value":3})")});
  expect_trace("toy_fail()", {line(1, R"("function":"toy_fail","arguments":[],"operations":[],)"
                                      R"("returned":0,"result":{"kind":"nil"})")});
}

TEST(Trace, OfObjects_NumbersThemAsTheyAreMade) {
  expect_trace("a = toy_int(2); b = toy_double(1); b = a",
               {line(1, R"("function":"toy_int","arguments":[{"kind":"int","value":2}],)"
                        R"("operations":[{"name":"HVM_AsInt","operands":["arg 0"],"result":2},)"
                        R"({"name":"HVM_NewAny","operands":[{"text":"$xintarray"},0,0],"result":"object 1"},)"
                        R"({"name":"HVM_SetTypeAny","operands":["result","object 1"]}],)"
                        R"("returned":1,"result":{"kind":"int array","object":1})"),
                line(2, R"("function":"toy_double","arguments":[{"kind":"int","value":1}],)"
                        R"("operations":[{"name":"HVM_AsInt","operands":["arg 0"],"result":1},)"
                        R"({"name":"HVM_NewAny","operands":[{"text":"$xdoublearray"},0,0],"result":"object 2"},)"
                        R"({"name":"HVM_SetTypeAny","operands":["result","object 2"]}],)"
                        R"("returned":1,"result":{"kind":"double array","object":2})")});
}

TEST(Trace, OfMethodsOperatorsAndElements_TellsTheirOperandsByTheirPlaces) {
  const std::vector<std::string> lines =
      trace_of("a = toy_int(2); s = a.shape(); a += 1; a[1] = 7; x = a[0]; d = a + 2");
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[1],
            line(2, R"("method":"shape","self":{"kind":"int array","object":1},"arguments":[],)"
                    R"("operations":[{"name":"HVM_GetAny","operands":["self"],"result":"object 1"},)"
                    R"({"name":"HVM_ForceTable","operands":["result",1],"result":"table 1"},)"
                    R"({"name":"HVM_HashSetInt","operands":["table 1",0],"result":"record 1"},)"
                    R"({"name":"HVM_SetInt64","operands":["record 1",2]}],)"
                    R"("returned":1,"result":{"kind":"table","count":1,"entries":[[0,{"kind":"int64","value":2}]]})"));
  EXPECT_EQ(lines[2].rfind(R"({"call":3,"depth":0,"place":"t:1","operator":"add","opcode":95,)"
                           R"("left":{"kind":"int array","object":1},"in_place":true,)"
                           R"("right":{"kind":"int","value":1},"operations":[)",
                           0),
            0u)
      << lines[2];
  EXPECT_EQ(lines[3], line(4, R"("operator":"write_element","opcode":36866,"left":{"kind":"int array","object":1},)"
                              R"("indices":[{"kind":"int","value":1}],"value":{"kind":"int","value":7},)"
                              R"("operations":[{"name":"HVM_GetAny","operands":["left"],"result":"object 1"},)"
                              R"({"name":"HVM_GetAny","operands":["left"],"result":"object 1"},)"
                              R"({"name":"HVM_AsInt","operands":["index 0"],"result":1},)"
                              R"({"name":"HVM_NumberCheck","operands":["value"],"result":true},)"
                              R"({"name":"HVM_AsDouble","operands":["value"],"result":7.0}],"returned":1)"));
  EXPECT_NE(lines[4].find(R"("operator":"read_element","opcode":36865)"), std::string::npos);
  EXPECT_NE(lines[4].find(R"("returned":1,"result":{"kind":"int","value":1})"), std::string::npos) << lines[4];
  EXPECT_NE(lines[5].find(R"("result":{"kind":"int array","object":2})"), std::string::npos) << lines[5];
}

TEST(Trace, OfAnException_TellsItsTypeAndItsWords) {
  expect_trace("toy_throw(\"own\", \"so\")",
               {line(1, R"("function":"toy_throw","arguments":[{"kind":"string","value":"own"},)"
                        R"({"kind":"string","value":"so"}],)"
                        R"("operations":[{"name":"HVM_AsString","operands":["arg 0"],"result":{"text":"own"}},)"
                        R"({"name":"HVM_AsString","operands":["arg 1"],"result":{"text":"so"}}],)"
                        R"("exception":{"type":"toy::OwnError","words":"so"})")});
  EXPECT_NE(trace_of("toy_throw(\"number\")").at(0).find(R"("exception":{"type":"int","words":""})"),
            std::string::npos);
}

TEST(Trace, OfASlot_KeepsItsNumberWhileTableAndKeyAreTheSame) {
  // The toy makes a table in the slot 0 of a table in the slot 0 of the result.
  expect_trace(
      "toy_deep(3)",
      {line(1, R"("function":"toy_deep","arguments":[{"kind":"int","value":3}],)"
               R"("operations":[{"name":"HVM_ForceTable","operands":["result",4],"result":"table 1"},)"
               R"({"name":"HVM_AsInt","operands":["arg 0"],"result":3},)"
               R"({"name":"HVM_HashSetInt","operands":["table 1",0],"result":"record 1"},)"
               R"({"name":"HVM_ForceTable","operands":["record 1",4],"result":"table 2"},)"
               R"({"name":"HVM_AsInt","operands":["arg 0"],"result":3},)"
               R"({"name":"HVM_HashSetInt","operands":["table 2",0],"result":"record 2"},)"
               R"({"name":"HVM_ForceTable","operands":["record 2",4],"result":"table 3"},)"
               R"({"name":"HVM_AsInt","operands":["arg 0"],"result":3}],)"
               R"("returned":1,"result":{"kind":"table","count":1,"entries":)"
               R"([[0,{"kind":"table","count":1,"entries":[[0,{"kind":"table","count":0,"entries":[]}]]}]]})")});
}

/// The arguments of the first call as they are told.
std::string told_arguments(const std::string& script) {
  const std::string told = trace_of(script, 0).at(0);
  const std::size_t begin = told.find("\"arguments\":[") + 13;
  return told.substr(begin, told.find("],\"returned\"") - begin);
}

TEST(Trace, OfValues_TellsKindAndValue) {
  struct Row {
    const char* argument;
    std::string told;
  };
  const std::string eighty(80, 'a');
  for (const Row& row : std::initializer_list<Row>{
           {"-7", R"({"kind":"int","value":-7})"},
           {"9000000000L", R"({"kind":"int64","value":9000000000})"},
           {"0.1", R"({"kind":"real","value":0.1})"},
           {"1e300 * 1e300", R"({"kind":"real","value":"inf"})"},
           {"-1e300 * 1e300", R"({"kind":"real","value":"-inf"})"},
           {"1e300 * 1e300 * 0", R"({"kind":"real","value":"nan"})"},
           {"nil", R"({"kind":"nil"})"},
           {"\"a\\\"\\n\\u{e9}\"", "{\"kind\":\"string\",\"value\":\"a\\\"\\n\xC3\xA9\"}"},
           {"\"a\\xff\"", R"({"kind":"string","hex":"61ff"})"},
           {"w\"\\u{e9}\"", "{\"kind\":\"wide string\",\"value\":\"\xC3\xA9\"}"},
           {"\"a\" * 80", "{\"kind\":\"string\",\"value\":\"" + eighty + "\"}"},
           {"\"a\" * 81", "{\"kind\":\"string\",\"value\":\"" + eighty + "\",\"length\":81}"},
           {"\"a\" + \"\\u{e9}\" * 60", "{\"kind\":\"string\",\"value\":\"a" +
                                            [] {
                                              std::string text;
                                              for (int i = 0; i < 39; ++i) text += "\xC3\xA9";
                                              return text;
                                            }() +
                                            "\",\"length\":121}"},
           {"[1, \"k\": 2, 2.5: 3]",
            R"({"kind":"table","count":3,"entries":[[0,{"kind":"int","value":1}],["k",{"kind":"int","value":2}],)"
            R"([2.5,{"kind":"int","value":3}]]})"},
           {"[[[[1]]]]", R"({"kind":"table","count":1,"entries":[[0,{"kind":"table","count":1,"entries":)"
                         R"([[0,{"kind":"table","count":1,"entries":[[0,{"kind":"table","count":1}]]}]]}]]})"},
           {"@double(2,  n)", R"_({"kind":"quotation","text":"@double(2,  n)"})_"},
           {"@[1, 2]", R"({"kind":"quotation","text":"@[1, 2]"})"}})
    EXPECT_EQ(told_arguments(std::string("n = 1; toy_nothing(") + row.argument + ")"), row.told) << row.argument;
}

TEST(Trace, OfValuesThatNoScriptMakes_TellsTheirTags) {
  const auto told = [](arrayfold::ValueTag tag, const void* payload) {
    arrayfold::HostValue record{};
    record.tag = tag;
    arrayfold::store<const void*>(record.payload, payload);
    std::string text;
    append_traced_value(text, record, {});
    return text;
  };
  using arrayfold::ValueTag;
  EXPECT_EQ(told(ValueTag::scalar_80, nullptr), R"({"kind":"value","tag":80})");
  EXPECT_EQ(told(ValueTag::object, nullptr), R"({"kind":"object","object":null})");
  EXPECT_EQ(told(ValueTag::string_record, nullptr), R"({"kind":"string record","value":""})");
  EXPECT_EQ(told(ValueTag::converted_string, nullptr), R"({"kind":"converted string","value":""})");
  EXPECT_EQ(told(ValueTag::code, nullptr), R"({"kind":"quotation","text":""})");
}

TEST(Trace, OfALongKey_TellsItsFrontAndItsLength) {
  EXPECT_EQ(told_arguments("toy_nothing([\"a\" * 81: 1])"), R"({"kind":"table","count":1,"entries":[[{"text":")" +
                                                                std::string(80, 'a') +
                                                                R"(","length":81},{"kind":"int","value":1}]]})");
}

TEST(Trace, OfALongTable_TellsItsFirstEntriesAndTheirCount) {
  const std::string told = told_arguments("t = []\nfor i in range(100000) do t[i] = i end\ntoy_nothing(t)");
  EXPECT_EQ(told.rfind(R"({"kind":"table","count":100000,"entries":[[0,{"kind":"int","value":0}],)", 0), 0u) << told;
  EXPECT_NE(told.find("[7,{"), std::string::npos);
  EXPECT_EQ(told.find("[8,{"), std::string::npos);
}

TEST(Trace, OfMoreOperationsThanItsLimit_CountsTheOmittedOnes) {
  EXPECT_EQ(trace_of("toy_deep(3)", 2).at(0),
            line(1, R"("function":"toy_deep","arguments":[{"kind":"int","value":3}],)"
                    R"("operations":[{"name":"HVM_ForceTable","operands":["result",4],"result":"table 1"},)"
                    R"({"name":"HVM_AsInt","operands":["arg 0"],"result":3}],"omitted":6,)"
                    R"("returned":1,"result":{"kind":"table","count":1,"entries":)"
                    R"([[0,{"kind":"table","count":1,"entries":[[0,{"kind":"table","count":0,"entries":[]}]]}]]})"));
  EXPECT_EQ(trace_of("toy_count()", 0).at(0),
            line(1, R"("function":"toy_count","arguments":[],"returned":1,"result":{"kind":"int","value":0})"));
}

TEST(Trace, TellsNoOperationOfTheHostItself) {
  EXPECT_EQ(trace_of("x = 1 + 2; t = [x, \"a\"]; print(t, len(t))"), std::vector<std::string>{});
}

TEST(Trace, OfAFileWithSomethingElse_DoesNotOverwriteIt) {
  const Folder folder;
  folder.write("script.hvm", "print(1)\n");
  try {
    Trace trace(folder / "script.hvm", any_number);
    FAIL() << "it was overwritten";
  } catch (const TraceError& error) {
    EXPECT_EQ(error.what(),
              "the trace " + (folder / "script.hvm") + " cannot be written: it holds something else than a trace");
  }
  EXPECT_EQ(folder.read("script.hvm"), "print(1)\n");
}

}  // namespace
}  // namespace hvm::testing
