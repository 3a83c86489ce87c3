// second_host/passage.cpp: values, quotations and objects from hvm to the module and back

#include "second_host/passage.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "second_host/disguises.hpp"
#include "second_host/tables.hpp"

namespace second_host {

using arrayfold::HostCode;
using arrayfold::HostCodeNode;
using arrayfold::HostCodeSlot;
using arrayfold::HostContext;
using arrayfold::HostContextRecord;
using arrayfold::HostFrame;
using arrayfold::HostSymbol;
using arrayfold::load;
using arrayfold::NodeKind;
using arrayfold::SlotTag;
using arrayfold::store;

namespace {

Lifetime any_lifetime() { return static_cast<Lifetime>(choice(3)); }

/// A record that shows what something else owns: its lifetime is any, and `owned` means nothing unless it is a
/// temporary.
HostValue as_view(HostValue record) {
  record.lifetime = any_lifetime();
  record.owned = record.lifetime == Lifetime::temporary ? 0 : choice(UINT32_MAX);
  return record;
}

/// hvm's own operation of a name: those of the second host hide it here.
template <class Operation>
Operation operation_of_hvm(const char* name) {
  void* found = dlsym(RTLD_DEFAULT, name);
  if (found == nullptr) give_up(std::string("hvm lacks ") + name);
  return load<Operation>(&found);
}

}  // namespace

// ---- Contexts

struct Passage::Context : HostContextRecord {
  Passage* passage;
};

struct Passage::Code : HostCode {
  HostValue theirs;
};

Passage::Passage(HostContext theirs) : theirs_(theirs), slot_shift_(choice(1000)), frame_shift_(choice(1000)) {
  context_ = static_cast<Context*>(block(sizeof(Context)));
  auto* frame = static_cast<HostFrame*>(block(sizeof(HostFrame)));
  frame->slot_base = theirs->frame.get()->slot_base + slot_shift_;
  frame->copy_strings = by_chance() ? 1U << choice(32) : 0;
  context_->frame = frame;
  context_->call_function = call_function;
  context_->read_slot = read_slot;
  context_->passage = this;
}

Passage::~Passage() {
  for (const void* text : disguises_) remove_disguise(text);
  for (const auto& table : tables_) drop(table.second);
  for (Object* object : objects_) drop(object);
  for (void* block : blocks_) give_back(block);
}

HostContext Passage::ctx() { return context_; }

void* Passage::block(std::size_t size) {
  blocks_.push_back(nullptr);
  return blocks_.back() = take(size);
}

const char* Passage::copied(std::string_view text) {
  auto* copy = static_cast<char*>(block(text.size() + 1));
  std::copy(text.begin(), text.end(), copy);
  copy[text.size()] = '\0';
  return copy;
}

int Passage::call_function(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  Passage& passage = *static_cast<Context*>(ctx)->passage;
  std::vector<hvm::Value> theirs;
  for (int n = 0; n < nargs; ++n) theirs.push_back(passage.out(args[n]));
  hvm::Value value;
  const auto called = passage.callees_.find(callee);
  if (called == passage.callees_.end()) give_up("the module calls what is no function");
  const int returned = passage.theirs_->call_function.get()(called->second, passage.theirs_, hvm::records_of(theirs),
                                                            nargs, value.address());
  if (returned != 0) replace(result, copy_of(passage.in(value.record(), Tags::own)));
  return returned;
}

HostValue* Passage::read_slot(HostContext ctx, int slot) {
  Passage& passage = *static_cast<Context*>(ctx)->passage;
  const auto number = static_cast<std::uint32_t>(slot) - passage.frame_shift_;
  const HostValue* found = passage.theirs_->read_slot.get()(passage.theirs_, static_cast<int>(number));
  return found == nullptr ? nullptr : passage.place(*found, Tags::own);
}

// ---- To the module

HostValue Passage::in(const HostValue& theirs, Tags tags) {
  switch (theirs.tag) {
    case ValueTag::integer:
    case ValueTag::integer64:
    case ValueTag::real: {
      HostValue number = theirs.tag == ValueTag::integer ? integer(load<std::int32_t>(theirs.payload))
                         : theirs.tag == ValueTag::real  ? real(load<double>(theirs.payload))
                                                         : integer64(load<std::int64_t>(theirs.payload));
      number = tags == Tags::any ? disguised(number) : number;
      number.lifetime = any_lifetime();
      return number;
    }
    case ValueTag::string:
    case ValueTag::string_record:
    case ValueTag::converted_string:
    case ValueTag::wide_string:
      return as_view(text_in(theirs));
    case ValueTag::table:
      return as_view(table_in(hvm::table_of(theirs), tags));
    case ValueTag::code:
      return as_view(code_in(theirs));
    case ValueTag::object:
      return as_view(object_in(theirs));
    default:
      return nil(any_lifetime());
  }
}

HostValue* Passage::place(const HostValue& theirs, Tags tags) {
  auto* record = static_cast<HostValue*>(block(sizeof(HostValue)));
  *record = in(theirs, tags);
  return record;
}

HostValue Passage::text_in(const HostValue& theirs) {
  HostValue made;
  if (theirs.tag == ValueTag::wide_string) {
    made = wide_text(hvm::wide_text_of(theirs), false);
  } else {
    const std::string_view characters = hvm::text_of(theirs);
    const auto form = static_cast<TextForm>(choice(characters.empty() ? 3 : 4));
    made = text(characters, form);
  }
  auto* characters = load<void*>(made.payload);
  blocks_.push_back(characters);
  if (is_disguised_text(made)) {
    add_disguise(characters);
    disguises_.push_back(characters);
  }
  return made;
}

/// Every table of hvm has one table in a passage for each choice of tags: a table that is held twice stays one.
HostValue Passage::table_in(HostHash* theirs, Tags tags) {
  std::vector<HostHash*> open;
  const auto known = [&](HostHash* hash) {
    Table*& table = tables_[{hash, tags}];
    if (table == nullptr) {
      table = new_table();
      table->is_view = true;
      open.push_back(hash);
    }
    return table_record(table);
  };
  const HostValue record = known(theirs);
  while (!open.empty()) {
    HostHash* const hash = open.back();
    open.pop_back();
    std::vector<HostHashItem> entries;
    hvm::TableWalk walk(hash);
    while (const hvm::Entry entry = walk.next()) {
      HostHashItem item;
      spoil(&item, sizeof item);
      item.key = in(*entry.key, Tags::own);
      if (is_text(item.key)) {
        HostValue key = text(hvm::text_of(*entry.key), TextForm::string_record);
        blocks_.push_back(load<void*>(key.payload));
        item.key = as_view(key);
      }
      item.value =
          entry.value->tag == ValueTag::table ? as_view(known(hvm::table_of(*entry.value))) : in(*entry.value, tags);
      entries.push_back(item);
    }
    fill(*tables_[{hash, tags}], entries);
  }
  return record;
}

// ---- Objects

namespace {

/// What hvm's create callback returns for the object that is being shown to it.
Object* shown = nullptr;

void* create_shown() { return std::exchange(shown, nullptr); }

void destroy_shown(HostContext, void* content) {
  auto* object = static_cast<Object*>(content);
  object->companion = nullptr;
  drop(object);
}

}  // namespace

Object* behind(const HostValue& theirs) {
  const HostAny* any = hvm::object_of(theirs);
  if (hvm::callbacks_of(any).destroy != destroy_shown) give_up("hvm has an object of another module");
  return static_cast<Object*>(any->content.get());
}

HostValue Passage::object_in(const HostValue& theirs) {
  Object* const object = behind(theirs);
  hold(object);
  objects_.push_back(object);
  HostValue record = nil();
  record.tag = ValueTag::object;
  store<HostAny*>(record.payload, object);
  return record;
}

// ---- Quotations

/// Copies a tree, node by node. The names of dtypes come with and without a wrapper, functions by symbol or by text,
/// literal text wide or narrow, with its length or without.
class Passage::TreeCopy {
 public:
  explicit TreeCopy(Passage& passage) : passage_(passage) {}

