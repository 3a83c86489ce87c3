// object/dump_text.cpp: the writer behind `dump`
//
// The JSON library's own serializer needs a tree of all elements and reads past its buffer of blanks from an indent of
// 1025 on. Elements are therefore written straight into the text. Floating-point numbers are written by the library's
// own formatter, so that the bytes are the same. The brackets come from an odometer over the outer axes, so that depth
// needs no stack.

#include "object/dump_text.hpp"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <type_traits>

#include <nlohmann/detail/conversions/to_chars.hpp>

namespace arrayfold {

namespace {

/// The longest text of a scalar: a sign, seventeen digits, a point, an exponent of five, rounded up.
constexpr std::size_t scalar_room = 32;
/// A number is given more room than it takes, so room reaches a little beyond the longest text; `check_size` comes
/// last.
constexpr std::size_t capacity_bound = std::size_t{INT_MAX} + scalar_room;

}  // namespace

DumpText::DumpText(std::size_t expected) { grow(std::min(expected, capacity_bound)); }

void DumpText::grow(std::size_t count) {
  if (count > capacity_bound || size_ + count > capacity_bound) throw std::bad_alloc();
  const std::size_t capacity = std::min(std::max(size_ + count, 2 * capacity_), capacity_bound);
  std::unique_ptr<char[]> larger(new char[capacity]);
  if (size_ > 0) std::memcpy(larger.get(), begin_.get(), size_);
  begin_ = std::move(larger);
  capacity_ = capacity;
}

void DumpText::check_size() const {
  if (size_ > INT_MAX) throw std::bad_alloc();
}

namespace {

/// The usual length of a scalar's text. Floating-point numbers of full length fit without growing: room that is not
/// written costs nothing, while growing copies, and makes the C library give the memory of big texts back to the
/// system.
template <class T>
constexpr std::size_t usual_scalar_room = std::is_floating_point_v<T> ? 20 : 8;

char* write_word(char* out, std::string_view word) { return std::copy(word.begin(), word.end(), out); }

char* write_scalar(char* out, bool x) { return write_word(out, x ? "true" : "false"); }
/// The sign is written without a branch: that of random numbers is mispredicted every other time.
template <class Integer>
char* write_scalar(char* out, Integer x) {
  using Bits = std::make_unsigned_t<Integer>;
  const auto bits = static_cast<Bits>(x);
  const Bits negative = bits >> std::numeric_limits<Integer>::digits;
  const Bits magnitude = (bits ^ (0 - negative)) + negative;
  *out = '-';
  return std::to_chars(out + negative, out + scalar_room, magnitude).ptr;
}
char* write_scalar(char* out, double x) {
  return std::isfinite(x) ? nlohmann::detail::to_chars(out, out + scalar_room, x) : write_word(out, "null");
}

template <class T>
T element_at(const T* elements, std::size_t i) {
  return elements[i];
}
/// A stored truth value is a byte, and true when any bit of it is set.
bool element_at(const bool* elements, std::size_t i) {
  return *static_cast<const unsigned char*>(static_cast<const void*>(elements + i)) != 0;
}

/// The line break before an item, `depth` levels deep; nothing in compact text.
class LineBreak {
 public:
  explicit LineBreak(int indent) : indent_(indent) {}

  std::size_t size(std::size_t depth) const { return indent_ < 0 ? 0 : 1 + static_cast<std::size_t>(indent_) * depth; }
  char* write(char* out, std::size_t depth) const {
    if (indent_ < 0) return out;
    *out++ = '\n';
    const std::size_t blanks = size(depth) - 1;
    std::memset(out, ' ', blanks);
    return out + blanks;
  }

 private:
  int indent_;
};

/// Writes the brackets of nested lists around the items of their innermost level.
class NestedText {
 public:
  /// `extents` have no zero among them. An item takes `item_room` bytes at most, and usually no more than `usual_room`.
  NestedText(const Shape& extents, int indent, std::size_t item_room, std::size_t usual_room)
      : extents_(extents),
        at_(extents.size(), 0),
        break_(indent),
        item_room_(item_room),
        text_(expected_size(usual_room)) {}

