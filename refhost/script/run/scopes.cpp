// script/run/scopes.cpp: the scopes of a running script

#include "script/run/scopes.hpp"

#include <algorithm>

namespace hvm {
namespace {

/// The first number of a local variable.
constexpr std::uint32_t first_local = std::uint32_t{1} << 24;
/// The number at which the slots of trees begin.
constexpr std::uint32_t first_tree_slot = 16;

/// Trees of the outermost level live as long as the interpreter, and so does their text; those of a fn end with it.
enum class LiteralText { may_be_referenced, must_be_copied };

HostFrame frame_record(LiteralText text) {
  HostFrame record{};
  record.slot_base = first_tree_slot;
  record.copy_strings = text == LiteralText::must_be_copied ? 1 : 0;
  return record;
}

}  // namespace

Frame::Frame(const Function& called, const Frame* older, LiveCodes& live)
    : function(&called),
      locals(called.locals.size()),
      base(older ? older->base + older->width() : first_local),
      record(frame_record(LiteralText::must_be_copied)),
      codes(live) {}

std::uint32_t Frame::width() const { return static_cast<std::uint32_t>(std::max<std::size_t>(locals.size(), 1)); }

Scopes::Scopes(Context& context) : context_(context), outermost_record_(frame_record(LiteralText::may_be_referenced)) {
  run_in(nullptr);
}

void Scopes::run_in(Frame* frame) {
  running_ = frame;
  context_.use_frame(frame ? &frame->record : &outermost_record_);
}

void Scopes::make_room() { globals_.resize(global_names_.size()); }

void Scopes::set_global(const std::string& name, Value value) {
  const std::size_t slot = global_names_.slot_of(name);
  make_room();
  globals_[slot].give(std::move(value));
}

const Value* Scopes::global(const std::string& name) const {
  // A script that could not be read to its end leaves names without a slot.
  const auto slot = global_names_.find(name);
  return slot && *slot < globals_.size() && globals_[*slot].is_set ? &globals_[*slot].value : nullptr;
}

std::vector<std::string> Scopes::set_globals() const {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < globals_.size(); ++i)
    if (globals_[i].is_set) names.push_back(global_names_.name(i));
  return names;
}

std::uint32_t Scopes::tree_slot(const Variable& variable) const {
  const auto number = first_tree_slot + static_cast<std::uint32_t>(variable.slot);
  // The difference may wrap around; the module's sum wraps back.
  return variable.is_local ? number : number - running_base();
}

std::vector<std::string_view> Scopes::visible_names() const {
  std::vector<std::string_view> names;
  for (std::size_t i = 0; i < globals_.size(); ++i)
    if (globals_[i].is_set) names.push_back(global_names_.name(i));
  if (running_) names.insert(names.end(), running_->function->locals.begin(), running_->function->locals.end());
  return names;
}

HostValue* Scopes::numbered(int number) {
  const auto unsigned_number = static_cast<std::uint32_t>(number);
  if (unsigned_number < globals_.size()) return globals_[unsigned_number].value.address();
  const auto above = std::upper_bound(frames_.begin(), frames_.end(), unsigned_number,
                                      [](std::uint32_t x, const Frame* frame) { return x < frame->base; });
  if (number < 0 || above == frames_.begin()) return arrayfold::HVM_GetGlobalNilObj();
  Frame& frame = **(above - 1);
  const std::uint32_t local = unsigned_number - frame.base;
  return local < frame.locals.size() ? frame.locals[local].value.address() : arrayfold::HVM_GetGlobalNilObj();
}

const Code& Scopes::code_of(const std::shared_ptr<const Quotation>& quotation, const SourcePtr& source,
                            const VariableView& variables) {
  ScopeCodes& codes = running_ ? running_->codes : outermost_codes_;
  return codes.code_of(quotation, source, running_, running_base(), variables);
}

CallScope::CallScope(Scopes& scopes, const Function& function, std::vector<Value> arguments)
    : scopes_(scopes),
      frame_(function, scopes.frames_.empty() ? nullptr : scopes.frames_.back(), scopes.live_codes_),
      outer_(scopes.running_) {
  for (std::size_t i = 0; i < arguments.size(); ++i) frame_.locals[i].give(std::move(arguments[i]));
  scopes_.frames_.push_back(&frame_);
  scopes_.run_in(&frame_);
}

CallScope::~CallScope() {
  scopes_.run_in(outer_);
  scopes_.frames_.pop_back();
}

}  // namespace hvm
