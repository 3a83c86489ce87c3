// fuzz/tree_decoder.cpp: the letters of a tree

#include "fuzz/tree_decoder.hpp"

#include <limits>
#include <string>

namespace arrayfold::fuzz {
namespace {

constexpr int largest_tree = 2000;
constexpr int deepest_child = 12;

/// Where null is as good as a node.
template <class Change>
HostCodeNode* changed(HostCodeNode* node, Change change) {
  if (node != nullptr) change(*node);
  return node;
}

}  // namespace

// ---- Building blocks

HostCodeNode* TreeDecoder::make(NodeKind kind) {
  if (spent_ >= largest_tree) return nullptr;
  ++spent_;
  HostCodeNode& node = nodes_.emplace_back();
  node.kind = kind;
  return &node;
}

HostCodeNode* TreeDecoder::finish(Pool& pool, HostCodeNode* node, int spent_before) {
  if (node != nullptr) pool.push_back({node, spent_ - spent_before});
  return node;
}

HostCodeNode* TreeDecoder::shared(const Pool& pool) {
  if (pool.empty()) return nullptr;
  const Finished& chosen = pool[bytes_.byte() % pool.size()];
  if (spent_ + chosen.size > largest_tree) return nullptr;
  spent_ += chosen.size;
  return chosen.node;
}

NodeKind TreeDecoder::any_kind() {
  static constexpr NodeKind kinds[] = {NodeKind::call,          NodeKind::selection,     NodeKind::literal_open,
                                       NodeKind::literal_close, NodeKind::literal_item,  NodeKind::slot_list,
                                       NodeKind::name_wrapper,  NodeKind::array_literal, NodeKind::name,
                                       NodeKind::variable_name, NodeKind::list_cell,     NodeKind::data_row,
                                       NodeKind::quotation,     NodeKind::range,         NodeKind::slot_list_inner,
                                       NodeKind::labelled,      static_cast<NodeKind>(0)};
  return kinds[bytes_.byte() % std::size(kinds)];
}

/// A lasting copy of a text, with its terminator.
const char* TreeDecoder::lasting(std::string_view text) {
  auto& block = texts_.emplace_back(std::make_unique<std::byte[]>(text.size() + 1));
  std::memcpy(block.get(), text.data(), text.size());
  return static_cast<const char*>(static_cast<const void*>(block.get()));
}

const void* TreeDecoder::symbol(std::string_view name) {
  // A node's size and a symbol's text: readers look at the kind before they know which of the two it is.
  HostCodeNode& node = nodes_.emplace_back();
  const bool has_text = bytes_.byte() != '0';
  store<const char*>(node.link.payload, has_text ? lasting(name) : nullptr);
  return &node;
}

std::string_view TreeDecoder::dtype() {
  switch (bytes_.pick("dbilfcDe@")) {
    case 'b':
      return "bool";
    case 'i':
      return "int";
    case 'l':
      return "int64";
    case 'f':
      return "float";
    case 'c':
      return "complex";
    case 'D':
      return "Double";
    case 'e':
      return "";
    case '@':
      return "@";
    default:
      return "double";
  }
}

std::string_view TreeDecoder::word() {
  static constexpr std::string_view words[] = {"", "k", "z", "double", "a longer text", "\xc3\xa9"};
  return words[bytes_.byte() % std::size(words)];
}

// ---- Slots

void TreeDecoder::lead_to(HostCodeSlot& slot, const void* payload, SlotTag tag) {
  slot.tag = tag;
  store<const void*>(slot.payload, payload);
}

void TreeDecoder::name_variable(HostCodeSlot& slot) {
  slot.tag = SlotTag::variable;
  store<std::int32_t>(slot.payload, bytes_.small_number());
}

void TreeDecoder::write_text(HostCodeSlot& slot, std::string_view text, bool with_length) {
  lead_to(slot, lasting(text), SlotTag::string);
  if (with_length) slot.length = static_cast<std::uint32_t>(text.size() + 1);
}

void TreeDecoder::write_wide_text(HostCodeSlot& slot) {
  const std::size_t length = bytes_.byte() % 4;
  const std::u16string text(length, u'w');
  const std::size_t size = (length + 1) * sizeof(char16_t);
  auto& block = texts_.emplace_back(std::make_unique<std::byte[]>(size));
  std::memcpy(block.get(), text.data(), size);
  lead_to(slot, block.get(), SlotTag::wide_string);
  if (bytes_.byte() % 2 == 0) slot.length = static_cast<std::uint32_t>(length + 1);
}

void TreeDecoder::write_unknown(HostCodeSlot& slot) {
  static constexpr std::uint32_t tags[] = {1, 6, 8, 9, 11, 77, 0xffffffff};
  slot.tag = static_cast<SlotTag>(tags[bytes_.byte() % std::size(tags)]);
  store<std::uint64_t>(slot.payload, 0xdead0000 + bytes_.byte());
}

bool TreeDecoder::write_literal(HostCodeSlot& slot, char letter) {
  static constexpr double reals[] = {0.0, 1.0, 2.0, -1.5, 0.5, 3.0, std::numeric_limits<double>::quiet_NaN()};
  switch (letter) {
    case 'i':
      slot.tag = SlotTag::integer;
      store<std::int32_t>(slot.payload, bytes_.small_number());
      return true;
    case 'r':
      slot.tag = SlotTag::real;
      store<double>(slot.payload, reals[bytes_.byte() % std::size(reals)]);
      return true;
    case 'l':
      slot.tag = SlotTag::integer64;
      store<std::int64_t>(slot.payload, bytes_.small_number());
      return true;
    case 't':
      write_text(slot, word(), bytes_.byte() % 2 == 0);
      return true;
    case 'w':
      write_wide_text(slot);
      return true;
    case '0':  // a text that is missing
      lead_to(slot, nullptr, bytes_.byte() % 2 == 0 ? SlotTag::string : SlotTag::wide_string);
      slot.length = bytes_.byte() % 3;
      return true;
    default:
      return false;
  }
}

/// Where a name stands: a symbol, a text, or something that names nothing.
void TreeDecoder::write_name(HostCodeSlot& slot, std::string_view name) {
  switch (bytes_.pick("st0vu")) {
    case 's':
      return lead_to(slot, symbol(name));
    case 't':
      return write_text(slot, name, false);
    case 'v':
      return name_variable(slot);
    case 'u':
      return write_unknown(slot);
    default:
      return lead_to(slot, nullptr, bytes_.byte() % 2 == 0 ? SlotTag::node : SlotTag::string);
  }
}

// ---- Quotations

const HostCode* TreeDecoder::quotation_of(void (TreeDecoder::*write_link)(HostCodeSlot&)) {
  HostCode& code = codes_.emplace_back();
  code.frame_base = bytes_.byte() % 3;
  const NodeKind kind = bytes_.pick("qx") == 'q' ? NodeKind::quotation : any_kind();
  HostCodeNode* root = make(kind);
  code.root = root;
  if (root != nullptr) (this->*write_link)(root->link);
  return &code;
}

const HostCode* TreeDecoder::code() { return quotation_of(&TreeDecoder::write_quoted); }
const HostCode* TreeDecoder::data_literal() { return quotation_of(&TreeDecoder::write_data); }

void TreeDecoder::write_data(HostCodeSlot& link) { lead_to(link, row(0)); }

void TreeDecoder::write_quoted(HostCodeSlot& link) {
  switch (bytes_.pick("cfqsnldu0x")) {
    case 'c':
      return lead_to(link, call(dtype(), 0));
    case 'f':
      return name_variable(link);
    case 'q':
      return lead_to(link, inner_quotation(0));
    case 's':
      return lead_to(link, slot_list());
    case 'n':
      return lead_to(link, changed(make(NodeKind::variable_name), [&](auto& node) { name_variable(node.value); }));
    case 'l':
      return lead_to(link, labelled());
    case 'd':
      return write_data(link);
    case 'u':
      return write_unknown(link);
    case 'x':
      return lead_to(link, make(any_kind()));
    default:
      return lead_to(link, nullptr);
  }
}

HostCodeNode* TreeDecoder::call(std::string_view name, int depth) {
  HostCodeNode* call = make(NodeKind::call);
  if (call == nullptr) return nullptr;
  HostCodeNode* named = call;
  if (bytes_.pick("nw") == 'w') {  // the name, and what follows it, stand in a wrapper
    HostCodeNode* wrapper = make(NodeKind::name_wrapper);
    named = make(NodeKind::name);
    if (named == nullptr) return call;
    lead_to(wrapper->value, named);
    lead_to(call->link, wrapper);
    lead_to(call->value, depth == 0 ? nullptr : argument_chain(depth));
  }
  write_name(named->link, name);
  lead_to(named->value, argument_chain(depth));
  return call;
}

/// A quotation inside another: of a variable, of a call, or of another node with a name.
HostCodeNode* TreeDecoder::inner_quotation(int depth) {
  HostCodeNode* quotation = make(NodeKind::quotation);
  if (quotation == nullptr) return nullptr;
  switch (bytes_.pick("cvx0")) {
    case 'c':
      lead_to(quotation->link, call(dtype(), depth + 1));
      break;
    case 'v':
      name_variable(quotation->link);
      break;
    case 'x': {
      const NodeKind kind = any_kind();
      lead_to(quotation->link, changed(make(kind), [&](auto& node) { write_name(node.link, dtype()); }));
      break;
    }
    default:
      break;
  }
  return quotation;
}

HostCodeNode* TreeDecoder::slot_list() {
  return changed(make(NodeKind::slot_list), [&](HostCodeNode& list) {
    name_variable(list.link);
    HostCodeNode* inner = make(bytes_.pick("ix") == 'i' ? NodeKind::slot_list_inner : any_kind());
    lead_to(list.value, changed(inner, [&](auto& node) { lead_to(node.value, argument_chain(0)); }));
  });
}

HostCodeNode* TreeDecoder::labelled() {
  return changed(make(NodeKind::labelled), [&](HostCodeNode& node) {
    switch (bytes_.pick("cvx")) {
      case 'c':
        lead_to(node.link, call(dtype(), 0));
        break;
      case 'v':
        name_variable(node.link);
        break;
      default:
        lead_to(node.link, make(any_kind()));
    }
    write_name(node.value, word());
  });
}

// ---- Arguments

HostCodeNode* TreeDecoder::argument_chain(int depth) {
  const int before = spent_;
  HostCodeNode* first = nullptr;
  HostCodeNode* last = nullptr;
  bool goes_on = true;
  while (goes_on) {
    const char letter = bytes_.pick(".irltwvcnuI0kx=");
    if (letter == '.') break;
    HostCodeNode* cell = letter == '=' ? shared(chains_) : letter == 'n' ? name_cell() : make(NodeKind::list_cell);
    if (cell == nullptr) break;
    // A shared cell brings its own tail, and a name's link holds its name.
    goes_on = letter != '=' && letter != 'n' && write_argument(cell, letter, depth);
    if (last == nullptr)
      first = cell;
    else
      lead_to(last->link, cell);
    last = cell;
  }
  return finish(chains_, first, before);
}

/// Writes the argument of a cell; false when no cell can follow.
bool TreeDecoder::write_argument(HostCodeNode* cell, char letter, int depth) {
  static constexpr std::int32_t extremes[] = {-1, 100'000, std::numeric_limits<std::int32_t>::max(),
                                              std::numeric_limits<std::int32_t>::min()};
  switch (letter) {
    case 'v':
      name_variable(cell->value);
      return true;
    case 'u':
      write_unknown(cell->value);
      return true;
    case 'I':  // what no array has room for
      cell->value.tag = SlotTag::integer;
      store<std::int32_t>(cell->value.payload, extremes[bytes_.byte() % std::size(extremes)]);
      return true;
    case 'x':  // what needs a list cell, in another
      cell->kind = any_kind();
      lead_to(cell->value, child(depth + 1));
      return true;
    case 'c':
      lead_to(cell->value, child(depth + 1));
      return true;
    case 'k':
      write_unknown(cell->link);
      return false;
    default:
      return write_literal(cell->value, letter);
  }
}

/// A bare name, whose text is in the payload of a node's tag. It has a node's size, for whoever looks at its kind.
HostCodeNode* TreeDecoder::name_cell() {
  return changed(make(NodeKind::name), [&](HostCodeNode& node) {
    write_text(node.link, word(), false);
    HostCodeNode& text = nodes_.emplace_back();
    std::memcpy(text.host_head, "bare", 4);
    lead_to(node.value, bytes_.pick("n0") == 'n' ? &text : nullptr);
  });
}

HostCodeNode* TreeDecoder::child(int depth) {
  if (depth > deepest_child) return nullptr;
  const int before = spent_;
  switch (bytes_.pick("0csaqx=")) {
    case 'c':
      return finish(children_, call(word(), depth), before);
    case 's':
      return finish(children_, selection(depth), before);
    case 'a':
      return finish(children_, array_literal(), before);
    case 'q':
      return finish(children_, inner_quotation(depth), before);
    case 'x':
      return finish(children_, make(any_kind()), before);
    case '=':
      return shared(children_);
    default:
      return nullptr;
  }
}

// ---- Array literals

HostCodeNode* TreeDecoder::array_literal() {
  HostCodeNode* literal = make(NodeKind::array_literal);
  if (literal == nullptr) return nullptr;
  const int before = spent_;
  HostCodeSlot* onward = &literal->value;
  HostCodeNode* first = nullptr;
  while (true) {
    const char letter = bytes_.pick(".e[]p{x0-k=");
    if (letter == '.') break;
    HostCodeNode* cell = letter == '=' ? shared(literals_) : make(letter == 'k' ? any_kind() : NodeKind::list_cell);
    if (cell == nullptr) break;
    lead_to(*onward, cell);
    if (first == nullptr) first = cell;
    if (letter == '=') break;
    lead_to(cell->link, literal_item(letter));
    if (letter == '-') cell->link.tag = SlotTag::absent;
    onward = &cell->value;
  }
  finish(literals_, first, before);
  return literal;
}

HostCodeNode* TreeDecoder::literal_item(char letter) {
  static constexpr std::string_view part_letters = "irltw0u";
  const auto part = [&] {
    return changed(make(NodeKind::list_cell), [&](HostCodeNode& node) {
      if (!write_literal(node.value, bytes_.pick(part_letters))) write_unknown(node.value);
    });
  };
  switch (letter) {
    case '[':
      return make(NodeKind::literal_open);
    case ']':
      return make(NodeKind::literal_close);
    case 'e':
    case '-':
      return changed(make(NodeKind::literal_item), [&](HostCodeNode& item) {
        lead_to(item.link, part());
        item.value.tag = SlotTag::absent;
      });
    case 'p':
      return changed(make(NodeKind::literal_item), [&](HostCodeNode& item) {
        lead_to(item.link, part());
        if (!write_literal(item.value, bytes_.pick(part_letters))) lead_to(item.value, nullptr);
      });
    case '{':
      return changed(make(NodeKind::literal_item), [&](HostCodeNode& item) {
        lead_to(item.link, part());
        lead_to(item.value, make(NodeKind::literal_open));
      });
    case 'x':
      return make(any_kind());
    default:
      return nullptr;
  }
}

// ---- Selections

HostCodeNode* TreeDecoder::selection(int depth) {
  HostCodeNode* selection = make(NodeKind::selection);
  if (selection == nullptr) return nullptr;
  HostCodeNode* table = make(any_kind());
  if (table == nullptr) return selection;
  lead_to(selection->value, table);
  name_variable(table->link);
  HostCodeSlot* onward = &table->value;
  int matches = 1;
  while (true) {
    const char letter = bytes_.pick(".s:2");
    HostCodeNode* cell = letter == '.' ? nullptr : make(NodeKind::list_cell);
    if (cell == nullptr) break;
    // A selector that is a table of two tables selects both at every level, so what is selected can double each time.
    matches *= 2;
    spent_ += matches;
    lead_to(*onward, cell);
    onward = &cell->value;
    HostCodeNode* range = letter == ':' ? make(NodeKind::range) : nullptr;
    if (range != nullptr) {
      write_selector(range->link, depth);
      write_selector(range->value, depth);
      lead_to(cell->link, range);
      continue;
    }
    write_selector(cell->link, depth);
    if (letter != '2') continue;
    // The other end in a node that is no list cell: it ends the chain.
    lead_to(*onward, changed(make(NodeKind::range), [&](auto& node) { write_selector(node.value, depth); }));
    break;
  }
  return selection;
}

void TreeDecoder::write_selector(HostCodeSlot& slot, int depth) {
  const char letter = bytes_.pick("0irltwvcnu");
  switch (letter) {
    case 'v':
      return name_variable(slot);
    case 'c':
      return lead_to(slot, child(depth + 1));
    case 'n':
      return lead_to(slot, name_cell());
    case 'u':
      return write_unknown(slot);
    case '0':
      return lead_to(slot, nullptr);
    default:
      write_literal(slot, letter);
  }
}

// ---- Data literals

HostCodeNode* TreeDecoder::row(int depth) {
  if (depth > deepest_child) return nullptr;
  const int before = spent_;
  // The outermost is distinguished from the other forms of a quotation by its kind alone.
  HostCodeNode* row = make(depth == 0 || bytes_.pick("rx") == 'r' ? NodeKind::data_row : any_kind());
  HostCodeNode* cell = row;
  const bool holds_rows = bytes_.pick("e[") == '[';
  while (cell != nullptr) {
    const char form = holds_rows ? bytes_.pick("r=e") : 'e';
    if (form == 'e')
      write_element(cell->link, bytes_.pick("rilvtwnu0"));
    else
      lead_to(cell->link, form == 'r' ? this->row(depth + 1) : shared(rows_));
    const char letter = bytes_.pick(".,k");
    if (letter == '.') break;
    HostCodeNode* next = make(letter == ',' ? NodeKind::list_cell : any_kind());
    lead_to(cell->value, next);
    cell = next;
  }
  return finish(rows_, row, before);
}

void TreeDecoder::write_element(HostCodeSlot& slot, char letter) {
  switch (letter) {
    case 'v':
      return name_variable(slot);
    case 'n':
      return lead_to(slot, name_cell());
    case 'u':
      return write_unknown(slot);
    case '0':
      return lead_to(slot, nullptr);
    default:
      write_literal(slot, letter);
  }
}

}  // namespace arrayfold::fuzz