  /// `write_item(out, i)` writes the i-th item of all, in row-major order, and returns its end.
  template <class WriteItem>
  DumpText write(WriteItem write_item) {
    const std::size_t levels = extents_.size();
    const std::size_t row = extents_[levels - 1];
    open(0);
    for (std::size_t first = 0;; first += row) {
      write_row(first, row, write_item);
      const std::size_t level = advance();
      close(level);
      if (level == 0) break;
      separate(level);
      open(level);
    }
    text_.check_size();
    return std::move(text_);
  }

 private:
  /// Room for items of the usual size. Throws std::bad_alloc when the text is too long even with items of one byte
  /// each, before anything is written.
  std::size_t expected_size(std::size_t usual_room) const {
    std::size_t items = 1;
    for (const std::size_t extent : extents_)
      if (__builtin_mul_overflow(items, extent, &items)) throw std::bad_alloc();
    // Each item takes at least one byte, a comma and its line break; the outer brackets enclose them all.
    std::size_t minimum = 0;
    const bool too_many = __builtin_mul_overflow(items, 2 + break_.size(extents_.size()), &minimum);
    if (too_many || minimum > INT_MAX - 1 - break_.size(0)) throw std::bad_alloc();
    return minimum + items * usual_room + 2 * extents_.size();
  }

  template <class WriteItem>
  void write_row(std::size_t first, std::size_t count, WriteItem write_item) {
    const std::size_t depth = extents_.size();
    const std::size_t room = 1 + break_.size(depth) + item_room_;
    // Local copies stay in registers: the compiler must otherwise assume that writing text changes the members.
    char* out = write_item(text_.room(item_room_), first);
    const char* end = text_.end();
    for (std::size_t i = 1; i < count; ++i) {
      if (static_cast<std::size_t>(end - out) < room) {
        text_.commit(out);
        out = text_.room(room);
        end = text_.end();
      }
      *out++ = ',';
      out = break_.write(out, depth);
      out = write_item(out, first + i);
    }
    text_.commit(out);
  }

  /// Advances the indices outside the row. Returns the level of the one that advanced, 0 when all have reached their
  /// end.
  std::size_t advance() {
    for (std::size_t level = extents_.size() - 1; level > 0; --level) {
      if (++at_[level - 1] < extents_[level - 1]) return level;
      at_[level - 1] = 0;
    }
    return 0;
  }

  void open(std::size_t from) {
    for (std::size_t level = from; level < extents_.size(); ++level) {
      char* out = text_.room(1 + break_.size(level + 1));
      *out++ = '[';
      text_.commit(break_.write(out, level + 1));
    }
  }

  void close(std::size_t down_to) {
    for (std::size_t level = extents_.size(); level > down_to; --level) {
      char* out = text_.room(1 + break_.size(level - 1));
      out = break_.write(out, level - 1);
      *out++ = ']';
      text_.commit(out);
    }
  }

  void separate(std::size_t depth) {
    char* out = text_.room(1 + break_.size(depth));
    *out++ = ',';
    text_.commit(break_.write(out, depth));
  }

  const Shape extents_;
  Shape at_;
  LineBreak break_;
  std::size_t item_room_;
  DumpText text_;
};

template <class Kind>
DumpText write_dump(const xarray_of<typename Kind::element>& array, int indent) {
  using T = typename Kind::element;
  const T* elements = array.storage().data();
  const auto write_element = [elements](char* out, std::size_t i) {
    return write_scalar(out, element_at(elements, i));
  };
  const auto write_empty_list = [](char* out, std::size_t) { return write_word(out, "[]"); };

  const Shape& extents = array.shape();
  const auto zero = std::find(extents.begin(), extents.end(), 0u);
  const Shape outer(extents.begin(), zero);  // what encloses an item
  const bool has_elements = zero == extents.end();
  if (!outer.empty()) {
    if (has_elements) return NestedText(outer, indent, scalar_room, usual_scalar_room<T>).write(write_element);
    return NestedText(outer, indent, 2, 2).write(write_empty_list);
  }
  DumpText text(scalar_room);
  char* out = text.room(scalar_room);
  text.commit(has_elements ? write_element(out, 0) : write_empty_list(out, 0));
  return text;
}

constexpr auto dump_of_each = [](auto... kind) {
  return KindTable<registered_kinds, DumpFunction>(&write_dump<decltype(kind)>...);
};

}  // namespace

constexpr KindTable<registered_kinds, DumpFunction> dump_functions = for_kinds(registered_kinds{}, dump_of_each);

}  // namespace arrayfold
