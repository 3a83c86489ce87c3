// reader/scalar_ref.cpp: reading, writing, copying and dropping host values

#include "reader/scalar_ref.hpp"

namespace arrayfold {
namespace {

/// Text of a length that the host gives; nothing when the length is negative or the text null.
template <class Char>
std::basic_string_view<Char> counted_text(const Char* text, int length) {
  if (text == nullptr || length <= 0) return {};
  return {text, static_cast<std::size_t>(length)};
}

/// Tags whose values need no release before they are overwritten.
bool needs_no_release(ValueTag tag) {
  switch (tag) {
    case ValueTag::integer:
    case ValueTag::real:
    case ValueTag::scalar_4:
    case ValueTag::nil:
    case ValueTag::scalar_18:
    case ValueTag::integer64:
    case ValueTag::scalar_80:
    case ValueTag::scalar_81:
      return true;
    default:
      return false;
  }
}

/// The tags whose content belongs to one record at a time: it moves, or the host duplicates it.
bool has_content(ValueTag tag) {
  const auto number = static_cast<int>(tag);
  return number == 2 || number == 5 || (number >= 7 && number <= 9) || (number >= 11 && number <= 17) || number == 19 ||
         number == 23 || number == 24 || number == 81;
}

constexpr int last_tag = 81;

/// Narrow literal text: only a recorded length is trusted, and only text of a recorded length is stored by reference.
void write_text(HostContext ctx, HostValue* destination, const HostCodeSlot& slot, bool copy) {
  const auto* text = load<const char*>(slot.payload);
  const std::uint32_t length = slot.length;
  if (text == nullptr || length == 0)
    HVM_SetString(ctx, destination, text == nullptr ? "" : text);
  else if (copy)
    HVM_SetStringEx(ctx, destination, text, static_cast<int>(length - 1));
  else
    HVM_SetConstStringEx(nullptr, destination, text, static_cast<int>(length - 1));
}

/// The same for 16-bit characters.
void write_wide_text(HostContext ctx, HostValue* destination, const HostCodeSlot& slot, bool copy) {
  const auto* text = load<const char16_t*>(slot.payload);
  const std::uint32_t length = slot.length;
  if (text == nullptr || length == 0)
    HVM_SetWString(ctx, destination, text == nullptr ? u"" : text);
  else if (copy)
    HVM_SetWStringEx(ctx, destination, text, static_cast<int>(length - 1));
  else
    HVM_SetConstWStringEx(nullptr, destination, text, static_cast<int>(length - 1));
}

bool copies_strings(HostContext ctx) {
  const HostFrame* frame = ctx->frame;
  return frame == nullptr || frame->copy_strings != 0;
}

}  // namespace

ScalarRef read_value(HostValue* value) {
  if (value == nullptr) return false;
  switch (value->tag) {
    case ValueTag::integer:
      return load<std::int32_t>(value->payload);
    case ValueTag::real:
      return load<double>(value->payload);
    case ValueTag::integer64:
      return load<std::int64_t>(value->payload);
    case ValueTag::string:
      return counted_text(load<const char*>(value->payload), HVM_StringLen(value));
    case ValueTag::string_record: {
      const auto* text = load<const HostStringRecord*>(value->payload);
      return text == nullptr ? std::string_view() : counted_text(text->text, text->length);
    }
    case ValueTag::converted_string: {
      const char* text = HVM_AsString(value);
      return counted_text(text, HVM_StringLen(value));
    }
    case ValueTag::wide_string:
      return counted_text(load<const char16_t*>(value->payload), HVM_StringLen(value));
    default:
      return value;
  }
}

void write_scalar(HostContext ctx, HostValue* destination, const ScalarRef& scalar) {
  switch (scalar.index()) {
    case int_scalar:
      return HVM_SetInt(ctx, destination, std::get<int_scalar>(scalar));
    case int64_scalar:
      return HVM_SetInt64(ctx, destination, std::get<int64_scalar>(scalar));
    case real_scalar:
      return HVM_SetReal(ctx, destination, std::get<real_scalar>(scalar));
    case value_scalar:
      return HVM_DupObject(ctx, destination, std::get<value_scalar>(scalar), 1);
    case wide_text_scalar: {
      const auto text = std::get<wide_text_scalar>(scalar);
      return HVM_SetWStringEx(ctx, destination, text.data() == nullptr ? u"" : text.data(),
                              static_cast<int>(text.size()));
    }
    case text_scalar: {
      // required: narrow text goes without its length, wide text with it.
      const char* text = std::get<text_scalar>(scalar).data();
      return HVM_SetString(ctx, destination, text == nullptr ? "" : text);
    }
    default:
      return;
  }
}

void write_literal(HostContext ctx, HostValue* destination, const HostCodeSlot& slot) {
  switch (slot.tag) {
    case SlotTag::string:
      return write_text(ctx, destination, slot, copies_strings(ctx));
    case SlotTag::wide_string:
      return write_wide_text(ctx, destination, slot, copies_strings(ctx));
    case SlotTag::integer:
      destination->tag = ValueTag::integer;
      return store<std::int32_t>(destination->payload, load<std::int32_t>(slot.payload));
    case SlotTag::real:
      destination->tag = ValueTag::real;
      return store<double>(destination->payload, load<double>(slot.payload));
    case SlotTag::integer64:
      destination->tag = ValueTag::integer64;
      return store<std::int64_t>(destination->payload, load<std::int64_t>(slot.payload));
    default:
      return;
  }
}

TemporaryValue::TemporaryValue() {
  record_.tag = ValueTag::nil;
  record_.lifetime = Lifetime::temporary;
}

TemporaryValue::~TemporaryValue() {
  if (record_.lifetime != Lifetime::temporary || record_.owned == 0) return;
  auto* content = load<void*>(record_.payload);
  const bool is_text = record_.tag == ValueTag::string || record_.tag == ValueTag::wide_string;
  if (!is_text && !(record_.tag == ValueTag::converted_string && content != nullptr)) return;
  HVM_Free(content);
  store<void*>(record_.payload, nullptr);
}

void TemporaryValue::pass_to(HostContext ctx, HostValue* destination, bool copy) {
  if (destination->lifetime == Lifetime::temporary && !needs_no_release(destination->tag))
    HVM_FreeObjectContent(ctx, destination);
  if (record_.lifetime == Lifetime::plain || static_cast<int>(record_.tag) > last_tag) {
    *destination = record_;
    return;
  }
  switch (record_.tag) {
    case ValueTag::integer:
    case ValueTag::real:
    case ValueTag::two_words: {
      // The payload passes with its tag; the slot keeps its own lifetime.
      const Lifetime lifetime = destination->lifetime;
      *destination = record_;
      destination->lifetime = lifetime;
      return;
    }
    default:
      break;
  }
  if (has_content(record_.tag) && copy) {
    HVM_DupObject(ctx, destination, &record_, 1);
    return;
  }
  *destination = record_;
  if (has_content(record_.tag)) record_.lifetime = Lifetime::none;
}

}  // namespace arrayfold
