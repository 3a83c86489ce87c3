// fuzz/table_fuzzer.cpp: any table as the data of xarray, for every dtype, and what its methods make of the array
//
// The letters: `[` opens a table and `]` closes it; `i`, `l`, `r`, `t`, `w`, `n` and `a` are an int, an int64, a real,
// a string, a wide string, nil and an array under the next key; `k`, `K` and `R` give the next entry a string, an int
// and a real as its key; `=` takes the table that was closed last once more. `.` ends the data, and extents for reshape
// follow.

#include <limits>

#include "fuzz/byte_source.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/tree_decoder.hpp"

namespace arrayfold::fuzz {
namespace {

/// The most entries of a table, those of the tables in it counted where they stand.
constexpr std::size_t largest_table = 2000;

class TableDecoder {
 public:
  TableDecoder(ByteSource& bytes, HostContext ctx) : bytes_(bytes), ctx_(ctx) {}

  Value table() {
    open_.emplace_back();
    while (step() && open_.size() < largest_table) {
    }
    while (open_.size() > 1) close();
    return open_.front().table;
  }

 private:
  struct Table {
    Value table = Value::table();
    Value key = Value();  // of the next entry; nil: the next position
    std::size_t size = 1;
  };

  /// Takes a letter; false at the end of the data.
  bool step() {
    switch (const char letter = bytes_.pick(".ilrtwna[]kKR=")) {
      case '.':
        return false;
      case '[':
        open_.emplace_back();
        return true;
      case ']':
        if (open_.size() > 1) close();
        return true;
      case 'k':
        open_.back().key = Value(bytes_.byte() % 2 == 0 ? "k" : "another key");
        return true;
      case 'K':
        open_.back().key = Value(bytes_.small_number());
        return true;
      case 'R':
        open_.back().key = Value(bytes_.small_number() / 2.0);
        return true;
      case '=':
        add(closed_.table, closed_.size);
        return true;
      default:
        add(leaf(letter), 1);
        return true;
    }
  }

  Value leaf(char letter) {
    static constexpr double reals[] = {
        0.0, -0.0, 0.5, 1e300, -3e9, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()};
    switch (letter) {
      case 'i':
        return Value(bytes_.small_number());
      case 'l':
        return Value(std::int64_t{bytes_.small_number()} * 0x100000000);
      case 'r':
        return Value(reals[bytes_.byte() % std::size(reals)]);
      case 't':
        return Value("text");
      case 'w':
        return Value(u"wide");
      case 'a':
        return Value::object(ctx_, "$xintarray");
      default:
        return Value();
    }
  }

  /// Adds an entry, unless the table would become too large.
  void add(const Value& value, std::size_t size) {
    Table& at_hand = open_.back();
    if (at_hand.size + size > largest_table) return;
    at_hand.size += size;
    HostHash* table = hvm::table_of(at_hand.table.record());
    const Value key = at_hand.key.is_nil() ? Value(hvm::entry_count(table)) : at_hand.key;
    hvm::assign(*hvm::slot(table, key.record()), value.record());
    at_hand.key = Value();
  }

  void close() {
    closed_ = open_.back();
    open_.pop_back();
    add(closed_.table, closed_.size);
  }

  ByteSource& bytes_;
  HostContext ctx_;
  std::vector<Table> open_;
  Table closed_;
};

/// A quotation of a dtype's name alone.
class QuotedDtype {
 public:
  explicit QuotedDtype(const char* name) {
    symbol_.text = name;
    call_.kind = NodeKind::call;
    store<const void*>(call_.link.payload, &symbol_);
    root_.kind = NodeKind::quotation;
    store<const void*>(root_.link.payload, &call_);
    code_.root = &root_;
  }
  Value value() const { return viewing(ValueTag::code, &code_); }

 private:
  HostSymbol symbol_{};
  HostCodeNode call_{}, root_{};
  HostCode code_{};
};

std::vector<Value> extents_in(ByteSource& bytes) {
  std::vector<Value> extents;
  while (!bytes.is_empty() && extents.size() < 6) extents.push_back(Value(bytes.small_number()));
  return extents;
}

void call_xarray(EntryFunction xarray, ByteSource bytes) {
  const hvm::Context context;
  const HostContext ctx = context.handle();
  const Value table = TableDecoder(bytes, ctx).table();
  const std::vector<Value> extents = extents_in(bytes);
  for (const char* dtype : {"bool", "int", "int64", "float", "double"}) {
    const QuotedDtype quoted(dtype);
    std::vector<Value> args{quoted.value(), table};
    Value array = call(xarray, ctx, args);
    Value shape, text, nothing;
    call_method(ctx, array, "shape", {}, shape);
    call_method(ctx, array, "dump", {}, text);
    call_method(ctx, array, "reshape", extents, nothing);
    call_method(ctx, array, "dump", {Value(1)}, text);
  }
}

}  // namespace
}  // namespace arrayfold::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace arrayfold::fuzz;
  static const auto xarray = entry("xarray");  // loaded before anything is counted
  run_checked([&] { call_xarray(xarray, {data, size}); });
  return 0;
}
