// conformance/comparison.cpp: how the record of a call differs from the one in the table

#include "conformance/comparison.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace hvm::conformance {
namespace {

constexpr std::size_t most_shown = 160;  // bytes of a value in a sentence

bool do_agree(double a, double b, double tolerance) {
  if (std::isinf(tolerance)) return true;
  if (a == b) return tolerance > 0 || std::signbit(a) == std::signbit(b);
  if (std::isinf(a) || std::isinf(b)) return false;  // an infinite bound would let any numbers agree
  return std::abs(a - b) <= tolerance * std::max({1.0, std::abs(a), std::abs(b)});
}

// ---- Texts of operations, in which real numbers may stand

/// A number with a point, an exponent or the name of what is not finite, at the start of `text`; its length, or 0.
std::size_t real_at(std::string_view text, double& x) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), x);
  if (read.ec != std::errc{}) return 0;
  const auto length = static_cast<std::size_t>(read.ptr - text.data());
  return text.substr(0, length).find_first_of(".eEn") == std::string_view::npos ? 0 : length;
}

bool do_agree(std::string_view a, std::string_view b, double tolerance) {
  if (tolerance <= 0) return a == b;
  while (!a.empty() && !b.empty()) {
    double x = 0;
    double y = 0;
    const std::size_t in_a = real_at(a, x);
    const std::size_t in_b = real_at(b, y);
    if (in_a > 0 && in_b > 0) {
      if (!do_agree(x, y, tolerance) && !(std::isnan(x) && std::isnan(y))) return false;
      a.remove_prefix(in_a);
      b.remove_prefix(in_b);
    } else {
      if (a.front() != b.front()) return false;
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  return a.empty() && b.empty();
}

// ---- Values

bool do_agree(const Json& a, const Json& b, double tolerance) {
  if (a.is_number_float() && b.is_number_float()) return do_agree(a.get<double>(), b.get<double>(), tolerance);
  if (a.is_array() && b.is_array())
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](const Json& x, const Json& y) { return do_agree(x, y, tolerance); });
  if (a.is_object() && b.is_object()) {
    if (a.size() != b.size()) return false;
    return std::all_of(a.items().begin(), a.items().end(), [&](const auto& member) {
      return b.contains(member.key()) && do_agree(member.value(), b[member.key()], tolerance);
    });
  }
  // Whole numbers are of two types, since a parser keeps the sign apart.
  const bool are_whole = a.is_number_integer() && b.is_number_integer();
  return (are_whole || a.type() == b.type()) && a == b;
}

std::string shown(const Json& value) {
  std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (text.size() > most_shown) text = text.substr(0, most_shown) + "...";
  return text;
}

std::string shown_value(const Json& value) {
  if (value.is_null()) return "nil";
  if (!value.is_object() || value.size() != 1) return shown(value);
  return value.items().begin().key() + " " + shown(value.items().begin().value());
}

std::string outcome_in_words(const Json& outcome) {
  if (outcome.contains("value"))
    return outcome["value"].is_null() ? "gives nothing" : "gives " + shown_value(outcome["value"]);
  if (outcome.contains("throws")) return "throws " + outcome["throws"].get<std::string>();
  if (outcome.contains("error")) return "cannot be made: " + outcome["error"].get<std::string>();
  return outcome.contains("fails") ? "fails" : shown(outcome);
}

class Differences {
 public:
  explicit Differences(double tolerance) : tolerance_(tolerance) {}

  std::vector<std::string> of(const Json& expected, const Json& got) {
    outcomes(expected.at("outcome"), got.at("outcome"));
    changes(expected.value("changes", Json::object()), got.value("changes", Json::object()));
    calls(expected.at("calls"), got.at("calls"));
    return std::move(sentences_);
  }

 private:
  void outcomes(const Json& expected, const Json& got) {
    if (!do_agree(expected, got, tolerance_))
      sentences_.push_back(
          fmt::format("it {}; the table has: it {}", outcome_in_words(got), outcome_in_words(expected)));
  }

  void changes(const Json& expected, const Json& got) {
    for (const auto& [name, value] : expected.items()) {
      if (!got.contains(name))
        sentences_.push_back(
            fmt::format("{} stays what it was; the table has: it becomes {}", name, shown_value(value)));
      else if (!do_agree(value, got[name], tolerance_))
        sentences_.push_back(fmt::format("{} becomes {}; the table has: it becomes {}", name, shown_value(got[name]),
                                         shown_value(value)));
    }
    for (const auto& [name, value] : got.items())
      if (!expected.contains(name))
        sentences_.push_back(
            fmt::format("{} becomes {}; the table has: it stays what it was", name, shown_value(value)));
  }

  void calls(const Json& expected, const Json& got) {
    if (expected.size() != got.size()) {
      sentences_.push_back(
          fmt::format("{} calls of the module are made; the table has {}", got.size(), expected.size()));
      return;
    }
    for (std::size_t i = 0; i < expected.size(); ++i) call(expected[i], got[i]);
  }

  void call(const Json& expected, const Json& got) {
    operations(expected.at("operations"), got.at("operations"));
    const Json none;
    const Json& returned = expected.contains("returned") ? expected["returned"] : none;
    const Json& got_returned = got.contains("returned") ? got["returned"] : none;
    // Where one of them throws, or fails and the other does not, the outcomes differ already.
    if (returned != got_returned && sentences_.empty())
      sentences_.push_back(fmt::format("it returns {}; the table has {}", shown(got_returned), shown(returned)));
    if (got.contains("result") && !expected.contains("result"))
      sentences_.push_back(fmt::format("it fails and still writes its result record: {}", shown(got["result"])));
  }

  /// The first operation that differs: those after it may differ because of it.
  void operations(const Json& expected, const Json& got) {
    const std::size_t both = std::min(expected.size(), got.size());
    for (std::size_t i = 0; i < both; ++i) {
      const auto& words = expected[i].get_ref<const std::string&>();
      const auto& got_words = got[i].get_ref<const std::string&>();
      if (do_agree(std::string_view(words), std::string_view(got_words), tolerance_)) continue;
      sentences_.push_back(fmt::format("its operation {} is {}; the table has {}", i + 1, got_words, words));
      return;
    }
    if (got.size() > both)
      sentences_.push_back(fmt::format("it performs {} after the {} operations of the table",
                                       got[both].get_ref<const std::string&>(), both));
    if (expected.size() > both)
      sentences_.push_back(fmt::format("it performs {} operations; the table has {} after them", both,
                                       expected[both].get_ref<const std::string&>()));
  }

  double tolerance_;
  std::vector<std::string> sentences_;
};

}  // namespace

std::vector<std::string> differences(const Json& expected, const Json& got, double tolerance) {
  return Differences(tolerance).of(expected, got);
}

}  // namespace hvm::conformance
