// conformance/conformance_test.cpp: hvm --conformance finds what is wrong with a module, and names it

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Json = nlohmann::json;

Outcome run_conformance(const std::string& module, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"--conformance", "--module", module});
  return run_hvm(options);
}

Json json_in(const std::string& path) { return Json::parse(contents(path)); }

/// The names under `broken`.
std::vector<std::string> broken_in(const Json& report) {
  std::vector<std::string> names;
  for (const Json& each : report.at("broken")) names.push_back(each.at("about"));
  return names;
}

TEST(Conformance, OfTheModule_IsWhole) {
  const Workplace place;
  const Outcome outcome = run_conformance(module_path("arrayfold"), {"--json", place.path() + "/report.json"});
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\nthe module conforms to version " PROJECT_VERSION "\n"));
  EXPECT_EQ(outcome.err, "");
  const Json report = json_in(place.path() + "/report.json");
  EXPECT_EQ(report["format"], 1);
  EXPECT_EQ(report["module"], module_path("arrayfold"));
  EXPECT_EQ(report["conforms"], true);
  EXPECT_GT(report["calls"], 1000);
  EXPECT_EQ(report["calls_as_recorded"], report["calls"]);
  EXPECT_GT(report["scripts"], 100);
  EXPECT_EQ(report["scripts_passed"], report["scripts"]);
  EXPECT_THAT(report["broken"], IsEmpty());
  EXPECT_EQ(report["tests"].size(), report["calls"].get<std::size_t>() + report["scripts"].get<std::size_t>());
}

// ---- Mistakes

struct Mistake {
  const char* name;      // of the mutant
  const char* function;  // that is named
  const char* sentence;  // in the report
};

void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.name; }

class Mistakes : public ::testing::TestWithParam<Mistake> {};

INSTANTIATE_TEST_SUITE_P(
    All, Mistakes,
    ::testing::Values(
        Mistake{"sum_is_one_more", "xsum",
                "calls/xsum/6: xsum(imany)\n  imany = xlinspace(1, 70, 70)\n"
                "  it gives int 2486; the table has: it gives int 2485\n"},
        Mistake{"mean_gives_nothing", "xmean", "  it gives nothing; the table has: it gives real "},
        Mistake{"sqrt_fails", "xsqrt", "  it fails; the table has: it gives double array "},
        Mistake{"dot_throws_other_words", "xdot",
                "  it throws std::runtime_error: another cause; the table has: it throws std::runtime_error: Dot"},
        Mistake{"sort_asks_twice", "xsort",
                "  its operation 2 is HVM_AnyCheck(arg 0) = true; the table has HVM_GetAny(arg 0) = object 1\n"},
        Mistake{"remainder_asks_in_another_order", "xremainder",
                "  its operation 1 is HVM_AnyCheck(arg 1) = true; the table has HVM_AnyCheck(arg 0) = true\n"},
        Mistake{"prod_fails_and_writes", "xprod", "  it fails and still writes its result record: "},
        Mistake{"abs_leaves_a_block_behind", "xabs", "  it leaves behind: 1 blocks\n"},
        Mistake{"inverse_faults", "xinv", "  it ends the process by signal 11 (Segmentation fault)\n"},
        Mistake{"rank_ends_the_process", "xmatrix_rank", "  it ends the process\n"},
        Mistake{"trace_never_returns", "xtrace",
                "calls/xtrace/1: xtrace(s)\n  s = xarray(@double, [[4.0, 2.0], [2.0, "
                "3.0]])\n  it takes longer than 2 s\n"},
        Mistake{"cube_is_missing", "xcube", "the module registers no function xcube\n"},
        Mistake{"exp_is_off_in_the_tenth_digit", "xexp", "  it gives double array "},
        Mistake{"reshape_refuses", "reshape", "calls/reshape/5: d.reshape(6)\n"},
        Mistake{"add_subtracts", "add", "calls/add/1: d + 2\n"},
        Mistake{"writing_is_lost", "element access", "  d stays what it was; the table has: it becomes double array "}),
    [](const ::testing::TestParamInfo<Mistake>& mistake) { return std::string(mistake.param.name); });

/// A copy of the module with mistakes, under the name of one of them.
std::string mutant(const Workplace& place, const std::string& name) {
  const std::string path = place.path() + "/" + name + ".so";
  std::filesystem::copy_file(module_path("mutant_module"), path);
  return path;
}

