// host/host_value.hpp: the records that the host and a module exchange, byte for byte
//
// Every record is little-endian and unaligned: an array of values is walked in steps of 18 bytes. The fields are
// therefore bytes, read and written whole through `load` and `store`, and each record carries the assertions of its
// size and offsets. A host is written from this file and host_operations.hpp alone.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace arrayfold {

/// Reads a T from `sizeof(T)` bytes at any address.
template <class T>
T load(const void* bytes) noexcept {
  static_assert(std::is_trivially_copyable_v<T>);
  T value;
  std::memcpy(&value, bytes, sizeof(T));
  return value;
}

/// Writes `value` as `sizeof(T)` bytes to any address. T is always named: `store<double>(payload, x)`.
template <class T>
void store(void* bytes, std::common_type_t<T> value) noexcept {
  static_assert(std::is_trivially_copyable_v<T>);
  std::memcpy(bytes, &value, sizeof(T));
}

/// One field of a host record: the bytes of a T, without alignment. No reference to a T inside it exists.
template <class T>
class Field {
 public:
  T get() const noexcept { return load<T>(bytes_); }
  operator T() const noexcept { return get(); }
  Field& operator=(T value) noexcept {
    store<T>(bytes_, value);
    return *this;
  }

 private:
  std::byte bytes_[sizeof(T)];
};

/// What a `HostValue` holds. Tags without a name here are the host's own.
enum class ValueTag : std::uint8_t {
  integer = 0,            // signed 32 bits in the first half of the payload
  real = 1,               // 64-bit float
  string = 2,             // pointer to narrow characters
  scalar_4 = 4,           // needs no release
  table = 5,              // HostHash*
  string_record = 6,      // HostStringRecord*; as a key in a table's items: no entry
  nil = 10,               // nothing; a fresh slot of a table
  converted_string = 11,  // characters through HVM_AsString alone
  code = 13,              // HostCode*, an expression handed over unevaluated
  object = 16,            // HostAny*
  matrix = 17,            // the host's own matrix
  scalar_18 = 18,         // needs no release
  integer64 = 20,         // signed 64-bit integer
  wide_string = 24,       // pointer to 16-bit characters
  two_words = 25,         // sixteen bytes, payload to rest
  scalar_80 = 80,         // needs no release
  scalar_81 = 81,         // needs no release
};

/// Who releases what a `HostValue` holds.
enum class Lifetime : std::uint8_t {
  none = 0,       // nothing to release
  temporary = 1,  // released by whoever drops the record
  plain = 2,      // bitwise record, copied as it is
};

/// The host's tagged value: 18 bytes, copied whole.
struct HostValue {
  ValueTag tag;
  std::byte payload[8];
  Field<std::uint32_t> owned;  // tags 2, 11, 24 of a temporary: nonzero, `payload` goes back through HVM_Free
  std::byte rest[4];           // with `owned`: the second word of tag 25
  Lifetime lifetime;
};
static_assert(sizeof(HostValue) == 18 && alignof(HostValue) == 1);
static_assert(offsetof(HostValue, tag) == 0 && offsetof(HostValue, payload) == 1);
static_assert(offsetof(HostValue, owned) == 9 && offsetof(HostValue, rest) == 13);
static_assert(offsetof(HostValue, lifetime) == 17);
static_assert(std::is_trivially_copyable_v<HostValue>);

/// Text behind tag 6: the characters follow the record's head directly.
struct HostStringRecord {
  std::byte host_head[16];
  Field<std::int32_t> length;
  std::byte host_words[16];
  char text[1];
};
static_assert(offsetof(HostStringRecord, length) == 16 && offsetof(HostStringRecord, text) == 36);

/// Manager of an object type. What follows the name is the host's.
struct AnyMan {
  Field<const char*> name;
};
static_assert(offsetof(AnyMan, name) == 0 && sizeof(AnyMan) == 8);

/// An object of the host: a type's manager and the content that the type's create callback made.
struct HostAny {
  std::byte host_word[4];
  Field<std::uint32_t> state;
  Field<AnyMan*> manager;
  Field<void*> content;
};
static_assert(sizeof(HostAny) == 24);
static_assert(offsetof(HostAny, state) == 4 && offsetof(HostAny, manager) == 8 && offsetof(HostAny, content) == 16);

/// An entry of a table. `HVM_HashGet` and its kin point at `value`: the item starts 18 bytes before.
struct HostHashItem {
  HostValue key;  // tag 6 or 10: the item is no entry
  HostValue value;
  std::byte host_words[8];
};
static_assert(sizeof(HostHashItem) == 44);
static_assert(offsetof(HostHashItem, key) == 0 && offsetof(HostHashItem, value) == 18);
static_assert(offsetof(HostHashItem, host_words) == 36);

/// A table: pointers to the items of its ordered part, then the array of the others.
struct HostHash {
  Field<HostHashItem**> index;
  Field<std::int32_t> index_count;  // 0 when there is no ordered part
  std::byte host_word[4];
  Field<HostHashItem*> items;
  Field<std::int32_t> item_count;
};
static_assert(offsetof(HostHash, index) == 0 && offsetof(HostHash, index_count) == 8);
static_assert(offsetof(HostHash, items) == 16 && offsetof(HostHash, item_count) == 24);

