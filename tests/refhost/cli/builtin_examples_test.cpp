// refhost/cli/builtin_examples_test.cpp: the examples that help shows for built-in functions

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

#include "program.hpp"
#include "script/library/builtins.hpp"

namespace hvm::testing {
namespace {

/// Makes a folder the current one as long as it lives.
class CurrentFolder {
 public:
  explicit CurrentFolder(const std::string& path) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~CurrentFolder() { std::filesystem::current_path(before_); }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

 private:
  std::filesystem::path before_;
};

TEST(BuiltinExamples, RunAndPrintWhatTheySay) {
  const Workplace place;
  const CurrentFolder folder(place.path());
  for (const std::string_view name : builtin_names()) {
    const Builtin& builtin = *find_builtin(name);
    EXPECT_NE(builtin.example.find(name), std::string_view::npos) << name;
    place.write("examples/" + std::string(name) + ".hvm", std::string(builtin.example) + "\n");
  }
  const Outcome outcome = run_hvm({"--module", module_path("arrayfold"), "--warnings", "error", "--test", "examples"});
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
}

TEST(BuiltinExamples, ShowTheOptionsOfFunctionsThatHaveSome) {
  for (const std::string_view name : builtin_names()) {
    const Builtin& builtin = *find_builtin(name);
    const bool takes_options = builtin.usage.find("options") != std::string_view::npos;
    EXPECT_EQ(takes_options, !builtin.options.empty()) << name;
  }
}

/// What a failed call says of the options that there are, such as `"title", "x"`.
std::string options_in_error(const std::string& call) {
  const std::string error = run_hvm({"--module", module_path("arrayfold"), "-e", call}).err;
  const std::string words = "there is no option \"none\"; it takes ";
  const std::size_t at = error.find(words);
  EXPECT_NE(at, std::string::npos) << error;
  const std::size_t begin = std::min(error.size(), at + words.size());
  return error.substr(begin, error.find('\n', begin) - begin);
}

TEST(BuiltinExamples, NameEveryOption) {
  const std::pair<const char*, const char*> calls[] = {
      {"plot", "plot([1], [\"none\": 1])"},
      {"plot_points", "plot_points([1], [\"none\": 1])"},
      {"plot_histogram", "plot_histogram([1], [\"none\": 1])"},
      {"plot_matrix", "plot_matrix(xones(2, 2), [\"none\": 1])"},
      {"save_plot", "save_plot(\"a.svg\", [\"none\": 1])"},
      {"read_csv", "read_csv(\"a.csv\", [\"none\": 1])"},
      {"read_csv_array", "read_csv_array(\"a.csv\", [\"none\": 1])"},
      {"write_csv", "write_csv(\"a.csv\", [1], [\"none\": 1])"},
  };
  std::size_t with_options = 0;
  for (const std::string_view name : builtin_names()) with_options += find_builtin(name)->options.empty() ? 0 : 1;
  EXPECT_EQ(with_options, std::size(calls));
  for (const auto& [name, call] : calls) {
    std::istringstream names(options_in_error(call));
    for (std::string option; std::getline(names, option, ' ');) {
      if (option.back() == ',') option.pop_back();
      EXPECT_NE(find_builtin(name)->options.find(option), std::string_view::npos) << name << " " << option;
    }
  }
}

}  // namespace
}  // namespace hvm::testing
