// refhost/cli/prompt_session_test.cpp: what stays of a session: its history, and its inputs as a script

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <utility>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Repl, LoadAndSave_TakeScripts) {
  const Workplace place;
  place.write("area.hvm", "fn area(w, h) return w * h end\nscale = 2\n");
  {
    Prompt terminal(in_folder(place));
    terminal.expect_answers({{":load area.hvm"},
                             {"area(2, 3) * scale", "\r\n12\r\n"},
                             {"half = _ / 2"},
                             {"half / 0"},
                             {":save all.hvm", "saved in all.hvm"},
                             {":save /no/such/folder/x.hvm", "error: /no/such/folder/x.hvm"},
                             {":load absent.hvm", "error: "}});
  }
  EXPECT_EQ(contents(place.path() + "/all.hvm"),
            "fn area(w, h) return w * h end\nscale = 2\n"
            "_ = area(2, 3) * scale\n"
            "half = _ / 2\n"
            "# half / 0  # error: '/' by the integer zero\n");
  EXPECT_EQ(run_toy({place.path() + "/all.hvm"}).status, 0);
}

TEST(Repl, SavedScripts_HoldWhatRanOfInputsThatFailed) {
  const struct {
    std::vector<const char*> inputs;
    const char* saved;
    const char* printed;  // of `x` at the end
  } rows[] = {
      {{"fill = 1; z = i[5]", "x = fill + 1"},
       "fill = 1; # z = i[5]  # error: there is no variable 'i'\nx = fill + 1\n",
       "2"},
      {{"a = 4; b = a / 0; a = 5; fn f() return a end; ; # more", "x = f()"},
       "a = 4; # b = a / 0  # error: '/' by the integer zero\n# a = 5\n"
       "fn f() return a end; ; # more\nx = f()\n",
       "4"},
      {{"t = []; for i in range(5) do t[i] = 10 / (2 - i) end", "x = [t, i]"},
       "t = []; try  # error: '/' by the integer zero\n"
       "for i in range(5) do t[i] = 10 / (2 - i) end\ncatch session_error end\nx = [t, i]\n",
       "[[5, 10], 2]"},
      {{"fn fill(t) t[0] = 7; error(\"a\\nb\") end", "x = []; fill(x)"},
       "fn fill(t) t[0] = 7; error(\"a\\nb\") end\nx = []; try  # error: a b\nfill(x)\ncatch session_error end\n",
       "[7]"},
      {{"use \"absent\"; y = 1", "x = 3"}, nullptr, "3"},
      {{"# twice as much", "fn double(n) return 2 * n end", "x ="},
       "# twice as much\nfn double(n) return 2 * n end\n",
       nullptr},
      {{"fn half() return _ / 2 end", "8", "x = half()"}, "fn half() return _ / 2 end\n_ = 8\nx = half()\n", "4"},
      {{"t = []; fn fill() t[0] = 7; return 1 end", "fill() / 0", "x = t"},
       "t = []; fn fill() t[0] = 7; return 1 end\n"
       "try  # error: '/' by the integer zero\nfill() / 0\ncatch session_error end\nx = t\n",
       "[7]"},
      {{"x = [1, 2, 3]", "u = [0, -remove(x, 0)]; v = [\"k\": u[not remove(x, 0):]] / 0"}, nullptr, "[3]"},
      {{"x = [1]", "append(x, 2) + 1", "x[append(x, 3) or 5] = 1 / 0"}, nullptr, "[1, 2, 3]"},
      {{"x = 4", "print(x / 0)", "toy_fail(x)"},
       "x = 4\n# print(x / 0)  # error: '/' by the integer zero\n"
       "# toy_fail(x)  # error: toy_fail: the call failed with an int\n",
       "4"},
      {{"x = [1, 2, 3]", "u = -remove(x, 0) / 0"},
       "x = [1, 2, 3]\ntry  # error: '/' by the integer zero\nu = -remove(x, 0) / 0\ncatch session_error end\n",
       "[2, 3]"},
      {{"x = 4", "u = @double(x) / 0"}, nullptr, "4"},
      {{"x = 5", "return x"}, nullptr, "5"},
      {{"8; x = _ + 1; x"}, "_ = 8; x = _ + 1; _ = x\n", "9"},
  };
  for (const auto& row : rows) {
    const Workplace place;
    Prompt terminal(in_folder(place));
    for (const char* input : row.inputs) terminal.answer(input);
    terminal.answer(":save all.hvm");
    const std::string saved = contents(place.path() + "/all.hvm");
    if (row.saved) {
      EXPECT_EQ(saved, row.saved);
    }
    if (!row.printed) continue;
    const Outcome outcome = run_toy({"-e", saved + "print(x)"});
    EXPECT_EQ(outcome.out, std::string(row.printed) + "\n") << outcome.err << saved;
  }
}