/// The running function's frame, as far as the reading of expressions needs it.
struct HostFrame {
  std::byte host_head[16];
  Field<std::uint32_t> slot_base;
  std::byte host_words[44];
  Field<std::uint32_t> copy_strings;  // nonzero: literal strings are copied; zero: they may be referenced
};
static_assert(offsetof(HostFrame, slot_base) == 16 && offsetof(HostFrame, copy_strings) == 64);

struct HostContextRecord;
/// The handle that every entry and callback receives first.
using HostContext = HostContextRecord*;

/// What a handle points at: opaque but for the frame and the two functions that expressions call.
struct HostContextRecord {
  using CallFunction = int (*)(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result);
  using ReadSlot = HostValue* (*)(HostContext ctx, int slot);

  std::byte host_head[56];
  Field<HostFrame*> frame;
  std::byte host_word[8];
  Field<CallFunction> call_function;  // 0: the call failed; without arguments `args` is null and `nargs` 0
  Field<ReadSlot> read_slot;          // the variable in a frame slot
};
static_assert(offsetof(HostContextRecord, frame) == 56 && offsetof(HostContextRecord, call_function) == 72);
static_assert(offsetof(HostContextRecord, read_slot) == 80 && sizeof(HostContextRecord) == 88);

/// How a slot of an expression node is to be read.
enum class SlotTag : std::uint32_t {
  node = 0,       // a sub-expression, or null
  absent = 1,     // marks an item without a part of its own
  string = 2,     // narrow text
  integer = 3,    // signed 32 bits in the low half
  real = 4,       // 64-bit float
  variable = 5,   // frame slot in the low 32 bits
  integer64 = 7,  // signed 64-bit integer
  wide_string = 10,
};

/// One of the two slots of an expression node.
struct HostCodeSlot {
  Field<SlotTag> tag;
  std::byte host_word[4];
  std::byte payload[8];
  Field<std::uint32_t> length;  // of a literal string, with its terminator; 0 when not recorded
  std::byte host_tail[4];
};
static_assert(sizeof(HostCodeSlot) == 24);
static_assert(offsetof(HostCodeSlot, payload) == 8 && offsetof(HostCodeSlot, length) == 16);

/// The node kinds that a module tests.
enum class NodeKind : std::uint32_t {
  call = 3,
  selection = 4,
  literal_open = 7,
  literal_close = 8,
  literal_item = 9,
  slot_list = 10,
  name_wrapper = 11,
  array_literal = 45,
  name = 77,
  variable_name = 86,
  list_cell = 105,
  data_row = 106,
  slot_list_inner = 108,
  quotation = 109,
  range = 112,
  labelled = 388,
};

/// A node of an expression tree.
struct HostCodeNode {
  std::byte host_head[8];
  Field<NodeKind> kind;
  std::byte host_word[4];
  HostCodeSlot link;
  HostCodeSlot value;
};
static_assert(offsetof(HostCodeNode, kind) == 8);
static_assert(offsetof(HostCodeNode, link) == 16 && offsetof(HostCodeNode, link.payload) == 24);
static_assert(offsetof(HostCodeNode, value) == 40 && offsetof(HostCodeNode, value.payload) == 48);
static_assert(offsetof(HostCodeNode, value.length) == 56 && sizeof(HostCodeNode) == 64);

/// A named symbol of an expression: the fourth word points at its text.
struct HostSymbol {
  std::byte host_head[24];
  Field<const char*> text;
};
static_assert(offsetof(HostSymbol, text) == 24);

/// The record behind tag 13: an expression and the frame in which it was written.
struct HostCode {
  std::byte host_head[8];
  Field<HostCodeNode*> root;
  std::byte host_words[16];
  Field<std::uint32_t> frame_base;
};
static_assert(offsetof(HostCode, root) == 8 && offsetof(HostCode, frame_base) == 32);

/// An index of a `HostIndexList`.
struct HostIndexEntry {
  Field<HostValue*> value;
  std::byte host_word[8];
};
static_assert(sizeof(HostIndexEntry) == 16 && offsetof(HostIndexEntry, value) == 0);

/// The indices of an element access with brackets.
struct HostIndexList {
  Field<std::uint64_t> packed_size;  // twice the count, plus 1 when the entries lie elsewhere
  std::byte entries[8];              // the entries from here on, or a pointer to them
};
static_assert(offsetof(HostIndexList, packed_size) == 0 && offsetof(HostIndexList, entries) == 8);

/// The operator numbers that a host passes to a type's operator callback.
enum class Opcode : int {
  less_equal = 81,
  greater_equal = 82,
  not_equal = 83,
  less = 84,
  greater = 85,
  equal = 86,
  add = 95,
  subtract = 96,
  multiply = 97,
  divide = 98,
  remainder = 99,
  read_one_index = 101,
  read_element = 36865,
  write_element = 36866,
};

}  // namespace arrayfold
