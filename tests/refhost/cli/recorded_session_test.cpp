// refhost/cli/recorded_session_test.cpp: the session that docs/prompt.md shows

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "terminal.hpp"

namespace hvm::testing {
namespace {

/// The block of a page that begins with the first line of hvm.
std::string session_on_page() {
  const std::string page = contents(std::string(SOURCE_DIRECTORY) + "/docs/prompt.md");
  const std::string fence = "```";
  const std::size_t begin = page.find(fence + "text\nhvm ");
  if (begin == std::string::npos) return {};
  const std::size_t first = begin + fence.size() + 5;
  return page.substr(first, page.find("\n" + fence, first) + 1 - first);
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

/// A line to type, and what comes next. Keys stand in it as they are.
struct Typed {
  const char* keys;
  const char* next = "\n> ";
};

constexpr const char* tab = "\t";

TEST(RecordedSession, IsTheOneOnThePage) {
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
  terminal.type("while air[0] > 0 do end\n");
  terminal.wait_until_it_runs();
  terminal.press("\x03");
  shown += terminal.wait_for("\n> ");
  terminal.type("exit\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  shown += "exit\r\n";
  const std::string tree = std::string(SOURCE_DIRECTORY) + "/";
  for (std::size_t at = shown.find(tree); at != std::string::npos; at = shown.find(tree)) shown.erase(at, tree.size());
  EXPECT_EQ(on_a_screen(shown), session_on_page());
  EXPECT_TRUE(std::filesystem::exists(place.path() + "/air.svg"));
  conditions.arguments = {"air.hvm"};
  EXPECT_EQ(Terminal(conditions).exit_status(), 0);
}

}  // namespace
}  // namespace hvm::testing
