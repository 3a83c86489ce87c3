// kernel/strings.cpp: making, sharing and reading text

#include "kernel/strings.hpp"

#include <algorithm>
#include <cstring>
#include <new>

#include "kernel/memory.hpp"
#include "kernel/recorder.hpp"
#include "kernel/wide_text.hpp"

namespace hvm {
namespace kernel {
namespace {

void record_length(HostValue& value, std::size_t length) noexcept {
  arrayfold::store<std::uint32_t>(value.rest, static_cast<std::uint32_t>(length + 1));
}

template <class Char>
std::size_t length_of(const HostValue& value, const Char* text) noexcept {
  const auto recorded = arrayfold::load<std::uint32_t>(value.rest);
  return recorded ? recorded - 1 : std::char_traits<Char>::length(text);
}

template <class Char>
std::basic_string_view<Char> text_at_payload(const HostValue& value) noexcept {
  const auto* text = payload_of<const Char*>(value);
  if (!text) return {};
  return {text, length_of(value, text)};
}

std::string_view text_of_record(const HostValue& value) noexcept {
  const auto* record = payload_of<const HostStringRecord*>(value);
  if (!record) return {};
  return {record->text, static_cast<std::size_t>(std::max(record->length.get(), 0))};
}

// Copies `text` and a terminator to `place`, which has room for both.
template <class Char>
void write_terminated(void* place, std::basic_string_view<Char> text) noexcept {
  const std::size_t bytes = text.size() * sizeof(Char);
  if (bytes > 0) std::memcpy(place, text.data(), bytes);
  std::memset(static_cast<std::byte*>(place) + bytes, 0, sizeof(Char));
}

template <class Char>
HostValue owned_text(std::basic_string_view<Char> text, ValueTag tag) noexcept {
  void* block = allocate((text.size() + 1) * sizeof(Char), BlockKind::text);
  if (!block) return nil_record();
  write_terminated(block, text);
  HostValue value = record_of<void*>(tag, block);
  value.owned = 1;
  record_length(value, text.size());
  return value;
}

template <class Char>
HostValue literal_text(std::basic_string_view<Char> text, ValueTag tag) noexcept {
  HostValue value = record_of<const Char*>(tag, text.data());
  record_length(value, text.size());
  return value;
}

bool has_own_block(const HostValue& value) noexcept { return value.tag == ValueTag::string_record || value.owned != 0; }

}  // namespace

HostValue owned_string(std::string_view text, ValueTag tag) noexcept { return owned_text(text, tag); }
HostValue owned_string(std::u16string_view text) noexcept { return owned_text(text, ValueTag::wide_string); }
HostValue literal_string(std::string_view text) noexcept { return literal_text(text, ValueTag::string); }
HostValue literal_string(std::u16string_view text) noexcept { return literal_text(text, ValueTag::wide_string); }

HostValue string_record(std::string_view text) noexcept {
  void* block = allocate(offsetof(HostStringRecord, text) + text.size() + 1, BlockKind::text);
  if (!block) return nil_record();
  std::memset(block, 0, offsetof(HostStringRecord, text));
  auto* bytes = static_cast<std::byte*>(block);
  arrayfold::store<std::int32_t>(bytes + offsetof(HostStringRecord, length), static_cast<std::int32_t>(text.size()));
  write_terminated(bytes + offsetof(HostStringRecord, text), text);
  return record_of<void*>(ValueTag::string_record, block);
}

std::string_view text_or_null(const HostValue& value) noexcept {
  switch (value.tag) {
    case ValueTag::string:
    case ValueTag::converted_string:
      return text_at_payload<char>(value);
    case ValueTag::string_record:
      return text_of_record(value);
    case ValueTag::wide_string:
      return narrowed(wide_text_of(value));
    default:
      return {};
  }
}

void drop_text(const HostValue& value) noexcept {
  if (has_own_block(value)) give_back(payload_of<void*>(value));
}

// Only a temporary is known to own its block; of any other record the text is copied.
HostValue shared_text(const HostValue& value) noexcept {
  if (has_own_block(value) && value.lifetime != Lifetime::temporary) return copy_of_text(value);
  if (has_own_block(value)) hold_block(payload_of<void*>(value));
  HostValue other = value;
  other.lifetime = Lifetime::temporary;
  return other;
}

HostValue copy_of_text(const HostValue& value) noexcept {
  if (value.tag == ValueTag::wide_string) return owned_string(wide_text_of(value));
  const std::string_view text = text_or_null(value);
  return value.tag == ValueTag::string_record ? string_record(text) : owned_string(text, value.tag);
}

}  // namespace kernel

using namespace kernel;

std::string_view text_of(const HostValue& value) {
  const std::string_view text = text_or_null(value);
  if (value.tag == ValueTag::wide_string && !text.data()) throw std::bad_alloc();
  return text;
}

std::u16string_view wide_text_of(const HostValue& value) noexcept {
  if (value.tag != ValueTag::wide_string) return {};
  return text_at_payload<char16_t>(value);
}

}  // namespace hvm

