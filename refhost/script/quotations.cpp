// script/quotations.cpp: evaluating quotations, and what a module asks for when it reads one

#include <fmt/format.h>

#include <algorithm>
#include <new>

#include "script/fault_report.hpp"
#include "script/frame_scope.hpp"
#include "script/interpreter.hpp"
#include "script/source_scope.hpp"

namespace hvm {

/// The variables of the scope that runs.
class Interpreter::RunningVariables final : public VariableView {
 public:
  explicit RunningVariables(const Interpreter& interpreter) : interpreter_(interpreter) {}

  VariableState state(const Variable& variable) const override {
    const Slot& slot = interpreter_.slot_of(variable);
    if (!slot.is_set) return VariableState::unset;
    return slot.value.is_table() ? VariableState::table : VariableState::set;
  }

  // The difference may wrap around; the module's sum wraps back.
  std::uint32_t slot(const Variable& variable) const override {
    const auto number = first_tree_slot + static_cast<std::uint32_t>(variable.slot);
    return variable.is_local ? number : number - base();
  }

  [[noreturn]] void fail_unset(const Variable& variable, Span span) const override {
    interpreter_.fail_unset(variable, span);
  }

  std::uint32_t base() const { return interpreter_.frame_ ? interpreter_.frame_->base : 0; }

 private:
  const Interpreter& interpreter_;
};

Value Interpreter::evaluate(const KeyRange&, Span span) { fail("a range of keys stands in quotations only", span); }

Value Interpreter::evaluate(const QuotationLiteral& form, Span) {
  const RunningVariables variables(*this);
  ScopeCodes& codes = frame_ ? frame_->codes : outermost_codes_;
  return value_of(codes.code_of(form.quotation, source_, frame_, variables.base(), variables));
}

void Interpreter::require_live(const std::vector<Value>& values, Span span) const {
  for (const Value& value : values)
    if (value.tag() == ValueTag::code && !live_codes_.find(value.record()))
      fail("a quotation is of no use after the fn in which it was written has returned", span);
}

void Interpreter::warn_of_lost_elements(const std::string& name, const std::vector<Value>& arguments) {
  if (has_warned_ || !options_.warn || name != "xarray" || arguments.size() < 2) return;
  const Code* dtype = live_codes_.find(arguments[0].record());
  const Code* data = live_codes_.find(arguments[1].record());
  const Expression* lost = dtype && data ? integer_among_reals(*dtype, *data) : nullptr;
  if (!lost) return;
  has_warned_ = true;
  const auto* narrow = std::get_if<IntegerLiteral>(&lost->form);
  const std::int64_t number = narrow ? narrow->value : std::get<Integer64Literal>(lost->form).value;
  options_.warn(warning_report(
      fmt::format("in a data literal of reals the integer {0} is no element; write {0}.0 or use a table", number),
      *data->source, lost->span));
}

// ---- Called by modules

HostValue* Interpreter::answer_slot(HostContext ctx, int slot) {
  return static_cast<Interpreter*>(user_of(ctx))->variable_at(slot);
}

HostValue* Interpreter::variable_at(int slot) {
  const auto number = static_cast<std::uint32_t>(slot);
  if (number < globals_.size()) return globals_[number].value.address();
  const auto above = std::upper_bound(frames_.begin(), frames_.end(), number,
                                      [](std::uint32_t x, const Frame* frame) { return x < frame->base; });
  if (slot < 0 || above == frames_.begin()) return arrayfold::HVM_GetGlobalNilObj();
  Frame& frame = **(above - 1);
  const std::uint32_t local = number - frame.base;
  return local < frame.locals.size() ? frame.locals[local].value.address() : arrayfold::HVM_GetGlobalNilObj();
}

// Nothing may be thrown from here: the module stands in between.
int Interpreter::answer_call(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  auto& interpreter = *static_cast<Interpreter*>(user_of(ctx));
  const auto& called = *static_cast<const Callee*>(static_cast<const arrayfold::HostSymbol*>(callee));
  KeptError& kept = interpreter.kept_error_;
  if (kept) return 0;
  const auto keep = [&](const char* message) {
    kept.emplace(message, called.code->source, called.expression ? called.expression->span : Span{});
  };
  try {
    const Value answer = interpreter.call_back(called, args, nargs);
    assign(*result, answer.record());
    return 1;
  } catch (ScriptError& error) {
    kept.emplace(std::move(error));
  } catch (const std::bad_alloc&) {
    keep("out of memory");
  } catch (const std::exception& error) {
    keep(error.what());
  }
  return 0;
}

Value Interpreter::call_back(const Callee& callee, HostValue* args, int nargs) {
  const FrameScope frame(*this, callee.code->frame);
  const SourceScope source(source_, callee.code->source);
  const Expression* expression = callee.expression;
  if (!expression) fail(fmt::format("'{}' names no function here", callee.text.get()), {});
  const RunningMark mark({source_.get(), expression->span.begin, false});
  require_room(expression->span);
  if (!callee.takes_arguments) return evaluate(*expression);
  std::vector<Value> arguments;
  for (int i = 0; i < nargs; ++i) arguments.push_back(Value::sharing(args[i]));
  return call(std::get<Call>(expression->form).name, std::move(arguments), expression->span);
}

}  // namespace hvm
