// script/run/code.cpp: quotations as the records that a module reads

#include "script/run/code.hpp"

#include <utility>

#include "script/run/tree_builder.hpp"

namespace hvm {
namespace {

using arrayfold::store;

/// The state of every variable of a quotation. Each combination of states has a tree of its own.
std::string states_of(const Quotation& quotation, const VariableView& variables) {
  std::string states;
  for (const Variable* variable : quotation.variables) states += static_cast<char>(variables.state(*variable));
  return states;
}

}  // namespace

void LiveCodes::add(Code& code) {
  code.serial = ++last_serial_;
  codes_.emplace(code.serial, &code);
}

const Code* LiveCodes::find(const HostValue& value) const {
  if (value.tag != ValueTag::code) return nullptr;
  const std::uint64_t high = arrayfold::load<std::uint32_t>(value.rest);
  const auto entry = codes_.find(high << 32 | value.owned);
  return entry == codes_.end() ? nullptr : entry->second;
}

Value value_of(const Code& code) {
  HostValue record = nil_record();
  record.tag = ValueTag::code;
  const HostCode* seen_by_modules = &code;
  store<const HostCode*>(record.payload, seen_by_modules);
  record.owned = static_cast<std::uint32_t>(code.serial);
  store<std::uint32_t>(record.rest, static_cast<std::uint32_t>(code.serial >> 32));
  return Value::taking(record);
}

ScopeCodes::~ScopeCodes() {
  for (const auto& entry : codes_)
    if (entry.second) live_.remove(*entry.second);
}

const Code& ScopeCodes::code_of(const std::shared_ptr<const Quotation>& quotation, const SourcePtr& source,
                                Frame* frame, std::uint32_t frame_base, const VariableView& variables) {
  std::pair<const Quotation*, std::string> key(quotation.get(), states_of(*quotation, variables));
  std::unique_ptr<Code>& place = codes_[std::move(key)];
  if (place) return *place;
  auto code = std::make_unique<Code>();
  code->frame_base = frame_base;
  code->quotation = quotation;
  code->source = source;
  code->frame = frame;
  build_tree(*code, variables);
  live_.add(*code);
  place = std::move(code);
  return *place;
}

}  // namespace hvm
