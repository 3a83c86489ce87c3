// script/array_text.cpp: an array as text, through its methods

#include "script/array_text.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <string_view>

namespace hvm {
namespace {

using Extents = std::vector<std::int64_t>;

constexpr std::int64_t most_shown = 1000;
constexpr std::size_t most_axes = 64;
constexpr std::size_t line_width = 100;

std::optional<std::string> dumped(const ModuleCaller& caller, Value& object) {
  std::vector<Value> none;
  Value text;
  if (!call_method(caller, object, "dump", none, text) || !text.is_string()) return std::nullopt;
  return std::string(text_of(text.record()));
}

/// The elements in the text of `dump`, which stand between brackets, commas and blanks.
std::vector<std::string_view> tokens_of(std::string_view text) {
  constexpr std::string_view between = "[], \n";
  std::vector<std::string_view> tokens;
  for (std::size_t at = text.find_first_not_of(between); at != std::string_view::npos;) {
    const std::size_t end = std::min(text.find_first_of(between, at), text.size());
    tokens.push_back(text.substr(at, end - at));
    at = text.find_first_not_of(between, end);
  }
  return tokens;
}

/// An element of a dump with six significant digits when it is a real.
std::string brief_token(std::string_view token) {
  const bool is_real = token.find_first_of(".eE") != std::string_view::npos && token != "true" && token != "false";
  double x = 0;
  const auto read = std::from_chars(token.data(), token.data() + token.size(), x);
  const bool is_number = read.ec == std::errc{} && read.ptr == token.data() + token.size();
  return is_real && is_number ? real_text(x, Detail::brief) : std::string(token);
}

/// The positions on an axis that are shown; -1 stands for those between head and tail.
Extents shown_positions(std::int64_t extent, std::int64_t edge) {
  Extents positions;
  for (std::int64_t i = 0; i < extent; ++i) {
    if (extent > 2 * edge && i == edge) {
      positions.push_back(-1);
      i = extent - edge;
    }
    positions.push_back(i);
  }
  return positions;
}

/// How many positions of every axis are shown at each end, so that the whole stays below the limit.
std::int64_t edge_of(const Extents& extents) {
  const auto shown = [&](std::int64_t edge) {
    std::int64_t product = 1;
    for (const std::int64_t extent : extents) {
      product *= std::min(extent, 2 * edge);
      if (product > most_shown) break;
    }
    return product;
  };
  for (std::int64_t edge = 3; edge > 1; --edge)
    if (shown(edge) <= most_shown) return edge;
  return 1;
}

using ElementText = std::function<std::string(const Extents& at)>;

/// Writes the nested brackets of an array, row by row.
class BracketWriter {
 public:
  /// `edge` 0 shows every element.
  BracketWriter(const Extents& extents, std::int64_t edge, const ElementText& element)
      : extents_(extents), edge_(edge), element_(element), at_(extents.size()) {}

  /// In one line when it fits, otherwise with a line for every row of the last axis.
  std::string text() {
    axis(0, false);
    if (out_.size() <= line_width || extents_.size() < 2) return std::move(out_);
    out_.clear();
    axis(0, true);
    return "\n" + out_;
  }

 private:
  void axis(std::size_t number, bool in_lines) {
    if (number == extents_.size()) return void(out_ += element_(at_));
    const std::int64_t extent = extents_[number];
    const Extents positions = shown_positions(extent, edge_ > 0 ? edge_ : extent);
    out_ += '[';
    for (std::size_t i = 0; i < positions.size(); ++i) {
      if (i > 0) separator(number, in_lines);
      at_[number] = positions[i];
      positions[i] < 0 ? void(out_ += "...") : axis(number + 1, in_lines);
    }
    out_ += ']';
  }

  void separator(std::size_t number, bool in_lines) {
    const bool has_rows = in_lines && number + 1 < extents_.size();
    out_ += has_rows ? ",\n" + std::string(number + 1, ' ') : ", ";
  }

