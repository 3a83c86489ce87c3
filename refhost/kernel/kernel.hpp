// kernel/kernel.hpp: what the reference host's kernel offers beside the 44 operations
//
// The operations of host_operations.hpp are the contract with a module. This is the other face of the same library, for
// the script interpreter and for tests: contexts, values with an owner, tables, types, and the instruments (counters,
// failure switches, the recorder of operations). Nothing here is recorded, and nothing here is known to a module.
//
// Ownership. A record releases what it holds when its lifetime is `temporary`; every record that the host makes has
// that lifetime, nil ones too, so that a caller may write a tag and a pointer into it and hand over the content. A
// record of another lifetime only looks at its content. Tables and objects count their references, and so does the text
// of a string: a copy shares it. The kernel is used by one thread at a time.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/host_operations.hpp"
#include "host/host_value.hpp"

#pragma GCC visibility push(default)

namespace hvm {

using arrayfold::AnyMan;
using arrayfold::HostAny;
using arrayfold::HostContext;
using arrayfold::HostContextRecord;
using arrayfold::HostFrame;
using arrayfold::HostHash;
using arrayfold::HostHashItem;
using arrayfold::HostStringRecord;
using arrayfold::HostValue;
using arrayfold::Lifetime;
using arrayfold::ValueTag;

// ---- Contexts

/// Owns a context. At first it has a frame of zeros, every call fails, and every slot reads as nil, so a module can run
/// without an interpreter.
class Context {
 public:
  Context();
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  /// What a module receives.
  HostContext handle() const noexcept { return handle_; }

  /// The frame that expressions read; null gives back the context's own frame of zeros. It is not owned.
  void use_frame(HostFrame* frame) noexcept;
  HostFrame* frame() const noexcept { return handle_->frame; }

  /// The function that calls out of expressions; null: every call fails.
  void call_through(HostContextRecord::CallFunction function) noexcept;
  /// The function that reads variables; null: every slot reads as nil.
  void read_through(HostContextRecord::ReadSlot function) noexcept;

  /// A pointer of the user's, found again from a handle by `user_of`. It is not owned.
  void carry(void* user) noexcept;