  HostCodeNode* copy(const HostCodeNode* root) {
    HostCodeNode* const made = copied(root, Place::plain);
    while (!open_.empty()) {
      const Open next = open_.back();
      open_.pop_back();
      fill(next);
    }
    return made;
  }

 private:
  /// Where a node stands, as far as its text and its calls depend on it.
  enum class Place { plain, quoted, data };
  struct Open {
    const HostCodeNode* from;
    HostCodeNode* to;
    Place place;
  };

  template <class T>
  T* made() {
    return static_cast<T*>(passage_.block(sizeof(T)));
  }

  HostCodeNode* copied(const HostCodeNode* node, Place place) {
    if (node == nullptr) return nullptr;
    HostCodeNode*& known = nodes_[node];
    if (known == nullptr) {
      known = made<HostCodeNode>();
      open_.push_back({node, known, place});
    }
    return known;
  }

  static void lead(HostCodeSlot& slot, const void* to) {
    slot.tag = SlotTag::node;
    store<const void*>(slot.payload, to);
  }

  void fill(const Open& open) {
    const HostCodeNode& from = *open.from;
    HostCodeNode& to = *open.to;
    const NodeKind kind = from.kind;
    to.kind = kind;
    if (kind == NodeKind::call) return fill_call(from, to, open.place);
    const bool is_quotation = kind == NodeKind::quotation || kind == NodeKind::labelled;
    const bool is_data = kind == NodeKind::data_row || open.place == Place::data;
    const bool keeps_text = is_data || kind == NodeKind::name;
    slot(from.link, to.link, is_quotation ? Place::quoted : Place::plain, !keeps_text);
    if (kind == NodeKind::variable_name) {
      to.value.tag = from.value.tag;
      store<std::uint64_t>(to.value.payload, load<std::uint32_t>(from.value.payload) + passage_.frame_shift_);
    } else if (kind == NodeKind::name) {
      lead(to.value, passage_.copied(load<const char*>(from.value.payload)));
    } else if (kind == NodeKind::labelled) {
      name(to.value, load<const char*>(from.value.payload));
    } else {
      slot(from.value, to.value, is_data ? Place::data : Place::plain, true);
    }
  }

