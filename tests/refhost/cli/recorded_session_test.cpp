// refhost/cli/recorded_session_test.cpp: the sessions that pages show

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

/// The text from the first `begin` of a page, which comes behind it, to the next end of a block.
std::string block_after(const std::string& page_name, const std::string& begin) {
  const std::string page = contents(std::string(SOURCE_DIRECTORY) + "/" + page_name);
  const std::size_t found = page.find(begin);
  if (found == std::string::npos) return {};
  const std::size_t first = found + begin.size();
  return page.substr(first, page.find("\n```", first) + 1 - first);
}

/// What a terminal shows of these bytes: after a carriage return a line is written again.
std::string on_a_screen(const std::string& bytes) {
  std::string screen;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool ends_line = bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
    if (bytes[i] != '\r') screen += bytes[i];
    if (bytes[i] == '\r' && !ends_line) screen.resize(screen.rfind('\n') + 1);  // npos + 1 is 0
  }
  return screen;
}

/// What hvm shows, without the folder of the pages that it names.
std::string without_source_directory(std::string shown) {
  const std::string tree = std::string(SOURCE_DIRECTORY) + "/";
  for (std::size_t at = shown.find(tree); at != std::string::npos; at = shown.find(tree)) shown.erase(at, tree.size());
  return shown;
}

/// A picture without the line that names the version of the program that drew it.
std::string drawing(const std::string& path) {
  std::string svg = contents(path);
  const std::size_t begin = svg.find("<desc>");
  if (begin != std::string::npos) svg.erase(begin, svg.find('\n', begin) + 1 - begin);
  return svg;
}

/// A line to type, and what comes next. Keys stand in it as they are.
struct Typed {
  const char* keys;
  const char* next = "\n> ";
};

constexpr const char* tab = "\t";

TEST(RecordedSession, IsTheOneOfThePageOnThePrompt) {
  const Workplace place;
  std::filesystem::copy(std::string(SOURCE_DIRECTORY) + "/examples/data/co2-concentration.csv", place.path());
  TerminalConditions conditions = in_folder(place);
  conditions.module = module_path("arrayfold");
  Terminal terminal(conditions);
  std::string shown = terminal.wait_for("> ");
  const std::string words = std::string("air = read_csv_array(\"co2") + tab + ", [\"columns\": [\"CO2\"]])";
  const Typed typed[] = {
      {words.c_str()},
      {"air.sh\t)"},
      {"air.reshape(741)"},
      {"air"},
      {"xmea\tair)"},
      {"round(_, 1)"},
      {"help(xnor\t"},
      {"use \"arrays\""},
      {"last = slice(air, 717, 741)"},
      {"last.reshape(2, 12)"},
      {"last"},
      {"for i in range(2)", "\n... "},
      {"print(xmean(row(last, i)))", "\n... "},
      {"end"},
      {"xpow(air, 2)"},
      {"find(\"ppm\", \"x\")"},
      {"x = 1958.2 + xlast"},
      {"plot(xarange(741) / 12.0 + 1958.2, air)"},
      {"save_plot(\"air.svg\")"},
      {":vars"},
      {":save air.hvm"},
  };
  for (const Typed& line : typed) shown += terminal.answer(line.keys, line.next);
  shown += terminal.interrupt("while air[0] > 0 do end");
  terminal.type("exit\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  shown += "exit\r\n";
  EXPECT_EQ(on_a_screen(without_source_directory(shown)), block_after("docs/prompt.md", "```text\n"));
  EXPECT_TRUE(std::filesystem::exists(place.path() + "/air.svg"));
  conditions.arguments = {"air.hvm"};
  EXPECT_EQ(Terminal(conditions).exit_status(), 0);
}

TEST(RecordedSession, IsTheOneOfTheReadme_WithItsPicture) {
  const std::string page = block_after("README.md", "$ build/release/bin/hvm\n");
  const Workplace place;
  TerminalConditions conditions = in_folder(place);
  conditions.module = module_path("arrayfold");
  Terminal terminal(conditions);
  std::string shown = terminal.wait_for("> ");
  const std::string prompt = "> ";
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);)
    if (line.rfind(prompt, 0) == 0) shown += terminal.answer(line.substr(prompt.size()));
  terminal.type("exit\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  EXPECT_EQ(on_a_screen(without_source_directory(shown)), page + prompt);
  EXPECT_NE(page.find("warning: "), std::string::npos);
  EXPECT_EQ(drawing(place.path() + "/wave.svg"), drawing(std::string(SOURCE_DIRECTORY) + "/docs/pictures/wave.svg"));
}

}  // namespace
}  // namespace hvm::testing
