// second_host/values.hpp: what the records of the second host hold, and its memory
//
// The second host keeps the contract and is friendly in nothing. Its blocks have exactly the size that was asked for,
// are full of nonsense at first, and are overwritten before they are freed. Numbers have more tags than the three of
// the contract, and text has five forms. What a record does not need is nonsense.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/host_operations.hpp"

namespace second_host {

using arrayfold::AnyMan;
using arrayfold::HostAny;
using arrayfold::HostHash;
using arrayfold::HostHashItem;
using arrayfold::HostStringRecord;
using arrayfold::HostValue;
using arrayfold::Lifetime;
using arrayfold::ValueTag;

// ---- Choices

/// A number below `count`. The sequence is the same in every process; SECOND_HOST_SEED starts another one.
unsigned choice(unsigned count);
inline bool by_chance() { return choice(2) != 0; }

// ---- Memory

/// What lives. Equal figures before and after a call mean that the call left nothing behind.
struct Live {
  std::int64_t blocks = 0;
  std::int64_t records = 0;
  std::int64_t tables = 0;
  std::int64_t objects = 0;  // that no record holds
};
extern Live live;

void* take(std::size_t size);
void give_back(void* block);
/// Overwrites bytes that mean nothing.
void spoil(void* bytes, std::size_t size);

// ---- Numbers

/// The tags of numbers beside integer, real and integer64. All of them are scalars of the host in the contract.
inline constexpr ValueTag truth_tag{4};      // a byte
inline constexpr ValueTag short_tag{18};     // 16 bits
inline constexpr ValueTag single_tag{80};    // a float
inline constexpr ValueTag backward_tag{81};  // a 64-bit integer whose bytes run backwards

/// A record that owns nothing, with nonsense for a payload.
HostValue nil(Lifetime lifetime = Lifetime::temporary);
HostValue integer(std::int32_t x);
HostValue integer64(std::int64_t x);
HostValue real(double x);

bool is_number(const HostValue& value);
std::int64_t as_integer64(const HostValue& value);
std::int32_t as_integer(const HostValue& value);
double as_real(const HostValue& value);

/// The same number under some tag that holds it. `native_tag` tells the one that it had.
HostValue disguised(const HostValue& number);
ValueTag native_tag(const HostValue& number);

// ---- Text

enum class TextForm { string, string_record, converted, wide };

bool is_text(const HostValue& value);
int text_length(const HostValue& value);
/// A text that owns its characters. With `is_disguise`, wide text counts as narrow.
HostValue text(std::string_view characters, TextForm form);
HostValue wide_text(std::u16string_view characters, bool is_disguise);
/// The same over characters that outlive the record.
HostValue literal(std::string_view characters);
HostValue wide_literal(std::u16string_view characters, bool is_disguise);

/// Characters of a text that is not wide; empty for everything else.
std::string_view narrow_characters(const HostValue& value);
std::u16string_view wide_characters(const HostValue& value);
bool is_disguised_text(const HostValue& value);
/// The characters of any text, in UTF-8.
std::string utf8_of(const HostValue& value);
/// Makes `wide` of UTF-8. False for what is not UTF-8, or has a terminator inside.
bool widen(std::string_view narrow, std::u16string& wide);

// ---- Objects

struct Manager : AnyMan {
  arrayfold::CreateCallback create;
  arrayfold::DestroyCallback destroy;
  arrayfold::MethodCallback method;
  arrayfold::OperatorCallback op;
};

struct Object : HostAny {
  std::uint32_t references;
  HostAny* companion;  // what stands for it in another host; null when nothing does
};

Manager* manager_of(const HostAny* any);
Manager* manager_named(const char* name);
Object* object_in(const HostValue& value);
void hold(Object* object);
void drop(Object* object);

// ---- Ownership

/// Releases what a record that owns its content holds.
void release(const HostValue& value);
/// Writes `fresh` over `value` and releases what was there, if `value` owned it.
void replace(HostValue* value, const HostValue& fresh);
/// A deep copy that owns its content.
HostValue copy_of(const HostValue& value);

// ---- Failures

enum class Withheld { nothing, object, table, hash, slot_by_number, slot_by_key, record, records, block, larger_block };
inline constexpr unsigned withheld_count = 10;

/// While this lives, the n-th call of an operation gives nothing.
class Withholding {
 public:
  Withholding(Withheld what, unsigned nth);
  ~Withholding();
  Withholding(const Withholding&) = delete;
  Withholding& operator=(const Withholding&) = delete;
  static bool has_come();
};
bool withholds(Withheld what);

/// Writes to the standard error why this host ends the process, and ends it.
[[noreturn]] void give_up(const std::string& reason);

}  // namespace second_host