TEST(Repl, SavedScripts_HoldInterruptedStatementsAsComments) {
  const Workplace place;
  Prompt terminal(in_folder(place));
  terminal.answer("x = 3; while 1", "\n... ");
  terminal.answer("x += 1", "\n... ");
  terminal.interrupt("end; x = 4");
  terminal.answer(":save all.hvm");
  EXPECT_EQ(contents(place.path() + "/all.hvm"), "x = 3; # while 1\n# x += 1\n# end  # error: interrupted\n# x = 4\n");
}

TEST(Repl, SavedScripts_FindTheScriptsThatTheyUse) {
  const Workplace place;
  place.write("seven.hvm", "fn seven() return 7 end\n");
  place.write("inner/eight.hvm", "fn eight() return 8 end\n");
  place.write("inner/main.hvm", "use \"eight.hvm\"\nuse \"arrays\"\n");
  place.write("away/other.hvm", "");
  Prompt terminal(in_folder(place));
  for (const char* input : {"use \"seven.hvm\"", ":load inner/main.hvm", "print(seven(), eight())"})
    terminal.answer(input);
  terminal.answer(":save away/all.hvm");
  EXPECT_THAT(contents(place.path() + "/away/all.hvm"), HasSubstr("use \"arrays\"\n"));
  const Outcome outcome = run_toy({place.path() + "/away/all.hvm"});
  EXPECT_EQ(outcome.out, "7 8\n") << outcome.err;
}

TEST(Repl, SavedScripts_HaveTheLastFnOfAName) {
  const Workplace place;
  Prompt terminal(in_folder(place));
  for (const char* input : {"fn f() return 1 end", "x = f()", "fn f() return 2 end", "print(x, f())"})
    terminal.answer(input);
  terminal.answer(":save all.hvm");
  const Outcome outcome = run_toy({place.path() + "/all.hvm"});
  EXPECT_EQ(outcome.out, "2 2\n") << outcome.err;
}

TEST(Repl, SavedScripts_InWhichAFnTookThePlaceOfAUsedOne_NameBoth) {
  const Workplace place;
  const std::string used = place.write("used.hvm", "fn f() return 1 end\n");
  Prompt terminal(in_folder(place));
  terminal.expect_answers(
      {{"use \"used.hvm\""}, {"f()", "\r\n1\r\n"}, {"fn f() return 2 end"}, {"f()", "\r\n2\r\n"}, {":save all.hvm"}});
  const std::string saved = place.path() + "/all.hvm";
  const Outcome outcome = run_toy({saved});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr(saved + " and " + used + " both have a fn 'f'"));
}

TEST(Repl, SavedScripts_HoldTheArgumentsOfTheFirstScript) {
  const Workplace place;
  TerminalConditions conditions = in_folder(place);
  conditions.arguments = {"-i", place.write("script.hvm", "x = args[1]\n"), "one", "two \"\\"};
  Prompt terminal(conditions);
  terminal.answer(":save all.hvm");
  EXPECT_EQ(contents(place.path() + "/all.hvm"), "args = [\"one\", \"two \\\"\\\\\"]\nx = args[1]\n");
}

TEST(Repl, TheOptionI_StaysAfterAScript) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.arguments = {"-i", place.write("script.hvm", "x = 5\ny = x / 0\n")};
  Terminal terminal(conditions);
  EXPECT_THAT(terminal.wait_for("\n> "), HasSubstr("script.hvm:2:7: error: '/' by the integer zero"));
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n5\r\n"));
  EXPECT_EQ(run_toy({"-i", "-e", "1"}).status, 2);
}

