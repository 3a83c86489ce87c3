// second_host/values.cpp: records, text and objects

#include "second_host/values.hpp"

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

#include "second_host/tables.hpp"

namespace second_host {

using arrayfold::load;
using arrayfold::store;

Live live;

// ---- Choices

unsigned choice(unsigned count) {
  static std::uint64_t state = [] {
    const char* seed = std::getenv("SECOND_HOST_SEED");
    return 0x9E3779B97F4A7C15U + (seed == nullptr ? 0 : std::strtoull(seed, nullptr, 10)) * 0xBF58476D1CE4E5B9U;
  }();
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return static_cast<unsigned>((state >> 32) % count);
}

void give_up(const std::string& reason) {
  std::fprintf(stderr, "second host: %s\n", reason.c_str());
  std::abort();
}

// ---- Memory

namespace {

constexpr int nonsense = 0xA5;
constexpr int freed = 0xDB;

}  // namespace

void spoil(void* bytes, std::size_t size) { std::memset(bytes, nonsense, size); }

void* take(std::size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) return nullptr;
  spoil(block, size);
  ++live.blocks;
  return block;
}

void give_back(void* block) {
  if (block == nullptr) return;
  std::memset(block, freed, malloc_usable_size(block));
  std::free(block);
  --live.blocks;
}

// ---- Numbers

namespace {

template <class T>
HostValue scalar(ValueTag tag, T x) {
  HostValue record;
  spoil(&record, sizeof record);
  record.tag = tag;
  store<T>(record.payload, x);
  record.lifetime = Lifetime::temporary;
  record.rest[0] = std::byte{0};
  return record;
}

std::int64_t backwards(std::int64_t x) {
  return static_cast<std::int64_t>(__builtin_bswap64(static_cast<std::uint64_t>(x)));
}

template <class Integer>
Integer truncated(double x) {
  using Limits = std::numeric_limits<Integer>;
  constexpr auto minimum = static_cast<double>(Limits::min());
  if (std::isnan(x)) return 0;
  if (x < minimum) return Limits::min();
  return x >= -minimum ? Limits::max() : static_cast<Integer>(x);
}

bool is_real_tag(ValueTag tag) { return tag == ValueTag::real || tag == single_tag; }

template <class Integer>
Integer read_integer(const HostValue& value) {
  if (is_real_tag(value.tag)) return truncated<Integer>(as_real(value));
  if (value.tag == ValueTag::integer) return load<std::int32_t>(value.payload);
  if (value.tag == ValueTag::integer64) return static_cast<Integer>(load<std::int64_t>(value.payload));
  if (value.tag == truth_tag) return load<std::uint8_t>(value.payload);
  if (value.tag == short_tag) return load<std::int16_t>(value.payload);
  if (value.tag == backward_tag) return static_cast<Integer>(backwards(load<std::int64_t>(value.payload)));
  return 0;
}

template <class T>
bool holds(std::int64_t x) {
  return x >= std::numeric_limits<T>::min() && x <= std::numeric_limits<T>::max();
}

/// Whether the number is whole, of 32 bits and no negative zero, so that every tag reads alike.
bool is_small_whole(const HostValue& number) {
  if (!is_real_tag(number.tag)) return holds<std::int32_t>(as_integer64(number));
  const double x = as_real(number);
  return x == std::trunc(x) && std::abs(x) <= std::numeric_limits<std::int32_t>::max() && !(x == 0 && std::signbit(x));
}

}  // namespace

HostValue nil(Lifetime lifetime) {
  HostValue record = scalar<std::int64_t>(ValueTag::nil, 0);
  spoil(record.payload, sizeof record.payload);
  record.lifetime = lifetime;
  return record;
}
HostValue integer(std::int32_t x) { return scalar(ValueTag::integer, x); }
HostValue integer64(std::int64_t x) { return scalar(ValueTag::integer64, x); }
HostValue real(double x) { return scalar(ValueTag::real, x); }

