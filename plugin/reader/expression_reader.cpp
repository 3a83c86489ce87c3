// reader/expression_reader.cpp: the forms of a quotation, and the values of its arguments

#include "reader/expression_reader.hpp"

#include <exception>
#include <new>

#include "array/table_slots.hpp"

namespace arrayfold {
namespace {

std::int32_t frame_slot(const HostCodeSlot& slot) { return load<std::int32_t>(slot.payload); }

/// The text of a symbol record, or of a string; empty for any other slot.
std::string_view name_in(const HostCodeSlot& slot) {
  if (slot.tag == SlotTag::string) return text_at(load<const char*>(slot.payload));
  if (slot.tag != SlotTag::node) return {};
  const auto* symbol = load<const HostSymbol*>(slot.payload);
  return symbol == nullptr ? std::string_view() : text_at(symbol->text);
}

/// The node that a wrapper of a name holds in place of the name itself.
const HostCodeNode* unwrapped(const HostCodeNode* node) {
  const HostCodeNode* wrapper = node_in(node->link, NodeKind::name_wrapper);
  if (wrapper == nullptr) return node;
  const auto* name = load<const HostCodeNode*>(wrapper->value.payload);
  if (name == nullptr || name->kind != NodeKind::name) std::terminate();
  return name;
}

// ---- The forms of a quotation

ArraySpec named_spec(std::string name, std::int32_t slot, const HostCodeSlot* args, std::uint32_t frame_base) {
  return {std::move(name), slot, args, frame_base, {}};
}

/// The argument chain of a call and the variable that may stand first in it, under this name.
ArraySpec spec_of_call(const HostCodeNode* call, std::string name, std::uint32_t frame_base) {
  const HostCodeNode* first = node_in(call->value);
  const bool by_variable =
      first != nullptr && first->kind == NodeKind::list_cell && first->value.tag == SlotTag::variable;
  return named_spec(std::move(name), by_variable ? frame_slot(first->value) : -1,
                    first == nullptr ? nullptr : &call->value, frame_base);
}

/// Form 1, a named call: `double(2, n)`.
std::optional<ArraySpec> read_named_call(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* call = node_in(link, NodeKind::call);
  if (call == nullptr) return std::nullopt;
  call = unwrapped(call);
  return spec_of_call(call, std::string(name_in(call->link)), frame_base);
}

/// Form 2, a quotation inside the quotation.
std::optional<ArraySpec> read_nested_quotation(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* quotation = node_in(link, NodeKind::quotation);
  if (quotation == nullptr) return std::nullopt;
  if (quotation->link.tag == SlotTag::variable)
    return named_spec("@@", frame_slot(quotation->link), nullptr, frame_base);
  const HostCodeNode* inner = node_in(quotation->link);
  if (inner == nullptr) return std::nullopt;
  inner = unwrapped(inner);
  return spec_of_call(inner, "@" + std::string(name_in(inner->link)), frame_base);
}

/// Form 3, a variable with an argument list.
std::optional<ArraySpec> read_slot_list(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* list = node_in(link, NodeKind::slot_list);
  if (list == nullptr || list->link.tag != SlotTag::variable) return std::nullopt;
  const HostCodeNode* inner = node_in(list->value, NodeKind::slot_list_inner);
  if (inner == nullptr) return std::nullopt;
  return named_spec("", frame_slot(list->link), &inner->value, frame_base);
}

/// Form 4, a variable that would name the dtype.
/// required: the variable is read by its raw slot and its text is dropped; the form never gives a result.
void read_named_variable(HostContext ctx, const HostCodeSlot& link) {
  const HostCodeNode* name = node_in(link, NodeKind::variable_name);
  if (name == nullptr || name->value.tag != SlotTag::variable) return;
  HostValue* variable = ctx->read_slot.get()(ctx, frame_slot(name->value));
  if (variable == nullptr) return;
  const std::string text(text_at(HVM_AsString(variable)));
}

/// Form 6, a variable alone.
std::optional<ArraySpec> read_variable(const HostCodeSlot& link, std::uint32_t frame_base) {
  if (link.tag != SlotTag::variable) return std::nullopt;
  return named_spec("@", frame_slot(link), nullptr, frame_base);
}

/// Form 5, an expression with a label.
std::optional<ArraySpec> read_labelled(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* labelled = node_in(link, NodeKind::labelled);
  if (labelled == nullptr) return std::nullopt;
  auto spec = read_named_call(labelled->link, frame_base);
  if (!spec) spec = read_variable(labelled->link, frame_base);
  if (spec) spec->label = std::string(name_in(labelled->value));
  return spec;
}

// ---- Arguments

/// Records of the host for the arguments of a call, given back on every way out.
class ArgumentRecords {
 public:
  ArgumentRecords(HostContext ctx, std::int64_t count) : ctx_(ctx), count_(count), records_(HVM_NewObjects(count)) {
    if (records_ == nullptr) throw std::bad_alloc();
  }
  ~ArgumentRecords() { HVM_FreeObjs(ctx_, records_, count_); }
  ArgumentRecords(const ArgumentRecords&) = delete;
  ArgumentRecords& operator=(const ArgumentRecords&) = delete;

