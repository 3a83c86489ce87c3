// refhost/cli/listing_test.cpp: hvm --list, with the sentences of a description and at terminals of any width

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// What hvm shows at a terminal of so many columns. Throws when there is no terminal, which ends the test.
std::string shown_within(unsigned short columns, const std::vector<std::string>& arguments) {
  int terminal = -1;
  winsize size = {};
  size.ws_col = columns;
  size.ws_row = 5;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child < 0) throw std::system_error(errno, std::generic_category(), "there is no pseudo-terminal");
  if (child == 0) {
    std::vector<char*> words{const_cast<char*>(HVM_PROGRAM)};
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execv(HVM_PROGRAM, words.data());
    _exit(127);
  }
  std::string shown;
  char bytes[4096];
  for (ssize_t count = 0; (count = read(terminal, bytes, sizeof(bytes))) > 0;)
    shown.append(bytes, static_cast<std::size_t>(count));
  close(terminal);
  waitpid(child, nullptr, 0);
  shown.erase(std::remove(shown.begin(), shown.end(), '\r'), shown.end());
  return shown;
}

TEST(Listing, HasASentenceForEachFunctionAndType) {
  const std::vector<std::string> lines = lines_of(run_hvm({"--list"}).out);
  EXPECT_EQ(lines.size(), 97u);
  std::size_t column = 0;
  for (const std::string& line : lines) {
    const std::size_t behind_name = line.find(' ', line.find(' ') + 1);
    const std::size_t sentence = line.find_first_not_of(' ', behind_name);
    ASSERT_NE(sentence, std::string::npos) << line << " has none";
    if (column == 0) column = sentence;
    EXPECT_EQ(sentence, column) << line << " is not aligned";
  }
}

TEST(Listing, IsAsWideAsThePatternsNeed) {
  EXPECT_EQ(run_hvm({"--list", "xsum", "[$]*double*"}).out,
            "function xsum       Gives the sum of all elements of an array, as one number.\n"
            "type $xdoublearray  double array\n");
}

TEST(Listing, AtATerminal_FitsIntoItsWidth) {
  EXPECT_EQ(shown_within(40, {"--list", "xsum", "xsin"}),
            "function xsum  Gives the sum of all e...\nfunction xsin  Gives the sine of ever...\n");
  EXPECT_THAT(lines_of(shown_within(200, {"--list", "xsum"})), ElementsAre(EndsWith("as one number.")));
  for (const unsigned short columns : {1, 13, 24})
    EXPECT_EQ(shown_within(columns, {"--list", "xsum"}), "function xsum\n") << columns;
  EXPECT_EQ(shown_within(25, {"--list", "xsum"}), "function xsum  Gives t...\n");
  EXPECT_THAT(lines_of(shown_within(0, {"--list", "xsum"})), ElementsAre(EndsWith("as one number.")));
}

TEST(Listing, OfHostileSentences_IsOneSafeLineForEach) {
  const Workplace place;
  const std::string module = place.path() + "/toy.so";
  std::filesystem::copy_file(module_path("toy_module"), module);
  std::string functions;
  for (const std::string& line : lines_of(run_toy({"--list", "toy_*", "xa*"}).out)) {
    const std::string name = line.substr(line.find(' ') + 1);
    const std::string sentence = name == "toy_int"   ? "one\\ntwo\\u001b[2J\\tthree"
                                 : name == "toy_set" ? "あいうえおかきくけこ"
                                                     : "";
    functions += (functions.empty() ? "" : ", ") + ("{\"name\": \"" + name + "\", \"summary\": \"" + sentence + "\"}");
  }
  place.write("toy.json", "{\"format\": 1, \"module\": \"toy\", \"functions\": [" + functions + "]}");
  const std::vector<std::string> arguments = {"--module", module, "--list", "toy_int", "toy_set", "toy_end"};
  EXPECT_EQ(run_hvm(arguments).out,
            "function toy_int  one two [2J three\nfunction toy_end\nfunction toy_set  あいうえおかきくけこ\n");
  // A wide character needs two columns.
  EXPECT_THAT(shown_within(33, arguments), HasSubstr("function toy_set  あいうえおか...\n"));
  EXPECT_THAT(shown_within(32, arguments), HasSubstr("function toy_set  あいうえお...\n"));
  EXPECT_THAT(shown_within(38, arguments), HasSubstr("function toy_set  あいうえおかきくけこ\n"));
}

TEST(Listing, WithoutADescription_HasNamesAlone) {
  const Outcome outcome = run_toy({"--list", "toy_int"});
  EXPECT_EQ(outcome.out, "function toy_int\n");
  EXPECT_EQ(outcome.err, "");
}

TEST(Listing, WithABrokenDescription_SaysSoAndHasTheNames) {
  const Workplace place;
  const std::string module = place.path() + "/toy.so";
  std::filesystem::copy_file(module_path("toy_module"), module);
  place.write("toy.json", "{");
  const Outcome outcome = run_hvm({"--module", module, "--list", "toy_int"});
  EXPECT_EQ(outcome.out, "function toy_int\n");
  EXPECT_THAT(outcome.err, HasSubstr("toy.json"));
  EXPECT_EQ(lines_of(outcome.err).size(), 1u);
  EXPECT_EQ(outcome.status, 0);
}

}  // namespace
}  // namespace hvm::testing