/// The calls that are made to find a mistake in a function: all of them. Under the sanitizers a process takes ten times
/// as long, and the calls of the function must do.
std::string calls_for(const std::string& function) {
#ifdef ARRAYFOLD_ADDRESS_SANITIZER
  return "calls/" + function + "/";
#else
  return function == "xtrace" ? "calls/xtra" : "calls/";  // each call that hangs takes its time
#endif
}

TEST_P(Mistakes, AreFoundAndNamedAlone) {
  const Workplace place;
  const bool hangs = std::string(GetParam().name) == "trace_never_returns";
  const Outcome outcome =
      run_conformance(mutant(place, GetParam().name), {"--filter", calls_for(GetParam().function), "--time-limit",
                                                       hangs ? "2" : "60", "--json", place.path() + "/report.json"});
  EXPECT_EQ(outcome.status, 1) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr(GetParam().sentence));
  EXPECT_THAT(outcome.out, HasSubstr(std::string("\nwhat differs:\n  ") + GetParam().function + " "));
  EXPECT_THAT(outcome.out, HasSubstr("\nwhat matches the filter does not conform to version "));
  const Json report = json_in(place.path() + "/report.json");
  EXPECT_EQ(report["conforms"], false);
  EXPECT_THAT(broken_in(report), ElementsAre(GetParam().function));
}

TEST(ModuleWithoutMistake, BehindAnotherModule_Conforms) {
  const Workplace place;
  for (const char* name : {"none", "exp_is_off_in_the_last_digit"}) {
    const Outcome outcome = run_conformance(mutant(place, name), {"--filter", calls_for("xexp")});
    EXPECT_EQ(outcome.status, 0) << name << outcome.out;
  }
}

TEST(ModuleWithMistake, HasItsScriptsNamed) {
  const Workplace place;
  const Outcome outcome = run_conformance(mutant(place, "sum_is_one_more"), {"--filter", "reduce/*"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\n  line 4: expected 5050 5050; got 5051 5050\n"));
  EXPECT_THAT(outcome.out,
              HasSubstr("\nwhat differs:\n  xsum             scripts/reduce/xsum.hvm\n9 of 10 scripts pass, in "));
}

TEST(ModuleWithMistake, InTheOrderOfItsFunctions_DoesNotConform) {
  const Workplace place;
  const Outcome outcome = run_conformance(mutant(place, "functions_are_swapped"), {"--filter", "calls/xsum/1"});
  EXPECT_EQ(outcome.status, 1) << outcome.err;
  EXPECT_EQ(outcome.out.rfind("function 1 that the module registers is xrand; the table has xarray\n", 0), 0u)
      << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("\nwhat matches the filter does not conform to version "));
}

TEST(ModuleWithMistake, InWhatPreparesACall_LeavesTheCallUnjudged) {
  const Workplace place;
  const auto expect_unjudged = [&](const char* name, const char* call, const std::string& reason) {
    const Outcome outcome = run_conformance(
        mutant(place, name), {"--filter", call, "--time-limit", "2", "--json", place.path() + "/report.json"});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("\n  " + reason + "\n1 are not judged, since what prepares them differs, "));
    EXPECT_THAT(outcome.out, Not(HasSubstr("what differs")));
    const Json report = json_in(place.path() + "/report.json");
    EXPECT_THAT(report["broken"], IsEmpty());
    EXPECT_EQ(report["tests"].at(0)["judged"], false);
    EXPECT_EQ(report["tests"].at(0)["differences"], Json({reason}));
  };
  expect_unjudged("writing_is_lost", "calls/xeig/12", "what prepares it gives other values");
  expect_unjudged("trace_never_returns", "calls/xnorm/13", "what prepares it takes too long: a = xtrace(xeye(2))");
}

TEST(Conformance, ShowsThreeTestsOfAFunctionAndAllWithV) {
  const Workplace place;
  const std::string module = mutant(place, "mean_gives_nothing");
  const auto shown = [](const std::string& out) {
    std::size_t count = 0;
    for (std::size_t at = out.find("calls/xmean/"); at != std::string::npos; at = out.find("calls/xmean/", at + 1))
      ++count;
    return count;
  };
  const std::string brief = run_conformance(module, {"--filter", "calls/xmean/"}).out;
  EXPECT_EQ(shown(brief), 3u);
  EXPECT_THAT(brief, HasSubstr("\n3 of each are shown; -v shows all\n"));
  const std::string whole = run_conformance(module, {"--filter", "calls/xmean/", "-v"}).out;
  EXPECT_GT(shown(whole), 3u);
  EXPECT_THAT(whole, Not(HasSubstr("are shown")));
}

