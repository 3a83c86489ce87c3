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

constexpr std::size_t most_entries = 2000;

class TableDecoder {
 public:
  TableDecoder(ByteSource& bytes, HostContext ctx) : bytes_(bytes), ctx_(ctx) {}

  Value table() {
    open_.push_back(Value::table());
    while (step() && entries_ < most_entries) {
    }
    while (open_.size() > 1) close();
    return open_.front();
  }

 private:
  /// Takes a letter; false at the end of the data.
  bool step() {
    switch (const char letter = bytes_.pick(".ilrtwna[]kKR=")) {
      case '.':
        return false;
      case '[':
        open_.push_back(Value::table());
        keys_.push_back(key_);
        key_ = Value();
        return true;
      case ']':
        if (open_.size() > 1) close();
        return true;
      case 'k':
        key_ = Value(bytes_.byte() % 2 == 0 ? "k" : "another key");
        return true;
      case 'K':
        key_ = Value(bytes_.small_number());
        return true;
      case 'R':
        key_ = Value(bytes_.small_number() / 2.0);
        return true;
      case '=':
        add(closed_);
        return true;
      default:
        add(leaf(letter));
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

  void add(Value value) {
    ++entries_;
    HostHash* table = hvm::table_of(open_.back().record());
    HostValue* slot = key_.is_nil() ? hvm::slot(table, hvm::entry_count(table)) : hvm::slot(table, key_.record());
    hvm::assign(*slot, value.record());
    key_ = Value();
  }

  void close() {
    closed_ = open_.back();
    open_.pop_back();
    key_ = keys_.back();
    keys_.pop_back();
    add(closed_);
  }

  ByteSource& bytes_;
  HostContext ctx_;
  std::vector<Value> open_, keys_;
  Value key_, closed_;
  std::size_t entries_ = 0;
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