TEST(Repl, History_OutlivesTheSession) {
  const Workplace place;
  TerminalConditions conditions = with_history_in(place);
  {
    Prompt terminal(conditions);
    terminal.answer("fn twice(n)", "\n... ");
    terminal.answer("return n * 2", "\n... ");
    terminal.answer("end");
    terminal.answer("text = \"\\\\n \xCF\x80\"");
    terminal.type("\x04");
    EXPECT_EQ(terminal.exit_status(), 0);
  }
  struct stat status = {};
  ASSERT_EQ(stat((place.path() + "/hvm/history").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  Prompt terminal(conditions);
  terminal.type("\x10\n");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("text"), HasSubstr("\r\n\"\\\\n \xCF\x80\"\r\n"));
  terminal.type("\x10\x10\x10\n");
  terminal.wait_for("\n> ");
  EXPECT_THAT(terminal.answer("twice(4)"), HasSubstr("\r\n8\r\n"));
}

TEST(Repl, History_HoldsControlCharactersEscaped) {
  const Workplace place;
  TerminalConditions conditions = with_history_in(place);
  {
    Prompt terminal(conditions);
    terminal.answer("len(\"\x16\x1b[31m\x16\x07\x16\t\x16\x7F\\x07\")");
    terminal.type("\x04");
    EXPECT_EQ(terminal.exit_status(), 0);
  }
  EXPECT_EQ(contents(place.path() + "/hvm/history"), "len(\"\\x1b[31m\\x07\t\\x7f\\\\x07\")\n");
  Prompt terminal(conditions);
  terminal.type("\x10\n");
  const std::string shown = terminal.wait_for("\n> ");
  EXPECT_THAT(shown, HasSubstr("^[[31m"));
  EXPECT_THAT(shown, HasSubstr("\r\n9\r\n"));
}

TEST(Repl, History_OfEarlierVersions_IsShownSafely) {
  const Workplace place;
  place.write("hvm/history", "len(\"\x1b[31m<\xFF>\\y\\x4\")\n");
  Prompt terminal(with_history_in(place));
  terminal.type("\x10\n");
  const std::string shown = terminal.wait_for("\n> ");
  EXPECT_THAT(shown, HasSubstr("^[[31m<\uFFFD>yx4"));
  EXPECT_THAT(shown, HasSubstr("\r\n11\r\n"));
}

TEST(Repl, History_TakesTheInputsOfTwoSessions) {
  const Workplace place;
  TerminalConditions conditions = with_history_in(place);
  Prompt first(conditions);
  Prompt second(conditions);
  first.answer("1");
  second.answer("2");
  first.answer("3");
  EXPECT_EQ(contents(place.path() + "/hvm/history"), "1\n2\n3\n");
}

TEST(Repl, History_KeepsTheLatestInputs) {
  const Workplace place;
  std::string inputs;
  for (int i = 0; i < 5000; ++i) inputs += std::to_string(i) + "\n";
  place.write("hvm/history", inputs);
  Prompt terminal(with_history_in(place));
  terminal.answer("7");
  const std::string kept = contents(place.path() + "/hvm/history");
  EXPECT_EQ(kept.substr(0, 5), "4000\n");
  EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 1001);
}

TEST(Repl, History_IsWhereTheUserWantsIt) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.state = place.path() + "/state";
  conditions.environment = {{"HVM_HISTORY", place.path() + "/mine"}};
  {
    Prompt terminal(conditions);
    terminal.answer("1");
    EXPECT_EQ(contents(place.path() + "/mine"), "1\n");
  }
  conditions.environment = {{"HVM_HISTORY", ""}};
  Prompt terminal(conditions);
  terminal.answer("1");
  EXPECT_FALSE(std::filesystem::exists(place.path() + "/state"));
}

TEST(Repl, AHistoryThatCannotBeWritten_IsToldOnce) {
  const Workplace place;
  place.write("closed", "");
  TerminalConditions conditions;
  conditions.environment = {{"HVM_HISTORY", place.path() + "/closed/history"}};
  Terminal terminal(conditions);
  std::string shown = terminal.wait_for("> ");
  shown += terminal.answer("1") + terminal.answer("2");
  const std::size_t first = shown.find("the history is not kept");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(shown.find("the history is not kept", first + 1), std::string::npos);
}

TEST(Repl, AHistoryThatIsNoFile_IsToldApart) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.environment = {{"HVM_HISTORY", place.path()}};
  Terminal folder(conditions);
  EXPECT_THAT(folder.wait_for("> "), HasSubstr(place.path() + ": this is not a regular file\r\n"));
  conditions.environment = {{"HVM_HISTORY", "/dev/null"}};
  Terminal nothing(conditions);
  std::string shown = nothing.wait_for("> ") + nothing.answer("x = 1");
  EXPECT_THAT(shown, Not(HasSubstr("history")));
  for (const auto& entry : std::filesystem::directory_iterator("/dev"))
    EXPECT_THAT(entry.path().filename().string(), Not(HasSubstr("session-" + std::to_string(nothing.id()))));
}