// ---- What is no module, and wrong usage

void expect_unloadable(const std::string& path, const std::string& cause) {
  const Outcome outcome = run_conformance(path);
  EXPECT_EQ(outcome.status, 3) << outcome.out << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "hvm: the module " + path + " cannot be loaded: " + cause + "\n");
}

TEST(Conformance, OfWhatCannotBeLoaded_SaysWhy) {
  const Workplace place;
  expect_unloadable("/no/such/module.so", "there is no such file");
  expect_unloadable(place.write("text.so", std::string(100, 'x')), "it is not an ELF shared object");
  expect_unloadable(module_path("module_without_init"), "it exports no PKG_Init");
  expect_unloadable(module_path("module_failing"), "PKG_Init returns 0: the module does not start");
  expect_unloadable(module_path("module_throwing"), "PKG_Init threw std::runtime_error: no room today");
  expect_unloadable(module_path("module_faulting"), "while it is loaded, it ends the process by signal 6 (Aborted)");
}

TEST(Conformance, OfATruncatedModule_SaysSo) {
  const Workplace place;
  const std::string whole = contents(module_path("arrayfold"));
  for (const std::size_t size :
       {std::size_t{70}, std::size_t{4000}, whole.size() / 4, whole.size() / 2, whole.size() * 9 / 10}) {
    const std::string path = place.write("cut.so", whole.substr(0, size));
    const Outcome outcome = run_conformance(path, {"--filter", "calls/xsum/"});
    EXPECT_THAT(outcome.status, AnyOf(0, 3)) << size << outcome.err;  // 0: what is cut off is not loaded
    const std::string cut = "hvm: the module " + path + " cannot be loaded: its ELF structure is cut off\n";
    EXPECT_EQ(outcome.err, outcome.status == 3 ? cut : "");
  }
  // A tenth ends inside what is loaded, also where notes for debuggers are most of the file.
  const std::string tenth = place.write("tenth.so", whole.substr(0, whole.size() / 10));
  EXPECT_EQ(run_conformance(tenth, {"--filter", "calls/xsum/"}).status, 3);
}

TEST(Conformance, OfAnotherModule_SaysSoInOneSentence) {
  const Outcome outcome = run_conformance(module_path("toy_module"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            module_path("toy_module") + " registers 2 of the 93 functions of arrayfold: it is another module\n");
  EXPECT_EQ(outcome.err, "");
}

TEST(Conformance, WorksWhereTheEndOfProcessesIsIgnored) {
  const std::string module = module_path("arrayfold");
  const std::string command =
      "env --ignore-signal=CHLD '" HVM_PROGRAM "' --conformance --filter calls/xsum/1 --module '" + module + "'";
  std::FILE* const pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) out += static_cast<char>(c);
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_THAT(out, HasSubstr("\nwhat matches the filter conforms to version "));
}

TEST(Conformance, WithWrongOptions_SaysWhatIsWrong) {
  const auto error_of = [](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "--conformance");
    const Outcome outcome = run_hvm(arguments);
    EXPECT_EQ(outcome.status, 2) << outcome.out;
    return outcome.err;
  };
  EXPECT_EQ(error_of({"script.hvm"}), "hvm: --conformance takes no arguments, but got \"script.hvm\"\n");
  EXPECT_EQ(error_of({"--test"}), "hvm: --test cannot be combined with --conformance\n");
  EXPECT_EQ(error_of({"--junit", "file"}), "hvm: --junit cannot be combined with --conformance\n");
  EXPECT_EQ(error_of({"--json", ""}), "hvm: --json takes the name of a file, not \"\"\n");
  EXPECT_EQ(error_of({"--json", "/no/such/report.json"}),
            "hvm: --json: /no/such/report.json: no file can be made in its folder: No such file or directory\n");
  EXPECT_EQ(run_hvm({"--json", "report.json"}).err, "hvm: --json needs --conformance\n");
  const Outcome none = run_hvm({"--conformance", "--filter", "no such thing"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.out, "no calls or scripts match the filter\n");
}

}  // namespace
}  // namespace hvm::testing
