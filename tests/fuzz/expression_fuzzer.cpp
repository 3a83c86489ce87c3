// fuzz/expression_fuzzer.cpp: any tree as the first and the second argument of xarray

#include <array>

#include "fuzz/fuzz_session.hpp"
#include "fuzz/tree_decoder.hpp"

namespace arrayfold::fuzz {
namespace {

/// The script around a tree: its variables, its frame, and the functions that it calls.
class Script {
 public:
  explicit Script(ByteSource& bytes) : answer_(bytes.byte()) {
    frame_.slot_base = bytes.byte() % 3;
    frame_.copy_strings = bytes.byte() % 2;
    context_.use_frame(&frame_);
    context_.carry(this);
    context_.read_through(read_slot);
    context_.call_through(call_function);
    declare_variables();
  }

  HostContext ctx() const { return context_.handle(); }
  Value& variable(std::size_t slot) { return variables_[slot % variables_.size()]; }

 private:
  void declare_variables() {
    Value inner = Value::table_of({Value(5), Value(6.5), Value("text")});
    hvm::slot(hvm::table_of(inner.record()), "k")[0] = Value::table_of({Value(7)}).give_up();
    Value nested = Value::table_of({inner, Value::table_of({Value(1), Value(2)})});
    hvm::assign(*hvm::slot(hvm::table_of(nested.record()), "k"), inner.record());
    hvm::assign(*hvm::slot(hvm::table_of(nested.record()), Value(0.5).record()), inner.record());
    variables_ = {Value(2),
                  Value(3),
                  Value(0),
                  Value(-1),
                  Value(2.0),
                  Value(std::int64_t{2}),
                  Value("k"),
                  Value(u"k"),
                  Value::string_record("k"),
                  Value::table_of({Value(1), Value(2), Value(3)}),
                  inner,
                  nested,
                  Value::table(),
                  Value(),
                  Value::object(ctx(), "$xdoublearray")};
  }

  /// Slots beyond the variables are null or nil.
  static HostValue* read_slot(HostContext ctx, int slot) {
    auto& variables = static_cast<Script*>(hvm::user_of(ctx))->variables_;
    if (slot >= 0 && slot < static_cast<int>(variables.size()))
      return variables[static_cast<std::size_t>(slot)].address();
    return slot % 2 == 0 ? nullptr : HVM_GetGlobalNilObj();
  }

  /// Answers every call in another way: with a failure, or with one of the kinds of values.
  static int call_function(const void*, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
    auto& script = *static_cast<Script*>(hvm::user_of(ctx));
    switch (script.answer_++ % 8) {
      case 0:
        return 0;
      case 1:
        return HVM_SetInt(ctx, result, nargs), 1;
      case 2:
        return HVM_SetReal(ctx, result, 1.5), 1;
      case 3:
        return HVM_SetString(ctx, result, "called"), 1;
      case 4:
        return HVM_SetInt64(ctx, result, nargs), 1;
      case 5:
        return HVM_DupObject(ctx, result, script.variable(script.answer_).address(), 1), 1;
      case 6:
        return 1;
      default:
        HVM_ForceTable(ctx, result, 4);
        for (int n = 0; n < nargs; ++n)
          HVM_DupObject(ctx, HVM_HashSetInt(ctx, load<HostHash*>(result->payload), n), args + n, 1);
        return 1;
    }
  }

  hvm::Context context_;
  HostFrame frame_{};
  std::array<Value, 15> variables_;
  unsigned answer_;
};

/// An argument behind the first.
void add_data(std::vector<Value>& args, ByteSource& bytes, TreeDecoder& trees, Script& script) {
  switch (bytes.pick("0dcvD")) {
    case 'd':
      args.push_back(viewing(ValueTag::code, trees.data_literal()));
      break;
    case 'c':
      args.push_back(viewing(ValueTag::code, trees.code()));
      break;
    case 'v':
      args.push_back(script.variable(bytes.byte()));
      break;
    case 'D':
      args.push_back(viewing(ValueTag::code, nullptr));
      break;
    default:
      break;
  }
}

void call_xarray(EntryFunction xarray, ByteSource bytes) {
  Script script(bytes);
  TreeDecoder trees(bytes);
  std::vector<Value> args{viewing(ValueTag::code, trees.code())};
  add_data(args, bytes, trees, script);
  Value made = call(xarray, script.ctx(), args);
  Value text;
  call_method(script.ctx(), made, "dump", {}, text);
}

}  // namespace
}  // namespace arrayfold::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace arrayfold::fuzz;
  static const auto xarray = entry("xarray");  // loaded before anything is counted
  run_checked([&] { call_xarray(xarray, {data, size}); });
  return 0;
}
