// support/code_builder.cpp: chains of cells, and the scripted answers

#include "support/code_builder.hpp"

#include <stdexcept>

namespace arrayfold::test {
namespace {

ScriptedHost* scripted = nullptr;

std::uint32_t recorded(std::size_t characters, Length length) {
  return length == Length::recorded ? static_cast<std::uint32_t>(characters + 1) : 0;
}

}  // namespace

HostCodeNode* CodeBuilder::node(NodeKind kind, HostCodeSlot link, HostCodeSlot value) {
  HostCodeNode& made = nodes_.emplace_back();
  made.kind = kind;
  made.link = link;
  made.value = value;
  return &made;
}

HostCodeSlot CodeBuilder::text(std::string_view characters, Length length) {
  const std::string& kept = texts_.emplace_back(characters);
  return slot_of(SlotTag::string, kept.c_str(), recorded(kept.size(), length));
}

HostCodeSlot CodeBuilder::wide_text(std::u16string_view characters, Length length) {
  const std::u16string& kept = wide_texts_.emplace_back(characters);
  return slot_of(SlotTag::wide_string, kept.c_str(), recorded(kept.size(), length));
}

HostCodeSlot CodeBuilder::symbol(std::string_view name) {
  const HostCodeSlot slot = symbol_without_text();
  symbols_.back().text = texts_.emplace_back(name).c_str();
  return slot;
}

HostCodeSlot CodeBuilder::symbol_without_text() {
  return slot_of<const HostSymbol*>(SlotTag::node, &symbols_.emplace_back());
}

HostCodeSlot CodeBuilder::list(const std::vector<HostCodeSlot>& arguments) {
  HostCodeSlot first = nowhere();
  HostCodeNode* last = nullptr;
  for (const HostCodeSlot& argument : arguments) {
    HostCodeNode* cell = node(NodeKind::list_cell, nowhere(), argument);
    (last == nullptr ? first : last->link) = leads_to(cell);
    last = cell;
  }
  return first;
}

HostCodeNode* CodeBuilder::call(std::string_view name, const std::vector<HostCodeSlot>& arguments) {
  return node(NodeKind::call, symbol(name), list(arguments));
}

HostCodeNode* CodeBuilder::chain(NodeKind first, const std::vector<HostCodeSlot>& links) {
  HostCodeNode* begin = nullptr;
  HostCodeNode* last = nullptr;
  for (const HostCodeSlot& link : links) {
    HostCodeNode* cell = node(begin == nullptr ? first : NodeKind::list_cell, link);
    if (last != nullptr) last->value = leads_to(cell);
    if (begin == nullptr) begin = cell;
    last = cell;
  }
  return begin;
}

HostCodeNode* CodeBuilder::array_literal(const std::vector<HostCodeNode*>& items) {
  std::vector<HostCodeSlot> links;
  for (const HostCodeNode* item : items) links.push_back(leads_to(item));
  return node(NodeKind::array_literal, nowhere(), leads_to(chain(NodeKind::list_cell, links)));
}

HostCodeNode* CodeBuilder::element(HostCodeSlot literal) {
  return node(NodeKind::literal_item, leads_to(node(NodeKind::list_cell, nowhere(), literal)), absent());
}

HostCodeNode* CodeBuilder::pair(HostCodeSlot key, HostCodeSlot value) {
  return node(NodeKind::literal_item, leads_to(node(NodeKind::list_cell, nowhere(), key)), value);
}

HostCodeNode* CodeBuilder::row(const std::vector<HostCodeSlot>& elements) {
  return chain(NodeKind::data_row, elements);
}

HostCodeNode* CodeBuilder::rows(const std::vector<HostCodeNode*>& inner) {
  std::vector<HostCodeSlot> links;
  for (const HostCodeNode* each : inner) links.push_back(leads_to(each));
  return chain(NodeKind::data_row, links);
}

HostCodeNode* CodeBuilder::selection(std::uint32_t frame_slot, const std::vector<HostCodeSlot>& chosen) {
  return node(NodeKind::selection, variable(frame_slot), leads_to(chain(NodeKind::list_cell, chosen)));
}

Value CodeBuilder::code(HostCodeNode* root, std::uint32_t frame_base) {
  HostCode& made = codes_.emplace_back();
  made.root = root;
  made.frame_base = frame_base;
  HostValue record{};
  record.tag = ValueTag::code;
  store<HostCode*>(record.payload, &made);
  return Value::sharing(record);
}

ScriptedHost::ScriptedHost(HostContext ctx) : ctx_(ctx), before_(*ctx) {
  if (scripted != nullptr) throw std::logic_error("one scripted host at a time");
  scripted = this;
  frame_.copy_strings = 1;
  ctx->frame = &frame_;
  ctx->call_function = call_function;
  ctx->read_slot = read_slot;
}

ScriptedHost::~ScriptedHost() {
  ctx_->frame = before_.frame;
  ctx_->call_function = before_.call_function;
  ctx_->read_slot = before_.read_slot;
  scripted = nullptr;
}

void ScriptedHost::define(std::string_view name, Function function) {
  functions_[std::string(name)] = std::move(function);
}

int ScriptedHost::call_function(const void* callee, HostContext, HostValue* args, int nargs, HostValue* result) {
  const char* name = static_cast<const HostSymbol*>(callee)->text;
  if (scripted->keeps_) {
    Call call{name, {}, args != nullptr};
    for (int n = 0; n < nargs; ++n) call.arguments.push_back(hvm::printed(args[n]));
    scripted->calls_.push_back(call);
  }
  const auto found = scripted->functions_.find(std::string_view(name));
  return found == scripted->functions_.end() ? 0 : found->second(args, nargs, result);
}

HostValue* ScriptedHost::read_slot(HostContext, int slot) {
  if (scripted->keeps_) scripted->slots_read_.push_back(slot);
  const auto found = scripted->variables_.find(slot);
  return found == scripted->variables_.end() ? nullptr : found->second.address();
}

}  // namespace arrayfold::test
