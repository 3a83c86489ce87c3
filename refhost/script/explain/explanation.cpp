// script/explain/explanation.cpp: the whole story of an error or a warning

#include "script/explain/explanation.hpp"

#include <string_view>

namespace hvm {
namespace {

void append(std::string& text, std::string_view heading, const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  text.append("  ").append(heading).append("\n");
  for (const std::string& line : lines) text.append("    ").append(line).append("\n");
}

}  // namespace

std::string Explanation::text() const {
  if (!has_details()) return {};
  std::string text = "explanation: " + about + "\n";
  append(text, "arguments", arguments);
  append(text, "what was looked at", considered);
  if (!remedy.empty()) append(text, "what to do", {remedy});
  for (const std::string& note : notes) text.append("  ").append(note).append("\n");
  return text;
}

}  // namespace hvm
