// cli/conformance_process.cpp: what the process of a call or a script hands on to the one that made it

#include "cli/conformance_process.hpp"

#include <fmt/format.h>
#include <signal.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "cli/safe_text.hpp"
#include "cli/streams.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

// A control character begins each: `print` of a script writes none there unless it wants to.
constexpr std::string_view mark_of_preparation = "\x02prepared";
constexpr std::string_view mark_of_line = "\x02=";
constexpr std::string_view mark_of_difference = "\x02:";
constexpr std::string_view mark_of_reason = "\x02?";
constexpr std::string_view mark_of_end = "\x02.";

/// Begins a new line, whatever the module has written.
void put_line(std::string_view mark, const std::string& text = {}) {
  std::string line;
  for (const char c : safe_text(text)) line += c == '\n' ? std::string("\\n") : std::string(1, c);
  put(fmt::format("\n{}{}\n", mark, line));
}

}  // namespace

void hand_on_line(const std::string& line) {
  put_line(mark_of_line, line);
  finish_output();
}

void hand_on_preparation() {
  put_line(mark_of_preparation);
  finish_output();
}

bool hand_on_differences(const std::vector<std::string>& differences) {
  for (const std::string& difference : differences) put_line(mark_of_difference, difference);
  put_line(mark_of_end);
  finish_output();
  return differences.empty();
}

bool hand_on_reason(const std::string& reason) {
  put_line(mark_of_reason, reason);
  put_line(mark_of_end);
  finish_output();
  return false;
}

HandedOn handed_on(const TestProcess& process) {
  std::string output;
  process.read_output([&](std::string_view piece) { output += piece; });
  HandedOn handed;
  for (std::size_t at = 0; at < output.size();) {
    const std::size_t end = std::min(output.find('\n', at), output.size());
    const std::string_view line = std::string_view(output).substr(at, end - at);
    if (line == mark_of_preparation) handed.is_prepared = true;
    if (begins_with(line, mark_of_line)) {
      handed.line = line.substr(mark_of_line.size());
      handed.is_prepared = false;
    }
    if (line == mark_of_end) handed.is_whole = true;
    if (begins_with(line, mark_of_difference)) handed.differences.emplace_back(line.substr(mark_of_difference.size()));
    if (begins_with(line, mark_of_reason)) handed.reason = line.substr(mark_of_reason.size());
    at = end + 1;
  }
  // What happens after the end, as in the module's own last acts, counts too.
  if (process.how_it_ended().kind == TestEnd::Kind::ended_by_signal) handed.is_whole = false;
  return handed;
}

std::string words_of_end(const TestEnd& end, double time_limit) {
  if (end.kind != TestEnd::Kind::ended_by_signal) return "it ends the process";
  if (end.signal == SIGALRM) return fmt::format("it takes longer than {} s", time_limit);
  return fmt::format("it ends the process by signal {} ({})", end.signal, strsignal(end.signal));
}

}  // namespace hvm
