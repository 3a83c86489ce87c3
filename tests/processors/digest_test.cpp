// processors/digest_test.cpp: every target that this processor has computes the same

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// The lines that the program prints. The test fails when its run does.
std::vector<std::string> lines_of_program(const std::string& arguments) {
  std::FILE* const pipe = popen(("'" DIGEST_PROGRAM "' " + arguments).c_str(), "r");
  std::vector<std::string> lines;
  std::array<char, 4096> line;
  while (pipe != nullptr && std::fgets(line.data(), line.size(), pipe)) lines.emplace_back(line.data());
  EXPECT_TRUE(pipe != nullptr && pclose(pipe) == 0) << "the program fails with " << arguments;
  return lines;
}

bool is_of_fused_products(const std::string& line) { return line.find(", fused products\n") != std::string::npos; }

TEST(Digests, OfEveryTarget_AreTheSame) {
  const auto targets = lines_of_program("--targets");
  ASSERT_FALSE(targets.empty());
  const auto all = lines_of_program(targets.front());
  EXPECT_GT(all.size(), 60u);
  auto others = all;
  others.erase(std::remove_if(others.begin(), others.end(), is_of_fused_products), others.end());
  for (const std::string& target : targets) {
    const bool fuses = target == "NEON\n" || target.rfind("AVX", 0) == 0;
    EXPECT_EQ(lines_of_program(target), fuses ? all : others) << target;
  }
}

TEST(Digests, OfTheBestTarget_AreThoseWithoutAChoice) {
  EXPECT_EQ(lines_of_program(""), lines_of_program(lines_of_program("--targets").at(0)));
}

TEST(Digests, OfATargetThatTheProcessorLacks_AreAnError) {
  std::FILE* const pipe = popen("'" DIGEST_PROGRAM "' NONE 2>&1", "r");
  std::array<char, 4096> line{};
  ASSERT_TRUE(pipe != nullptr && std::fgets(line.data(), line.size(), pipe));
  EXPECT_STREQ(line.data(), "processor_digest: this processor does not have the target NONE\n");
  EXPECT_NE(pclose(pipe), 0);
}

}  // namespace
