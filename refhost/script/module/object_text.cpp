// script/module/object_text.cpp: an object as text, through its methods

#include "script/module/object_text.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <string_view>

namespace hvm {
namespace {

constexpr std::size_t most_axes = 64;
constexpr std::int64_t most_on_a_screen = 200;  // elements

/// The elements in the text of `dump`, which are separated by brackets, commas and blanks.
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

/// An element of a dump, with six significant digits when it is a floating-point number.
std::string brief_token(std::string_view token) {
  const bool is_real = token.find_first_of(".eE") != std::string_view::npos && token != "true" && token != "false";
  double x = 0;
  const auto read = std::from_chars(token.data(), token.data() + token.size(), x);
  const bool is_number = read.ec == std::errc{} && read.ptr == token.data() + token.size();
  return is_real && is_number ? real_text(x, Detail::brief) : std::string(token);
}

std::int64_t offset_of(const Extents& extents, const Extents& position) {
  std::int64_t offset = 0;
  for (std::size_t i = 0; i < extents.size(); ++i) offset = offset * extents[i] + position[i];
  return offset;
}

/// Arranges elements: the extents, how many positions to show at each end of an axis, the text of an element.
using Arrangement = std::function<std::string(const Extents&, std::int64_t, const ElementText&)>;

/// Elements from the text of `dump`. Those that it can only show as null (NaN, infinities) are read one by one where
/// the type reads elements.
std::string text_by_dump(const ModuleCaller& caller, Value& object, const Extents& extents, std::int64_t count,
                         std::int64_t edge, const Arrangement& arranged) {
  std::string dump = dump_of(caller, object).value_or("");
  const std::vector<std::string_view> tokens = tokens_of(dump);
  if (static_cast<std::int64_t>(tokens.size()) != count) return dump;
  return arranged(extents, edge, [&](const Extents& position) {
    const std::string_view token = tokens[static_cast<std::size_t>(offset_of(extents, position))];
    if (token == "null") return element_text(caller, object, position).value_or("null");
    return brief_token(token);
  });
}

std::string text_by_reading(const ModuleCaller& caller, Value& object, const Extents& extents, std::int64_t edge,
                            const Arrangement& arranged) {
  return arranged(extents, edge,
                  [&](const Extents& position) { return element_text(caller, object, position).value_or("?"); });
}

/// Of more than `most` elements it shows the head and the tail of every axis.
std::string elements_text(const ModuleCaller& caller, Value& object, const Extents& extents, std::int64_t most,
                          const Arrangement& arranged) {
  const std::int64_t count = element_count(extents);
  if (count <= most) return text_by_dump(caller, object, extents, count, 0, arranged);
  const std::int64_t edge = edge_of(extents);
  const bool is_readable = element_text(caller, object, Extents(extents.size(), 0)).has_value();
  return is_readable ? text_by_reading(caller, object, extents, edge, arranged)
                     : text_by_dump(caller, object, extents, count, edge, arranged);
}

/// The kind and shape with what `arranged` makes of the elements; no value for an object that is no array.
std::optional<std::string> text_of_array(const ModuleCaller& caller, Value& object, std::int64_t most,
                                         const Arrangement& arranged) {
  const auto extents = shape_of(caller, object);
  if (!extents || extents->size() > most_axes) return std::nullopt;
  const std::string elements = elements_text(caller, object, *extents, most, arranged);
  const char* blank = elements.empty() || elements.front() == '\n' ? "" : " ";
  return fmt::format("{}({}){}{}", kind_of_array(object).value_or(type_name_of(object_of(object.record()))),
                     fmt::join(*extents, ", "), blank, elements);
}

std::string text_of_object(const ModuleCaller& caller, Value& object, Detail detail) {
  if (detail == Detail::brief)
    if (auto text = text_of_array(caller, object, most_shown, bracketed)) return *std::move(text);
  return dump_of(caller, object).value_or(fmt::format("<{}>", type_name_of(object_of(object.record()))));
}

}  // namespace

ObjectText object_text(const ModuleCaller& caller, const ArrayChecks& checks, Detail detail) {
  return [caller, &checks, detail](std::string& out, const HostValue& record) {
    Value object = Value::sharing(record);
    checks.extents(caller, object);
    out += text_of_object(caller, object, detail);
  };
}

std::string aligned_object_text(const ModuleCaller& caller, const ArrayChecks& checks, Value object,
                                std::size_t width) {
  checks.extents(caller, object);
  const auto in_columns = [&](const Extents& extents, std::int64_t edge, const ElementText& element) {
    const std::size_t front =
        kind_of_array(object).value_or("").size() + fmt::format("({}) ", fmt::join(extents, ", ")).size();
    return aligned(extents, edge, element, front, width);
  };
  if (auto text = text_of_array(caller, object, most_on_a_screen, in_columns)) return *std::move(text);
  return text_of_object(caller, object, Detail::full);
}

}  // namespace hvm
