// refhost/script/picture/drawing_test.cpp: figures as commands, as text and as files

#include "script/picture/drawing.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>

#include "script/picture/gnuplot.hpp"

namespace hvm {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

Figure line(std::vector<double> y) {
  Figure figure;
  Curve curve;
  for (std::size_t i = 0; i < y.size(); ++i) curve.x.push_back(static_cast<double>(i));
  curve.y = std::move(y);
  figure.curves = {curve};
  return figure;
}

Figure matrix(std::size_t rows, std::size_t columns, std::vector<double> values) {
  Figure figure;
  figure.form = Figure::Form::matrix;
  figure.rows = rows;
  figure.columns = columns;
  figure.cells = {rows, columns, std::move(values)};
  return figure;
}

std::string error_of(const Figure& figure) {
  try {
    return "drawn: " + drawn_as_text(figure, {});
  } catch (const PictureError& error) {
    return error.what();
  }
}

/// Another search path for programs, for the time of a scope.
class SearchPath {
 public:
  explicit SearchPath(const char* path) : old_(std::getenv("PATH")) { setenv("PATH", path, 1); }
  ~SearchPath() { setenv("PATH", old_.c_str(), 1); }

 private:
  std::string old_;
};

TEST(Drawing, AsText_FitsIntoItsSize) {
  Figure figure = line({1, 3, 2});
  figure.title = "three numbers";
  figure.x_label = "position";
  const std::string text = drawn_as_text(figure, {50, 15});
  EXPECT_THAT(text, AllOf(HasSubstr("three numbers"), HasSubstr("position"), HasSubstr("*")));
  std::size_t lines = 1;
  std::size_t width = 0;
  for (const char c : text) {
    width = c == '\n' ? 0 : width + 1;
    EXPECT_LE(width, 50U);
    lines += c == '\n' ? 1 : 0;
  }
  EXPECT_LE(lines, 15U);
  EXPECT_GE(lines, 10U);
}

TEST(Drawing, AsText_TakesAnySize) {
  for (const TextSize size : {TextSize{1, 1}, TextSize{-5, 0}, TextSize{100000, 100000}})
    EXPECT_THAT(drawn_as_text(line({1, 3, 2}), size), HasSubstr("*"));
  EXPECT_THAT(drawn_as_text(matrix(2, 2, {1, 2, 3, 4}), {1, 1}), HasSubstr("@"));
}

TEST(Drawing, NamesCurves) {
  Figure figure = line({1, 3, 2});
  figure.curves.push_back(figure.curves.front());
  figure.curves.front().name = "alpha";
  figure.curves.back().name = "beta";
  EXPECT_THAT(drawn_as_text(figure, {}), AllOf(HasSubstr("alpha"), HasSubstr("beta")));
}

TEST(Drawing, RefusesDataWithoutAFinitePoint) {
  EXPECT_EQ(error_of(line({})), "there is no finite point to draw");
  EXPECT_EQ(error_of(line({nan, infinity})), "there is no finite point to draw");
  EXPECT_EQ(error_of(line({1e308, -1e308})), "numbers beyond 1e300 cannot be drawn");
  EXPECT_EQ(error_of(matrix(0, 3, {})), "there is no finite point to draw");
  EXPECT_EQ(error_of(matrix(1, 2, {nan, nan})), "there is no finite point to draw");
}

TEST(Drawing, DrawsOneNumberAndGaps) {
  EXPECT_THAT(error_of(line({5})), AllOf(StartsWith("drawn: "), HasSubstr("5")));
  EXPECT_THAT(error_of(line({0})), StartsWith("drawn: "));
  EXPECT_THAT(error_of(line({nan, 2, infinity, 3, -infinity})), AllOf(StartsWith("drawn: "), HasSubstr("*")));
  EXPECT_THAT(error_of(line({1e299, -1e299})), HasSubstr("*"));
  EXPECT_THAT(error_of(line({4e-320, 8e-320})), StartsWith("drawn: "));
}

TEST(Drawing, OfAMatrix_IsACharacterOrTwoForEachElement) {
  EXPECT_EQ(drawn_as_text(matrix(2, 3, {0, 1, 2, 3, 4, 9}), {}),
            "+------+\n|  ..::|\n|--==@@|\n+------+\n\" \" 0  \"@\" 9");
  EXPECT_EQ(drawn_as_text(matrix(1, 2, {nan, 7}), {}), "+----+\n|??++|\n+----+\n\"+\" 7");
  Figure titled = matrix(1, 20, std::vector<double>(20, 1));
  titled.title = "ones";
  EXPECT_EQ(drawn_as_text(titled, {32, 20}),
            "ones\n+--------------------+\n|++++++++++++++++++++|\n+--------------------+\n\"+\" 1");
}

TEST(Drawing, ForAFile_GivesItsForm) {
  Figure figure = line({1, 3, 2});
  figure.title = "Größe <&>";
  const std::string svg = drawn_for_file(figure, {Canvas::Form::svg, 640, 400});
  EXPECT_THAT(svg, AllOf(HasSubstr("<svg"), HasSubstr("width=\"640\""), HasSubstr("Größe &lt;&amp;")));
  EXPECT_THAT(drawn_for_file(figure, {Canvas::Form::png, 640, 400}), StartsWith("\x89PNG"));
  EXPECT_THAT(drawn_for_file(figure, {Canvas::Form::pdf, 640, 400}), StartsWith("%PDF"));
  EXPECT_THAT(drawn_for_file(matrix(2, 2, {1, 2, nan, 4}), {Canvas::Form::svg, 640, 400}), HasSubstr("<svg"));
}

TEST(Drawing, RunsNothingOfTheTexts) {
  const std::filesystem::path trap = std::filesystem::temp_directory_path() / "hvm_drawing_trap";
  std::filesystem::remove(trap);
  const std::string command = "touch " + trap.string();
  for (const std::string& text :
       {"`" + command + "`", "$(" + command + ")", "'; system '" + command + "' #", "\"; system \"" + command + "\" #",
        "'\n!" + command + "\n'", "\"\n!" + command, "\\\"; system(\"" + command + "\") #", "end\n!" + command,
        "@x\n; !" + command + "\\", "\xFF'\x01; !" + command}) {
    Figure figure = line({1, 3, 2});
    figure.title = figure.x_label = figure.y_label = figure.curves[0].name = text;
    EXPECT_THAT(error_of(figure), StartsWith("drawn: "));
    EXPECT_FALSE(std::filesystem::exists(trap)) << text;
    figure.form = Figure::Form::bars;
    figure.bar_width = 1;
    EXPECT_THAT(drawn_for_file(figure, {Canvas::Form::svg, 300, 200}), HasSubstr("<svg"));
    EXPECT_FALSE(std::filesystem::exists(trap)) << text;
  }
}

TEST(Drawing, ShowsTextsAsTheyAre) {
  Figure figure = line({1, 3, 2});
  figure.title = "'a' \"b\" `c` {d}_e^f %g \\h $i @j #k";
  EXPECT_THAT(drawn_as_text(figure, {}), HasSubstr(figure.title));
  figure.title = "$1 of \"20\", #3 %45 \\6 789";
  EXPECT_THAT(drawn_as_text(figure, {}), HasSubstr(figure.title));
  figure.title = "one\ntwo\x01\xFF";
  EXPECT_THAT(drawn_as_text(figure, {}), HasSubstr("one two ?"));
  figure.title = std::string(100'000, 'x');
  EXPECT_THAT(drawn_as_text(figure, {}), Not(HasSubstr(std::string(300, 'x'))));
}

TEST(Gnuplot, ThatIsMissing_IsNamedWithItsPackage) {
  const SearchPath path("/nonexistent");
  EXPECT_EQ(error_of(line({1, 2})), "it draws with gnuplot, which is not installed (Debian's package gnuplot-nox)");
}

TEST(Gnuplot, ThatFails_SaysWhy) {
  try {
    output_of_gnuplot("nonsense\n");
    FAIL();
  } catch (const PictureError& error) {
    EXPECT_THAT(error.what(), AllOf(StartsWith("gnuplot fails: "), HasSubstr("invalid command")));
  }
}

}  // namespace
}  // namespace hvm