  /// Writes a name as text or as a symbol, and returns what the slot leads to.
  const void* name(HostCodeSlot& slot, const char* text) {
    const char* const copy = passage_.copied(text);
    if (by_chance()) {
      slot.tag = SlotTag::string;
      store<const char*>(slot.payload, copy);
      return copy;
    }
    auto* symbol = made<HostSymbol>();
    symbol->text = copy;
    lead(slot, symbol);
    return symbol;
  }

  void fill_call(const HostCodeNode& from, HostCodeNode& to, Place place) {
    const auto* callee = load<const HostSymbol*>(from.link.payload);
    if (place == Place::quoted && by_chance()) {
      auto* wrapped = made<HostCodeNode>();
      wrapped->kind = NodeKind::name;
      name(wrapped->link, callee->text);
      slot(from.value, wrapped->value, Place::plain, true);
      auto* wrapper = made<HostCodeNode>();
      wrapper->kind = NodeKind::name_wrapper;
      lead(wrapper->value, wrapped);
      return lead(to.link, wrapper);
    }
    passage_.callees_[name(to.link, callee->text)] = callee;
    slot(from.value, to.value, Place::plain, true);
  }

  /// `may_change`: literal text may be wide, and without its length.
  void slot(const HostCodeSlot& from, HostCodeSlot& to, Place place, bool may_change) {
    to.tag = from.tag;
    switch (from.tag) {
      case SlotTag::node:
        return lead(to, copied(load<const HostCodeNode*>(from.payload), place));
      case SlotTag::string: {
        const std::string_view characters(load<const char*>(from.payload), from.length - 1);
        std::u16string wide;
        if (may_change && by_chance() && !characters.empty() && widen(characters, wide)) return text(to, wide, true);
        store<const char*>(to.payload, passage_.copied(characters));
        to.length = may_change && measures_alike(characters) && by_chance() ? 0U : from.length.get();
        return;
      }
      case SlotTag::wide_string:
        return text(to, {load<const char16_t*>(from.payload), from.length - 1}, false);
      case SlotTag::variable:
        store<std::uint32_t>(to.payload, load<std::uint32_t>(from.payload) + passage_.slot_shift_);
        return;
      case SlotTag::integer:
        store<std::int32_t>(to.payload, load<std::int32_t>(from.payload));
        return;
      default:  // also what ends a row of a data literal, whose payload is read
        std::memcpy(to.payload, from.payload, sizeof to.payload);
    }
  }

  template <class Text>
  static bool measures_alike(const Text& characters) {
    return characters.find(typename Text::value_type{}) == Text::npos;
  }

  void text(HostCodeSlot& to, std::u16string_view characters, bool is_disguise) {
    const std::size_t bytes = characters.size() * sizeof(char16_t);
    auto* copy = static_cast<char16_t*>(passage_.block(bytes + sizeof(char16_t)));
    std::memcpy(copy, characters.data(), bytes);
    copy[characters.size()] = u'\0';
    to.tag = SlotTag::wide_string;
    store<const char16_t*>(to.payload, copy);
    const bool is_measured = measures_alike(characters) && by_chance();
    to.length = is_measured ? 0U : static_cast<std::uint32_t>(characters.size() + 1);
    if (!is_disguise) return;
    add_disguise(copy);
    passage_.disguises_.push_back(copy);
  }