 private:
  HostContext handle_;
};

/// The pointer that the context of this handle carries; null when there is none or `ctx` is null.
void* user_of(HostContext ctx) noexcept;
/// The youngest living context, null when there is none: destroy callbacks get it where a release names none.
HostContext youngest_context() noexcept;

// ---- Values

/// A record of a tag and the bits of its payload, which releases what it holds. It is stored as compilers copy records,
/// in sixteen bytes and two: a processor forwards a store only to a load that lies within it.
inline HostValue record_of_bits(ValueTag tag, std::uint64_t payload) noexcept {
  using Words = std::uint64_t __attribute__((vector_size(16)));
  static_assert(offsetof(HostValue, payload) == 1, "the tag is the lowest byte");
  const Words words{static_cast<std::uint64_t>(tag) | payload << 8, payload >> 56};
  const auto last = static_cast<std::uint16_t>(static_cast<std::uint16_t>(Lifetime::temporary) << 8);
  HostValue record;
  std::memcpy(static_cast<void*>(&record), &words, sizeof words);
  std::memcpy(static_cast<char*>(static_cast<void*>(&record)) + sizeof words, &last, sizeof last);
  static_assert(sizeof record == sizeof words + sizeof last, "the two stores fill the record");
  return record;
}
/// A nil record that releases what is written into it.
inline HostValue nil_record() noexcept { return record_of_bits(ValueTag::nil, 0); }

/// True for the tags of texts, tables and objects. Records of all others are copied and dropped as bytes.
inline bool refers_to_content(ValueTag tag) noexcept {
  constexpr auto bit = [](ValueTag one) { return std::uint32_t{1} << static_cast<unsigned>(one); };
  constexpr std::uint32_t tags = bit(ValueTag::string) | bit(ValueTag::table) | bit(ValueTag::string_record) |
                                 bit(ValueTag::converted_string) | bit(ValueTag::object) | bit(ValueTag::wide_string);
  const auto number = static_cast<unsigned>(tag);
  return number < 32 && (tags >> number & 1) != 0;
}
/// True for a record whose release does something: it is a temporary, and its tag is one of those with content.
inline bool holds_content(const HostValue& value) noexcept {
  return refers_to_content(value.tag) && value.lifetime == Lifetime::temporary;
}
/// Releases what `value` holds and leaves nil.
void release(HostValue& value) noexcept;
/// Another record of the same content: tables, objects and owned text are shared, not copied.
HostValue shared(const HostValue& value) noexcept;
/// Releases what `destination` held and makes it share the content of `source`; the two may be one or overlap in
/// content.
void assign(HostValue& destination, const HostValue& source) noexcept;
/// Narrow characters of any string form, in UTF-8; empty for what is no string. They last as long as the record's
/// content, those of a wide string until the eighth conversion after this one. Throws `std::bad_alloc` when memory for
/// the conversion is missing.
std::string_view text_of(const HostValue& value);
/// The 16-bit characters of a wide string (tag 24); empty for everything else.
std::u16string_view wide_text_of(const HostValue& value) noexcept;

/// A record with an owner: released at the end, shared by copying. It has the size and alignment of a record, so that a
/// `std::vector<Value>` is an argument list. Making a text or a table throws `std::bad_alloc` when memory is missing; a
/// text of 2 GiB or more never finds it.
class Value {
 public:
  Value() noexcept : record_(nil_record()) {}
  explicit Value(int x) noexcept : record_(record_of_bits(ValueTag::integer, static_cast<std::uint32_t>(x))) {}
  explicit Value(std::int64_t x) noexcept
      : record_(record_of_bits(ValueTag::integer64, static_cast<std::uint64_t>(x))) {}
  explicit Value(double x) noexcept : record_(record_of_bits(ValueTag::real, arrayfold::load<std::uint64_t>(&x))) {}
  explicit Value(std::string_view text);
  explicit Value(const char* text) : Value(std::string_view(text)) {}
  explicit Value(std::u16string_view text);
  explicit Value(const char16_t* text) : Value(std::u16string_view(text)) {}

  /// An owner that shares the content of `record`. Throws `std::bad_alloc` when the text of a record that is no
  /// temporary must be copied and memory is missing.
  static Value sharing(const HostValue& record) {
    return refers_to_content(record.tag) ? sharing_content(record) : Value(record);
  }
  /// An owner that takes the content out of `record` and leaves nil there.
  static Value taking(HostValue& record) noexcept;
  /// A string that refers to a literal, which must outlive every record that shares it.
  static Value literal(std::string_view text) noexcept;
  static Value literal(std::u16string_view text) noexcept;
  /// A string whose characters are behind a record of length and text (tag 6).
  static Value string_record(std::string_view text);
  /// A new, empty table.
  static Value table(int capacity = 4);
  /// A table of these values under the keys 0, 1, 2, ...
  static Value table_of(const std::vector<Value>& values);
  /// A new object of a registered type; nil when the host makes none.
  static Value object(HostContext ctx, const char* type_name) noexcept;
  /// An owner of a reference to `any`; nil for null.
  static Value object(HostAny* any) noexcept;

  // Numbers, which are most values of a loop, are copied and dropped without a call.
  Value(const Value& other) noexcept
      : record_(refers_to_content(other.tag()) ? hvm::shared(other.record_) : other.record_) {}
  Value(Value&& other) noexcept : record_(other.give_up()) {}
  Value& operator=(const Value& other) noexcept {
    if (holds_content(record_) || refers_to_content(other.tag()))
      assign(record_, other.record_);
    else
      record_ = other.record_;
    return *this;
  }
  // The old content is released last: the other may lie inside it.
  Value& operator=(Value&& other) noexcept {
    if (this == &other) return *this;
    HostValue old = record_;
    record_ = other.give_up();
    if (holds_content(old)) hvm::release(old);
    return *this;
  }
  ~Value() {
    if (holds_content(record_)) hvm::release(record_);
  }