bool is_number(const HostValue& value) {
  constexpr ValueTag tags[] = {ValueTag::integer, ValueTag::real, ValueTag::integer64, truth_tag,
                               short_tag,         single_tag,     backward_tag};
  return std::find(std::begin(tags), std::end(tags), value.tag) != std::end(tags);
}

std::int64_t as_integer64(const HostValue& value) { return read_integer<std::int64_t>(value); }
std::int32_t as_integer(const HostValue& value) { return read_integer<std::int32_t>(value); }

double as_real(const HostValue& value) {
  if (value.tag == ValueTag::real) return load<double>(value.payload);
  if (value.tag == single_tag) return static_cast<double>(load<float>(value.payload));
  return static_cast<double>(as_integer64(value));
}

HostValue disguised(const HostValue& number) {
  std::vector<HostValue> forms;
  const double x = as_real(number);
  if (is_real_tag(number.tag) || is_small_whole(number)) {
    forms.push_back(real(x));
    if (static_cast<double>(static_cast<float>(x)) == x) forms.push_back(scalar(single_tag, static_cast<float>(x)));
  }
  if (!is_real_tag(number.tag) || is_small_whole(number)) {
    const std::int64_t whole = as_integer64(number);
    forms.push_back(integer64(whole));
    forms.push_back(scalar(backward_tag, backwards(whole)));
    if (holds<std::int32_t>(whole)) forms.push_back(integer(static_cast<std::int32_t>(whole)));
    if (holds<std::int16_t>(whole)) forms.push_back(scalar(short_tag, static_cast<std::int16_t>(whole)));
    if (whole == 0 || whole == 1) forms.push_back(scalar(truth_tag, static_cast<std::uint8_t>(whole)));
  }
  HostValue form = forms[choice(static_cast<unsigned>(forms.size()))];
  form.rest[0] = static_cast<std::byte>(static_cast<unsigned>(native_tag(number)) + 1);
  return form;
}

ValueTag native_tag(const HostValue& number) {
  const auto kept = static_cast<unsigned>(number.rest[0]);
  return kept == 0 ? number.tag : static_cast<ValueTag>(kept - 1);
}

// ---- Text

namespace {

/// The length of a text, and whether wide text counts as narrow, where records have bytes of the host.
void keep_length(HostValue& value, std::size_t length, bool is_disguise = false) {
  store<std::uint32_t>(value.rest, static_cast<std::uint32_t>(length << 1) | (is_disguise ? 1 : 0));
}
std::size_t kept_length(const HostValue& value) { return load<std::uint32_t>(value.rest) >> 1; }

HostValue text_record(ValueTag tag, const void* characters, bool is_owned) {
  HostValue record = scalar(tag, characters);
  record.owned = is_owned ? 1 + choice(1000) : 0;
  return record;
}

std::string_view converted_characters(const HostValue& value) {
  const std::size_t length = kept_length(value);
  const auto* block = load<const char*>(value.payload);
  return {block + length, length};
}

std::string_view characters_of_record(const HostValue& value) {
  const auto* record = load<const HostStringRecord*>(value.payload);
  return {record->text, static_cast<std::size_t>(record->length.get())};
}

/// The next character of UTF-8, and how many bytes it has; -1 for what is none.
struct Decoded {
  std::int32_t character = -1;
  std::size_t size = 1;
};
Decoded decoded(std::string_view text) {
  const auto byte = [&](std::size_t n) { return static_cast<unsigned char>(text[n]); };
  const unsigned first = byte(0);
  if (first < 0x80) return {static_cast<std::int32_t>(first), 1};
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < size) return {};
  auto character = static_cast<std::int32_t>(first & (0xFFU >> (size + 1)));
  for (std::size_t n = 1; n < size; ++n) {
    if ((byte(n) & 0xC0U) != 0x80) return {};
    character = character << 6 | static_cast<std::int32_t>(byte(n) & 0x3FU);
  }
  constexpr std::int32_t lowest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool is_surrogate = character >= 0xD800 && character < 0xE000;
  if (character < lowest[size] || character > 0x10FFFF || is_surrogate) return {};
  return {character, size};
}