TEST(Repl, AHistoryOfAnyBytes_DoesNoHarm) {
  const Workplace place;
  std::string bytes = "1 + 1\n\n\\";
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  bytes += "\n" + std::string(3 << 20, 'x');
  place.write("hvm/history", bytes);
  Prompt terminal(with_history_in(place));
  EXPECT_THAT(terminal.answer("40 + 2"), HasSubstr("\r\n42\r\n"));
}

/// The script that hvm names when it starts.
std::string offered_script(Terminal& terminal) {
  const std::string shown = terminal.wait_for("\n> ");
  const std::string words = "An earlier session did not end properly. To bring its variables back, type\r\n  :load ";
  EXPECT_THAT(shown, HasSubstr(words));
  const std::size_t begin = shown.find(words) + words.size();
  return shown.substr(begin, shown.find('\r', begin) - begin);
}

TEST(Repl, InputsOfASessionThatEndsInAFault_AreOffered) {
  const Workplace place;
  TerminalConditions conditions = with_history_in(place);
  {
    Prompt terminal(conditions);
    terminal.answer("x = 41");
    terminal.answer("x + 1");
    terminal.type("toy_end(\"segv\")\n");
    terminal.exit_status();
  }
  std::string path;
  {
    Terminal terminal(conditions);
    path = offered_script(terminal);
    EXPECT_EQ(contents(path), "x = 41\nx + 1\n");
    terminal.answer(":load " + path);
    EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n41\r\n"));
    EXPECT_FALSE(std::filesystem::exists(path));
    terminal.type("exit\n");
    EXPECT_EQ(terminal.exit_status(), 0);
  }
  Terminal terminal(conditions);
  EXPECT_THAT(terminal.wait_for("> "), Not(HasSubstr("session")));
}

TEST(Repl, AnInputWithAFault_IsOfferedUpToTheStatementOfTheFault) {
  const Workplace place;
  TerminalConditions conditions = with_history_in(place);
  {
    Prompt terminal(conditions);
    terminal.interrupt("for i in range(2000000000) do y = i end");
    terminal.expect_answers({{"z = y * 0"}, {"1 / 0; x = 1"}});
    terminal.type("x = 41; fn next() return x + 1 end; toy_end(\"segv\")\n");
    EXPECT_EQ(terminal.exit_status(), -1);
  }
  Terminal terminal(conditions);
  const std::string path = offered_script(terminal);
  EXPECT_EQ(contents(path),
            "# for i in range(2000000000) do y = i end  # error: interrupted\n"
            "z = y * 0\n"
            "# 1 / 0  # error: '/' by the integer zero\n"
            "# x = 1\n"
            "x = 41; fn next() return x + 1 end; ");
  EXPECT_THAT(terminal.answer(":load " + path), HasSubstr("there is no variable 'y'"));
  EXPECT_THAT(terminal.answer("next()"), HasSubstr("\r\n42\r\n"));
  EXPECT_FALSE(std::filesystem::exists(path));
  terminal.answer(":save " + place.path() + "/all.hvm");
  EXPECT_EQ(run_toy({"-e", contents(place.path() + "/all.hvm") + "print(x)"}).out, "41\n");
}

/// Makes the script of a session that did not end.
void leave_session(const std::string& folder, const std::string& name, const std::string& text) {
  const std::string path = folder + "/" + name;
  std::filesystem::create_directories(folder);
  std::ofstream(path) << text;
}

TEST(Repl, ALostSession_IsNamedAsItIsTyped) {
  const Workplace place;
  TerminalConditions conditions;
  conditions.columns = 300;
  conditions.state = place.path() + "/two words";
  leave_session(conditions.state + "/hvm", "session-1.hvm", "x = 41\n");
  Terminal terminal(conditions);
  const std::string path = offered_script(terminal);
  EXPECT_EQ(path.front(), '"');
  terminal.answer(":load " + path);
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n41\r\n"));
}

/// What the scripts of sessions in a folder hold.
std::vector<std::string> sessions_in(const std::string& folder) {
  std::vector<std::string> texts;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".hvm") texts.push_back(contents(entry.path().string()));
  return texts;
}

