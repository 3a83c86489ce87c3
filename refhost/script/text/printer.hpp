// script/text/printer.hpp: any value as text

#pragma once

#include <limits>
#include <string>

#include "kernel/kernel.hpp"
#include "script/text/number_text.hpp"

namespace hvm {

/// Writes values as text; the text of an object comes from `object_text`.
class Printer {
 public:
  Printer(Detail detail, ObjectText object_text) : detail_(detail), object_text_(std::move(object_text)) {}

  /// A string as it is, everything else as in a table. Tables are written `[1, "a": 2]`; a table inside itself is
  /// `[...]`. Does not recurse, however deep the tables are. Throws what `object_text` throws.
  std::string text(const Value& value) const;
  /// As `text`, but with strings in quotation marks.
  std::string text_in_table(const Value& value) const;
  /// As `text_in_table`, for a screen: a long string ends with `...` and its number of characters, a long table with
  /// `...` and its number of entries. A string may have this many characters, and the text of a table five times as
  /// many.
  std::string shortened_text(const Value& value, std::size_t most_characters = 400) const;

 private:
  /// How long a text may become.
  struct Limits {
    std::size_t string = std::numeric_limits<std::size_t>::max();  // in characters
    std::size_t table = std::numeric_limits<std::size_t>::max();   // in bytes
  };

  std::string text_in_table(const Value& value, const Limits& limits) const;
  void append_leaf(std::string& out, const HostValue& record, const Limits& limits) const;
  std::string table(const HostHash* outermost, const Limits& limits) const;

  Detail detail_;
  ObjectText object_text_;
};

}  // namespace hvm