void append_utf8(std::string& text, std::uint32_t character) {
  const auto add = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return add(character);
  if (character < 0x800) {
    add(0xC0U | character >> 6);
  } else {
    if (character < 0x10000) {
      add(0xE0U | character >> 12);
    } else {
      add(0xF0U | character >> 18);
      add(0x80U | (character >> 12 & 0x3FU));
    }
    add(0x80U | (character >> 6 & 0x3FU));
  }
  add(0x80U | (character & 0x3FU));
}

std::string narrowed(std::u16string_view wide) {
  std::string text;
  for (std::size_t n = 0; n < wide.size(); ++n) {
    std::uint32_t character = wide[n];
    const bool is_pair = character >= 0xD800 && character < 0xDC00 && n + 1 < wide.size() && wide[n + 1] >= 0xDC00 &&
                         wide[n + 1] < 0xE000;
    if (is_pair) character = 0x10000U + ((character - 0xD800U) << 10) + (wide[++n] - 0xDC00U);
    append_utf8(text, character);
  }
  return text;
}

}  // namespace

bool widen(std::string_view narrow, std::u16string& wide) {
  wide.clear();
  while (!narrow.empty()) {
    const Decoded next = decoded(narrow);
    if (next.character <= 0) return false;
    narrow.remove_prefix(next.size);
    if (next.character < 0x10000) {
      wide += static_cast<char16_t>(next.character);
    } else {
      wide += static_cast<char16_t>(0xD800 + ((next.character - 0x10000) >> 10));
      wide += static_cast<char16_t>(0xDC00 + ((next.character - 0x10000) & 0x3FF));
    }
  }
  return true;
}

bool is_text(const HostValue& value) {
  return value.tag == ValueTag::string || value.tag == ValueTag::string_record ||
         value.tag == ValueTag::converted_string || value.tag == ValueTag::wide_string;
}

int text_length(const HostValue& value) {
  return static_cast<int>(value.tag == ValueTag::string_record ? characters_of_record(value).size()
                                                               : kept_length(value));
}

HostValue text(std::string_view characters, TextForm form) {
  const std::size_t length = characters.size();
  const auto write = [&](void* place, bool terminated) {
    auto* bytes = static_cast<char*>(place);
    std::copy(characters.begin(), characters.end(), bytes);
    if (terminated) bytes[length] = '\0';
  };
  if (form == TextForm::wide) {
    std::u16string wide;
    if (widen(characters, wide)) return wide_text(wide, true);
    form = TextForm::string;
  }
  if (form == TextForm::string_record) {
    auto* block = static_cast<char*>(take(offsetof(HostStringRecord, text) + length + 1));
    if (block == nullptr) return nil();
    store<std::int32_t>(block + offsetof(HostStringRecord, length), static_cast<std::int32_t>(length));
    write(block + offsetof(HostStringRecord, text), true);
    return text_record(ValueTag::string_record, block, true);
  }
  // The converted form begins with the characters in another shape, so that its payload is not their address.
  const bool is_converted = form == TextForm::converted;
  auto* block = static_cast<char*>(take((is_converted ? 2 : 1) * length + 1));
  if (block == nullptr) return nil();
  write(is_converted ? block + length : block, true);
  HostValue record = text_record(is_converted ? ValueTag::converted_string : ValueTag::string, block, true);
  keep_length(record, length);
  return record;
}

HostValue wide_text(std::u16string_view characters, bool is_disguise) {
  const std::size_t bytes = characters.size() * sizeof(char16_t);
  void* block = take(bytes);  // without a terminator
  if (block == nullptr) return nil();
  if (bytes > 0) std::memcpy(block, characters.data(), bytes);
  HostValue record = text_record(ValueTag::wide_string, block, true);
  keep_length(record, characters.size(), is_disguise);
  return record;
}

