// reader/array_spec.cpp: the forms of a quotation

#include "reader/array_spec.hpp"

#include "reader/expression_nodes.hpp"

namespace arrayfold {
namespace {

/// The slot of a variable as the record keeps it: signed, so that -1 stands for none.
std::int32_t slot_number(const HostCodeSlot& slot) { return static_cast<std::int32_t>(frame_slot(slot)); }

ArraySpec named_spec(std::string name, std::int32_t slot, const HostCodeSlot* args, std::uint32_t frame_base) {
  return {std::move(name), slot, args, frame_base, {}};
}

/// The argument chain of a call and the variable that may stand first in it, under this name.
ArraySpec spec_of_call(const HostCodeNode* call, std::string name, std::uint32_t frame_base) {
  const HostCodeNode* first = node_in(call->value);
  const bool by_variable =
      first != nullptr && first->kind == NodeKind::list_cell && first->value.tag == SlotTag::variable;
  return named_spec(std::move(name), by_variable ? slot_number(first->value) : -1,
                    first == nullptr ? nullptr : &call->value, frame_base);
}

/// Form 2, a quotation inside the quotation.
std::optional<ArraySpec> read_nested_quotation(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* quotation = node_in(link, NodeKind::quotation);
  if (quotation == nullptr) return std::nullopt;
  if (quotation->link.tag == SlotTag::variable)
    return named_spec("@@", slot_number(quotation->link), nullptr, frame_base);
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
  return named_spec("", slot_number(list->link), &inner->value, frame_base);
}

/// Form 4, a variable that would name the dtype.
/// required: the variable is read by its raw slot and its text is dropped; the form never gives a result.
void read_named_variable(HostContext ctx, const HostCodeSlot& link) {
  const HostCodeNode* name = node_in(link, NodeKind::variable_name);
  if (name == nullptr || name->value.tag != SlotTag::variable) return;
  HostValue* variable = ctx->read_slot.get()(ctx, slot_number(name->value));
  if (variable == nullptr) return;
  const std::string text(text_at(HVM_AsString(variable)));
}

/// Form 6, a variable alone.
std::optional<ArraySpec> read_variable(const HostCodeSlot& link, std::uint32_t frame_base) {
  if (link.tag != SlotTag::variable) return std::nullopt;
  return named_spec("@", slot_number(link), nullptr, frame_base);
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

}  // namespace

// Form 1, a named call.
std::optional<ArraySpec> read_named_call(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* call = node_in(link, NodeKind::call);
  if (call == nullptr) return std::nullopt;
  call = unwrapped(call);
  return spec_of_call(call, std::string(name_in(call->link)), frame_base);
}

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

}  // namespace arrayfold