  Passage& passage_;
  std::map<const HostCodeNode*, HostCodeNode*> nodes_;
  std::vector<Open> open_;
};

HostValue Passage::code_in(const HostValue& theirs) {
  const auto* from = load<const HostCode*>(theirs.payload);
  auto* code = static_cast<Code*>(block(sizeof(Code)));
  code->root = TreeCopy(*this).copy(from->root);
  code->frame_base = from->frame_base + frame_shift_;
  code->theirs = theirs;
  HostValue record = nil();
  record.tag = ValueTag::code;
  store<const HostCode*>(record.payload, code);
  return record;
}

bool has_calls(const HostValue& quotation) {
  const HostCodeNode* const root = load<const HostCode*>(quotation.payload)->root;
  std::vector<const HostCodeNode*> open{root};
  std::set<const HostCodeNode*> seen;
  while (!open.empty()) {
    const HostCodeNode* const node = open.back();
    open.pop_back();
    if (node == nullptr || !seen.insert(node).second) continue;
    const bool is_call = node->kind == NodeKind::call;
    if (is_call && load<const HostCodeNode*>(root->link.payload) != node) return true;
    const bool is_text = node->kind == NodeKind::name;
    if (!is_call && node->link.tag == SlotTag::node) open.push_back(load<const HostCodeNode*>(node->link.payload));
    if (!is_text && node->value.tag == SlotTag::node) open.push_back(load<const HostCodeNode*>(node->value.payload));
  }
  return false;
}

// ---- To hvm

namespace {

hvm::Value shown_object(HostContext theirs, Object* object) {
  if (object == nullptr) return {};
  if (object->companion != nullptr) return hvm::Value::object(object->companion);
  hold(object);
  shown = object;
  hvm::Value value = hvm::Value::object(theirs, manager_of(object)->name);
  if (shown != nullptr) give_up("hvm makes no object");
  object->companion = hvm::object_of(value.record());
  return value;
}

hvm::Value number_out(const HostValue& ours) {
  switch (native_tag(ours)) {
    case ValueTag::integer:
      return hvm::Value(as_integer(ours));
    case ValueTag::integer64:
      return hvm::Value(as_integer64(ours));
    default:
      return hvm::Value(as_real(ours));
  }
}

}  // namespace

hvm::Value Passage::out(const HostValue& ours) {
  std::map<const Table*, hvm::Value> tables;
  std::vector<const Table*> open;
  const auto value_of = [&](const HostValue& value) -> hvm::Value {
    if (is_number(value)) return number_out(value);
    if (value.tag == ValueTag::table) {
      const Table* const table = second_host::table_in(value);
      if (table == nullptr) return {};
      const auto [known, is_new] = tables.emplace(table, hvm::Value());
      if (is_new) {
        known->second = hvm::Value::table();
        open.push_back(table);
      }
      return known->second;
    }
    if (value.tag == ValueTag::object) return shown_object(theirs_, second_host::object_in(value));
    if (value.tag == ValueTag::code)
      return hvm::Value::sharing(static_cast<const Code*>(load<const HostCode*>(value.payload))->theirs);
    if (is_text(value) && (value.tag != ValueTag::wide_string || is_disguised_text(value)))
      return hvm::Value(utf8_of(value));
    return is_text(value) ? hvm::Value(wide_characters(value)) : hvm::Value();
  };
  hvm::Value result = value_of(ours);
  while (!open.empty()) {
    const Table* const table = open.back();
    open.pop_back();
    for (const HostHashItem* entry : table->entries) {
      const hvm::Value key = is_text(entry->key) ? hvm::Value(utf8_of(entry->key)) : number_out(entry->key);
      hvm::set_entry(hvm::table_of(tables[table].record()), key.record(), value_of(entry->value).record());
    }
  }
  return result;
}

void show_type(const char* name, arrayfold::MethodCallback method, arrayfold::OperatorCallback op) {
  const auto make = operation_of_hvm<decltype(&arrayfold::HVM_NewAnyMan)>("HVM_NewAnyMan");
  const auto put = operation_of_hvm<decltype(&arrayfold::HVM_RegisterAnyMan)>("HVM_RegisterAnyMan");
  put(name, make(name, create_shown, destroy_shown, method, op, nullptr));
}

}  // namespace second_host