// ---- Operations

namespace arrayfold {
namespace {

using namespace hvm;
using namespace hvm::kernel;

template <class Char>
std::basic_string_view<Char> view_of(const Char* text) noexcept {
  return text ? std::basic_string_view<Char>(text) : std::basic_string_view<Char>();
}

// A negative length means no text.
template <class Char>
std::basic_string_view<Char> view_of(const Char* text, int length) noexcept {
  if (!text || length <= 0) return std::basic_string_view<Char>();
  return {text, static_cast<std::size_t>(length)};
}

// A null literal becomes an empty one, which has a terminator.
template <class Char>
std::basic_string_view<Char> literal_view_of(const Char* text, int length) noexcept {
  static constexpr Char nothing[1] = {};
  return {text ? text : nothing, text ? static_cast<std::size_t>(std::max(length, 0)) : 0};
}

}  // namespace

HostBool HVM_StringCheckAll(HostValue* value) {
  return noted(
      "HVM_StringCheckAll", [=] { return HostBool{value && is_text(*value)}; }, value);
}

const char* HVM_AsString(HostValue* value) {
  const auto get = [=] {
    const char* text = value ? text_or_null(*value).data() : nullptr;
    return text ? text : "";
  };
  return noted("HVM_AsString", get, value);
}

int HVM_StringLen(HostValue* value) {
  const auto count = [=] {
    if (!value) return 0;
    const bool is_wide = value->tag == ValueTag::wide_string;
    return static_cast<int>(is_wide ? wide_text_of(*value).size() : text_or_null(*value).size());
  };
  return noted("HVM_StringLen", count, value);
}

void HVM_SetString(HostContext ctx, HostValue* value, const char* text) {
  noted(
      "HVM_SetString", [=] { replace(ctx, value, owned_string(view_of(text))); }, value, text);
}

void HVM_SetStringEx(HostContext ctx, HostValue* value, const char* text, int length) {
  noted(
      "HVM_SetStringEx", [=] { replace(ctx, value, owned_string(view_of(text, length))); }, value,
      TextOperand<char>{text, length}, length);
}

void HVM_SetWString(HostContext ctx, HostValue* value, const char16_t* text) {
  noted(
      "HVM_SetWString", [=] { replace(ctx, value, owned_string(view_of(text))); }, value, text);
}

void HVM_SetWStringEx(HostContext ctx, HostValue* value, const char16_t* text, int length) {
  noted(
      "HVM_SetWStringEx", [=] { replace(ctx, value, owned_string(view_of(text, length))); }, value,
      TextOperand<char16_t>{text, length}, length);
}

void HVM_SetConstStringEx(HostContext null, HostValue* value, const char* text, int length) {
  noted(
      "HVM_SetConstStringEx", [=] { replace(null, value, literal_string(literal_view_of(text, length))); }, value,
      TextOperand<char>{text, length}, length);
}

void HVM_SetConstWStringEx(HostContext null, HostValue* value, const char16_t* text, int length) {
  noted(
      "HVM_SetConstWStringEx", [=] { replace(null, value, literal_string(literal_view_of(text, length))); }, value,
      TextOperand<char16_t>{text, length}, length);
}

}  // namespace arrayfold