  ValueTag tag() const noexcept { return record_.tag; }
  bool is_nil() const noexcept { return record_.tag == ValueTag::nil; }
  bool is_number() const noexcept {
    return tag() == ValueTag::integer || tag() == ValueTag::real || tag() == ValueTag::integer64;
  }
  bool is_string() const noexcept;
  bool is_table() const noexcept { return record_.tag == ValueTag::table; }
  bool is_object() const noexcept { return record_.tag == ValueTag::object; }

  HostValue& record() noexcept { return record_; }
  const HostValue& record() const noexcept { return record_; }
  HostValue* address() noexcept { return &record_; }

  /// Gives the content away as a plain record and leaves nil.
  HostValue give_up() noexcept {
    const HostValue given = record_;
    record_ = nil_record();
    return given;
  }

 private:
  explicit Value(const HostValue& record) noexcept : record_(record) {}
  static Value sharing_content(const HostValue& record);

  HostValue record_;
};
static_assert(sizeof(Value) == sizeof(HostValue) && alignof(Value) == 1, "a vector of them is an array of records");

/// Values next to each other, which somebody else owns.
class ValueSpan {
 public:
  ValueSpan(Value* first, std::size_t count) noexcept : first_(first), count_(count) {}
  ValueSpan(std::vector<Value>& values) noexcept : ValueSpan(values.data(), values.size()) {}

  Value* begin() const noexcept { return first_; }
  Value* end() const noexcept { return first_ + count_; }
  std::size_t size() const noexcept { return count_; }
  Value& operator[](std::size_t i) const noexcept { return first_[i]; }

 private:
  Value* first_;
  std::size_t count_;
};

/// The records of an argument list, null when it is empty.
HostValue* records_of(std::vector<Value>& values) noexcept;

// ---- Tables

/// The table that a record holds, null when it holds none.
HostHash* table_of(const HostValue& value) noexcept;
/// Adds a reference and gives `table` back; null stays null.
HostHash* hold(HostHash* table) noexcept;
/// The references to a table.
std::uint32_t references(const HostHash* table) noexcept;
/// The number of entries.
std::int32_t entry_count(const HostHash* table) noexcept;

/// Numbers and strings are keys. An integer of 64 bits that fits into 32 is the integer key; a wide string is the key
/// of its UTF-8 form; a real is a key of its own kind, also when it is whole (the two zeros are one key, and so are all
/// NaN). Throws std::bad_alloc where memory for the UTF-8 form of a wide string is missing.
bool is_key(const HostValue& key);
/// The value under a key, null when absent.
HostValue* find(const HostHash* table, const HostValue& key) noexcept;
HostValue* find(const HostHash* table, int key) noexcept;
HostValue* find(const HostHash* table, std::string_view key) noexcept;
/// The slot of a key, made as nil when absent; null for what is not a key, or when memory is missing. A slot with an
/// integer key of the ordered part lasts as long as the table; any other until a new key comes into the same table.
HostValue* slot(HostHash* table, const HostValue& key) noexcept;
HostValue* slot(HostHash* table, int key) noexcept;
HostValue* slot(HostHash* table, std::string_view key) noexcept;
/// Writes the value of a key. Throws `std::bad_alloc` when memory is missing. Requires: `key` is one.
void set_entry(HostHash* table, const HostValue& key, const HostValue& value);
void set_entry(HostHash* table, int key, const HostValue& value);
void set_entry(HostHash* table, std::string_view key, const HostValue& value);
/// Writes a value behind the last of the keys 0, 1, 2, ... Throws `std::bad_alloc` when memory is missing.
void append_entry(HostHash* table, const HostValue& value);
/// The key of an entry as a value of its own: a string key, which has tag 6 in its table, as an ordinary string.
Value key_value(const HostValue& key);

/// Takes an entry out of a table and gives its value; nil when the key is absent. When the key is one of 0 to n - 1,
/// all keys of the ordered part, the values behind it move down by one key, and the slot of n - 1 ends.
Value remove(HostHash* table, const HostValue& key) noexcept;
/// The first of 0, 1, 2, ... that is not a key of the table.
std::int32_t next_position(const HostHash* table) noexcept;

/// An entry of a table, both null at the end. A string key has tag 6.
struct Entry {
  const HostValue* key = nullptr;
  HostValue* value = nullptr;
  explicit operator bool() const noexcept { return value != nullptr; }
};

/// Walks the entries of a table: the keys 0 to n - 1 in their order, then the others as they came. It holds places, not
/// pointers, so the table may be changed while it is walked, but must live. What comes in then may be seen or not, and
/// after a removal some of what follows may be left out.
class TableWalk {
 public:
  explicit TableWalk(const HostHash* table) noexcept : table_(table) {}
  Entry next() noexcept;