  HostValue* first() { return records_; }

 private:
  HostContext ctx_;
  std::int64_t count_;
  HostValue* records_;
};

/// Calls a function of the host with what `arguments` evaluated to. False: the call failed.
bool call_host(const ExpressionEvaluator& arguments, const void* callee, HostValue* result) {
  const HostContext ctx = arguments.ctx();
  const auto call_function = ctx->call_function.get();
  const auto& values = arguments.results();
  if (values.empty()) return call_function(callee, ctx, nullptr, 0, result) != 0;
  const auto count = static_cast<int>(values.size());
  ArgumentRecords records(ctx, count);
  for (int n = 0; n < count; ++n) write_scalar(ctx, records.first() + n, values[static_cast<std::size_t>(n)]);
  return call_function(callee, ctx, records.first(), count, result) != 0;
}

ScalarRef evaluate_call(ExpressionEvaluator& evaluator, const HostCodeNode* call) {
  HostValue* result = evaluator.new_object();
  ExpressionEvaluator arguments(evaluator.ctx(), evaluator.frame_base());
  evaluate_cell_list(arguments, &call->value);
  if (!call_host(arguments, load<const void*>(call->link.payload), result)) return false;
  return read_value(result);
}

/// A quotation among the arguments becomes a table: its name, its variable's slot, its label, its arguments.
ScalarRef evaluate_quotation(ExpressionEvaluator& evaluator, const HostCodeNode* quotation) {
  const auto spec = read_named_call(quotation->link, evaluator.frame_base());
  if (!spec) return false;
  const HostContext ctx = evaluator.ctx();
  ExpressionEvaluator arguments(ctx, evaluator.frame_base());
  evaluate_cell_list(arguments, spec->args);
  HostValue* object = evaluator.new_object();
  KeySequence keys{0, force_table(ctx, object, 4), ctx};
  HVM_SetString(ctx, keys.next_slot(), spec->name.c_str());
  keys.add(spec->slot);
  HVM_SetString(ctx, keys.next_slot(), spec->label.c_str());
  for (const ScalarRef& argument : arguments.results()) write_scalar(ctx, keys.next_slot(), argument);
  return read_value(object);
}

}  // namespace

// ---- Interface

std::optional<ArraySpec> read_array_spec(HostContext ctx, HostValue* value) {
  if (value->tag != ValueTag::code) return std::nullopt;
  const auto* code = load<const HostCode*>(value->payload);
  if (code == nullptr || code->root.get() == nullptr) return std::nullopt;
  if (code->root.get()->kind != NodeKind::quotation) return std::nullopt;
  const HostCodeSlot& link = code->root.get()->link;
  const std::uint32_t frame_base = code->frame_base;
  if (auto spec = read_named_call(link, frame_base)) return spec;
  if (auto spec = read_nested_quotation(link, frame_base)) return spec;
  if (auto spec = read_slot_list(link, frame_base)) return spec;
  read_named_variable(ctx, link);
  if (auto spec = read_labelled(link, frame_base)) return spec;
  return read_variable(link, frame_base);
}

ExpressionEvaluator::ExpressionEvaluator(HostContext ctx, std::uint32_t frame_base)
    : ctx_(ctx), frame_base_(frame_base) {}

ExpressionEvaluator::~ExpressionEvaluator() {
  for (HostValue* object : objects_) HVM_FreeObj(ctx_, object);
}

HostValue* ExpressionEvaluator::new_object() {
  objects_.push_back(nullptr);  // the place first: a record that is made is then kept
  HostValue* object = HVM_NewObject();
  if (object == nullptr) {
    objects_.resize(objects_.size() - 1);
    throw std::bad_alloc();
  }
  return objects_.back() = object;
}

HostValue* ExpressionEvaluator::variable(std::uint32_t slot) const {
  const HostFrame* frame = ctx_->frame;
  const std::uint32_t slot_base = frame == nullptr ? 0 : frame->slot_base.get();
  return ctx_->read_slot.get()(ctx_, static_cast<int>(slot - slot_base + frame_base_));
}

void evaluate_cell_list(ExpressionEvaluator& evaluator, const HostCodeSlot* slot) {
  if (slot == nullptr) return;
  if (slot->tag != SlotTag::node) std::terminate();
  for (const HostCodeNode* cell = node_in(*slot); cell != nullptr; cell = node_in(*slot)) {
    evaluator.add_result(evaluate_cell(evaluator, slot));
    slot = &cell->link;
  }
}

ScalarRef evaluate_cell(ExpressionEvaluator& evaluator, const HostCodeSlot* slot) {
  const HostCodeNode* cell = node_in(*slot);
  if (cell == nullptr) return false;
  const HostCodeSlot& value = cell->value;
  switch (value.tag) {
    case SlotTag::string:
      return text_at(load<const char*>(value.payload));
    case SlotTag::integer:
      return load<std::int32_t>(value.payload);
    case SlotTag::real:
      return load<double>(value.payload);
    case SlotTag::variable:
      return read_value(evaluator.variable(load<std::uint32_t>(value.payload)));
    case SlotTag::wide_string: {
      const auto* text = load<const char16_t*>(value.payload);
      if (text == nullptr || value.length == 0) return wide_text_at(text);
      return std::u16string_view(text, value.length - 1);
    }
    default:
      break;
  }
  if (value.tag != SlotTag::node) return false;
  if (cell->kind == NodeKind::name && cell->link.tag == SlotTag::string)
    return text_at(load<const char*>(value.payload));
  const HostCodeNode* child = node_in(value);
  if (cell->kind != NodeKind::list_cell || child == nullptr) return false;
  return evaluate_node(evaluator, child);
}

ScalarRef evaluate_node(ExpressionEvaluator& evaluator, const HostCodeNode* node) {
  switch (node->kind) {
    case NodeKind::call:
      return evaluate_call(evaluator, node);
    case NodeKind::selection: {
      HostValue* object = evaluator.new_object();
      build_selection(evaluator, load<const HostCodeNode*>(node->value.payload), object);
      return read_value(object);
    }
    case NodeKind::array_literal: {
      HostValue* object = evaluator.new_object();
      build_literal_table(evaluator, node, object);
      return read_value(object);
    }
    case NodeKind::quotation:
      return evaluate_quotation(evaluator, node);
    default:
      return false;
  }
}

ScalarRef evaluate_slot(ExpressionEvaluator& evaluator, const HostCodeSlot* slot) {
  switch (slot->tag) {
    case SlotTag::string:
      return text_at(load<const char*>(slot->payload));
    case SlotTag::integer:
      return load<std::int32_t>(slot->payload);
    case SlotTag::real:
      return load<double>(slot->payload);
    case SlotTag::variable:
      return read_value(evaluator.variable(load<std::uint32_t>(slot->payload)));
    default:
      break;
  }
  // required: neither 64-bit integers nor wide strings are read here.
  const HostCodeNode* name = node_in(*slot, NodeKind::name);
  if (name == nullptr || name->link.tag != SlotTag::string) return false;
  return text_at(load<const char*>(name->link.payload));
}

}  // namespace arrayfold