TEST(Repl, ASessionThatTheUserEnds_LeavesNoScript) {
  for (const char* end : {"exit\n", "quit()\n", "exit(3)\n", "\x04"}) {
    const Workplace place;
    Prompt terminal(with_history_in(place));
    terminal.answer("x = 1");
    EXPECT_THAT(sessions_in(place.path() + "/hvm"), ::testing::ElementsAre("x = 1\n")) << end;
    terminal.type(end);
    terminal.exit_status();
    EXPECT_THAT(sessions_in(place.path() + "/hvm"), ::testing::IsEmpty()) << end;
  }
}

TEST(Repl, LostSessions_AreNotWrittenOver) {
  const Workplace place;
  const std::string folder = place.path() + "/hvm";
  leave_session(folder, "session-1.hvm", "x = 1\n");
  leave_session(folder, "session-2.hvm", "x = 2\n");
  leave_session(folder, "session-3.hvm", "");
  Prompt terminal(with_history_in(place));
  leave_session(folder, "session-" + std::to_string(terminal.id()) + ".hvm", "x = 3\n");
  terminal.answer("x = 4");
  EXPECT_THAT(sessions_in(folder), ::testing::UnorderedElementsAre("x = 1\n", "x = 2\n", "x = 3\n", "x = 4\n"));
}

TEST(Repl, SessionsOfOtherUsers_AreNotOffered) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser gives files to another user, whose session would lie here";
  const Workplace place;
  const std::string folder = place.path() + "/hvm";
  leave_session(folder, "session-1.hvm", "x = 1\n");
  leave_session(folder, "session-2.hvm", "x = 2\n");
  ASSERT_EQ(chown((folder + "/session-1.hvm").c_str(), 65534, 65534), 0);
  Terminal terminal(with_history_in(place));
  EXPECT_EQ(contents(offered_script(terminal)), "x = 2\n");
  EXPECT_TRUE(std::filesystem::exists(folder + "/session-1.hvm"));
}

TEST(Repl, LostSessionsThatAreOld_AreRemoved) {
  const Workplace place;
  const std::string folder = place.path() + "/hvm";
  const std::pair<const char*, int> ages[] = {{"lost-session-1.hvm", 31}, {"lost-session-2.hvm", 29}, {"mine.hvm", 99}};
  for (const auto& [name, days] : ages) {
    leave_session(folder, name, "x = 1\n");
    std::filesystem::last_write_time(folder + "/" + name,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * days));
  }
  leave_session(folder, "session-9.hvm", "x = 9\n");
  std::filesystem::last_write_time(folder + "/session-9.hvm",
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 40));
  std::string offered;
  for (int i = 0; i < 2; ++i) {
    Terminal terminal(with_history_in(place));
    if (i == 0)
      offered = offered_script(terminal);
    else
      terminal.wait_for("> ");
    EXPECT_TRUE(std::filesystem::exists(offered)) << i;
    EXPECT_FALSE(std::filesystem::exists(folder + "/lost-session-1.hvm"));
    EXPECT_TRUE(std::filesystem::exists(folder + "/lost-session-2.hvm"));
    EXPECT_TRUE(std::filesystem::exists(folder + "/mine.hvm"));
  }
}

TEST(Repl, ALostSession_IsKnownByItsNameInItsFolder) {
  const Workplace place;
  const std::string path = place.write("hvm/lost-session-1.hvm", "x = y\nx = 41\n");
  TerminalConditions conditions = with_history_in(place);
  conditions.folder = place.path() + "/hvm";
  Prompt terminal(conditions);
  terminal.answer(":load lost-session-1.hvm");
  EXPECT_THAT(terminal.answer("x"), HasSubstr("\r\n41\r\n"));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Repl, AScriptOfALostSessionThatCannotBeRead_Stays) {
  const Workplace place;
  const std::string path = place.write("hvm/lost-session-1.hvm", "x = 1\ny = (\n");
  Prompt terminal(with_history_in(place));
  EXPECT_THAT(terminal.answer(":load " + path), HasSubstr("error: "));
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(Repl, ASessionThatRuns_IsNotOfferedToAnother) {
  const Workplace place;
  TerminalConditions conditions = with_history_in(place);
  Prompt first(conditions);
  first.answer("x = 1");
  Terminal second(conditions);
  EXPECT_THAT(second.wait_for("> "), Not(HasSubstr("session")));
}

}  // namespace
}  // namespace hvm::testing