 private:
  const HostHash* table_;
  std::int32_t ordered_ = 0;
  std::int32_t hashed_ = 0;
};

// ---- Objects and types

/// The object of a record of tag 16, null when it holds none.
HostAny* object_of(const HostValue& value) noexcept;
/// The references to an object. A new one has none until a record takes it.
std::uint32_t references(const HostAny* any) noexcept;
/// Which of the objects that the host has made this is, counted from 1; 0 for null.
std::uint64_t number_of(const HostAny* any) noexcept;

/// What a type was made with.
struct TypeCallbacks {
  arrayfold::CreateCallback create = nullptr;
  arrayfold::DestroyCallback destroy = nullptr;
  arrayfold::MethodCallback method = nullptr;
  arrayfold::OperatorCallback op = nullptr;
};

/// The callbacks of a manager; all null for null.
TypeCallbacks callbacks_of(const AnyMan* man) noexcept;
TypeCallbacks callbacks_of(const HostAny* any) noexcept;
/// The name as it was given to `HVM_NewAnyMan`; empty for null.
const char* type_name_of(const AnyMan* man) noexcept;
const char* type_name_of(const HostAny* any) noexcept;
/// The manager that is registered under a name, null when there is none.
AnyMan* type_named(const char* name) noexcept;

struct RegisteredType {
  std::string name;
  AnyMan* man;
};
/// The types in the order in which their names were first registered.
std::vector<RegisteredType> registered_types();
/// Takes a type out of the register; its living objects stay what they are. For hosts that unload a module.
void forget_type(const char* name) noexcept;

// ---- Printing

/// Appends the text of an object.
using ObjectText = std::function<void(std::string& out, const HostValue& object)>;
/// The text of any value: numbers in the shortest form that reads back (reals keep a point or an exponent), a string as
/// it is, a table as `[1, "a": 2.5, [3]]` with strings quoted, nil as `nil`. A table inside itself is
/// shown as `[...]`. Does not recurse, however deep the tables are. Without `object_text` an object shows as its type's
/// name in angle brackets.
std::string printed(const HostValue& value, const ObjectText& object_text = {});

// ---- Instruments

/// What lives at this moment. Two equal counts around a call mean that it left nothing behind.
struct Counts {
  std::int64_t objects = 0;  // from HVM_NewAny
  std::int64_t tables = 0;   // from HVM_NewHash, HVM_ForceTable, copies
  std::int64_t strings = 0;  // texts that the host owns, keys included; a shared one counts once
  std::int64_t blocks = 0;   // from HVM_Malloc and its kin
  std::int64_t records = 0;  // from HVM_NewObject and HVM_NewObjects, less those given back by the callers' counts
  std::int64_t pieces = 0;   // the inner memory of tables
};
bool operator==(const Counts& a, const Counts& b) noexcept;
bool operator!=(const Counts& a, const Counts& b) noexcept;
Counts counts() noexcept;

/// While set, `HVM_NewAny` and `HVM_NewAnyMan` make nothing and return null.
void withhold_objects(bool withhold) noexcept;

/// Lets the n-th allocation from now on fail, once; 0 takes that back. All memory of the host counts: its `HVM_Malloc`
/// family, texts, records, objects and tables. Then `HVM_Malloc`, `HVM_Realloc2`, `HVM_ReallocNoLeak`, `HVM_NewObject`,
/// `HVM_NewObjects`, `HVM_NewHash` and `HVM_NewAny` return null (the block that could not grow stays with
/// `HVM_Realloc2` and is given back by `HVM_ReallocNoLeak`), a record that should hold a text, a table or a copy
/// becomes nil with a payload of zero, a copy of a table lacks the entries that could not be copied, and `HVM_HashSet`
/// and `HVM_HashSetInt` return the lost slot: a record of no table, emptied when it is next handed out.
void fail_allocation(std::int64_t nth) noexcept;
/// True when a failure asked for by `fail_allocation` has come since then.
bool allocation_has_failed() noexcept;
/// Lets every allocation fail that would make all memory of the host more than this many bytes; 0: none does.
void limit_memory(std::size_t bytes) noexcept;
/// The allocations since the library was loaded, failed ones included.
std::int64_t allocation_count() noexcept;

/// An operand or the result of an operation. Pointers are as they were passed: what they point at may have ended since.
struct RecordedOperand {
  enum class Form : std::uint8_t {
    nothing,    // the result of an operation that gives none
    record,     // HostValue
    key,        // HostValue, of which only the value counts
    table,      // HostHash
    object,     // HostAny
    manager,    // AnyMan
    block,      // memory
    text,       // characters
    wide_text,  // 16-bit characters
    integer,
    real,
    truth,
    bounds  // two integers
  };
  Form form = Form::nothing;
  const void* pointer = nullptr;
  std::int64_t number = 0;  // integer, truth; the lower bound; the length of a text, -1: up to its terminator
  std::int64_t high = 0;    // the upper bound
  double real = 0;
};

/// One call of an operation. `subject` is what it is about: the record, table, object, manager or memory that it was
/// given, the type's name for those that make objects, managers and registrations, the destination for `HVM_DupObject`,
/// null for those that only make something; `number` is the first of its integer arguments (key, count, capacity, size,
/// length) that is not 0, otherwise 0. `operands` are all but the context, in their order.
struct RecordedCall {
  static constexpr std::size_t most_operands = 3;

  const char* operation;
  const void* subject;
  std::int64_t number;
  std::size_t operand_count;
  RecordedOperand operands[most_operands];
  RecordedOperand result;  // as long as the operation runs: nothing
};

/// Is told of every operation. A destroy callback that an operation runs may call others before it ends.
class CallSink {
 public:
  /// Returns the number by which `end` knows the call.
  virtual std::size_t begin(const RecordedCall& call) noexcept = 0;
  virtual void end(std::size_t number, const RecordedOperand& result) noexcept = 0;

 protected:
  ~CallSink() = default;
};

/// Tells `sink` of all operations from now on; null: nobody. Returns who was told before.
CallSink* send_calls_to(CallSink* sink) noexcept;

/// Starts with an empty record of calls, or stops; what was recorded stays until the next start.
void record_calls(bool on) noexcept;
/// The calls from the last start on, in their order.
std::vector<RecordedCall> recorded_calls();

/// The byte with which debug builds overwrite what they free; the block freed last stays readable until the next.
inline constexpr std::byte poison_byte{0xDB};

}  // namespace hvm

#pragma GCC visibility pop