  const Extents& extents_;
  std::int64_t edge_;
  const ElementText& element_;
  Extents at_;
  std::string out_;
};

std::optional<std::string> element_text(const ModuleCaller& caller, Value& object, const Extents& at) {
  std::vector<Value> indices;
  for (const std::int64_t index : at) indices.emplace_back(static_cast<int>(index));
  // A list without indices is declined; one index reaches the element of an array without axes.
  if (indices.empty()) indices.emplace_back(0);
  const auto element = read_element(caller, object, indices);
  if (!element || !element->is_number()) return std::nullopt;
  HostValue record = element->record();
  // The elements of a bool array come as the integers 0 and 1, and are shown as its dump shows them.
  if (array_kind(type_name_of(object_of(object.record()))) == "bool") return HVM_AsBool(&record) ? "true" : "false";
  if (element->tag() == ValueTag::real) return real_text(HVM_AsDouble(&record), Detail::brief);
  return fmt::format("{}", HVM_AsInt64(&record));
}

std::int64_t offset_of(const Extents& extents, const Extents& at) {
  std::int64_t offset = 0;
  for (std::size_t i = 0; i < extents.size(); ++i) offset = offset * extents[i] + at[i];
  return offset;
}

/// Elements from the text of `dump`. What it can only show as null (NaN, infinities) is read where the type lets it.
std::string text_by_dump(const ModuleCaller& caller, Value& object, const Extents& extents, std::int64_t count,
                         std::int64_t edge) {
  const std::string dump = dumped(caller, object).value_or("");
  const std::vector<std::string_view> tokens = tokens_of(dump);
  if (static_cast<std::int64_t>(tokens.size()) != count) return dump;
  const ElementText element = [&](const Extents& at) {
    const std::string_view token = tokens[static_cast<std::size_t>(offset_of(extents, at))];
    if (token == "null") return element_text(caller, object, at).value_or("null");
    return brief_token(token);
  };
  return BracketWriter(extents, edge, element).text();
}

std::string text_by_reading(const ModuleCaller& caller, Value& object, const Extents& extents, std::int64_t edge) {
  const ElementText element = [&](const Extents& at) { return element_text(caller, object, at).value_or("?"); };
  return BracketWriter(extents, edge, element).text();
}

std::string elements_text(const ModuleCaller& caller, Value& object, const Extents& extents) {
  std::int64_t count = 1;
  for (const std::int64_t extent : extents) count *= extent;
  if (count <= most_shown) return text_by_dump(caller, object, extents, count, 0);
  const std::int64_t edge = edge_of(extents);
  const bool is_readable = element_text(caller, object, Extents(extents.size(), 0)).has_value();
  return is_readable ? text_by_reading(caller, object, extents, edge)
                     : text_by_dump(caller, object, extents, count, edge);
}

}  // namespace

std::string array_kind(const std::string& type_name) {
  constexpr std::string_view front = "$x";
  constexpr std::string_view back = "array";
  const bool is_array = type_name.size() > front.size() + back.size() && type_name.rfind(front, 0) == 0 &&
                        type_name.compare(type_name.size() - back.size(), back.size(), back) == 0;
  return is_array ? type_name.substr(front.size(), type_name.size() - front.size() - back.size()) : type_name;
}

std::string array_text(const ModuleCaller& caller, Value& object, Detail detail) {
  const std::string name = type_name_of(object_of(object.record()));
  const auto extents = shape_of(caller, object);
  if (detail == Detail::full || !extents || extents->size() > most_axes) {
    const auto text = dumped(caller, object);
    return text ? *text : fmt::format("<{}>", name);
  }
  const std::string elements = elements_text(caller, object, *extents);
  const char* blank = elements.empty() || elements.front() == '\n' ? "" : " ";
  return fmt::format("{}({}){}{}", array_kind(name), fmt::join(*extents, ", "), blank, elements);
}

}  // namespace hvm