HostValue literal(std::string_view characters) {
  HostValue record = text_record(ValueTag::string, characters.data(), false);
  keep_length(record, characters.size());
  return record;
}

HostValue wide_literal(std::u16string_view characters, bool is_disguise) {
  HostValue record = text_record(ValueTag::wide_string, characters.data(), false);
  keep_length(record, characters.size(), is_disguise);
  return record;
}

std::string_view narrow_characters(const HostValue& value) {
  switch (value.tag) {
    case ValueTag::string:
      return {load<const char*>(value.payload), kept_length(value)};
    case ValueTag::string_record:
      return characters_of_record(value);
    case ValueTag::converted_string:
      return converted_characters(value);
    default:
      return {};
  }
}

std::u16string_view wide_characters(const HostValue& value) {
  if (value.tag != ValueTag::wide_string) return {};
  return {load<const char16_t*>(value.payload), kept_length(value)};
}

bool is_disguised_text(const HostValue& value) {
  return value.tag == ValueTag::wide_string && (load<std::uint32_t>(value.rest) & 1) != 0;
}

std::string utf8_of(const HostValue& value) {
  return value.tag == ValueTag::wide_string ? narrowed(wide_characters(value)) : std::string(narrow_characters(value));
}

// ---- Objects

Manager* manager_of(const HostAny* any) { return static_cast<Manager*>(any->manager.get()); }

Object* object_in(const HostValue& value) {
  return value.tag == ValueTag::object ? static_cast<Object*>(load<HostAny*>(value.payload)) : nullptr;
}

void hold(Object* object) {
  if (object == nullptr) return;
  if (object->references++ == 0) --live.objects;
}

void drop(Object* object) {
  if (object == nullptr || --object->references > 0) return;
  const auto destroy = manager_of(object)->destroy;
  if (destroy != nullptr) destroy(nullptr, object->content);
  ++live.blocks;  // an object counts as long as no record holds it
  give_back(object);
}

// ---- Ownership

void release(const HostValue& value) {
  switch (value.tag) {
    case ValueTag::table:
      return drop(table_in(value));
    case ValueTag::object:
      return drop(object_in(value));
    case ValueTag::string:
    case ValueTag::string_record:
    case ValueTag::converted_string:
    case ValueTag::wide_string:
      if (value.owned != 0) give_back(load<void*>(value.payload));
      return;
    default:
      return;
  }
}

void replace(HostValue* value, const HostValue& fresh) {
  const HostValue old = *value;
  *value = fresh;
  if (old.lifetime == Lifetime::temporary) release(old);
}

HostValue copy_of(const HostValue& value) {
  HostValue copy = value;
  copy.lifetime = Lifetime::temporary;
  if (value.tag == ValueTag::table) return table_record(table_in(value) ? copy_of_table(*table_in(value)) : nullptr);
  if (value.tag == ValueTag::object) hold(object_in(value));
  if (value.tag == ValueTag::wide_string) return wide_text(wide_characters(value), is_disguised_text(value));
  if (!is_text(value)) return copy;
  return text(narrow_characters(value), by_chance() ? TextForm::string : TextForm::converted);
}

// ---- Failures

namespace {

Withheld withheld = Withheld::nothing;
unsigned calls_left = 0;
bool came = false;

}  // namespace

Withholding::Withholding(Withheld what, unsigned nth) {
  withheld = what;
  calls_left = nth;
  came = false;
}
Withholding::~Withholding() { withheld = Withheld::nothing; }
bool Withholding::has_come() { return came; }

bool withholds(Withheld what) {
  if (what != withheld || --calls_left > 0) return false;
  withheld = Withheld::nothing;
  return came = true;
}

}  // namespace second_host
