// kernel/table_lifetimes.cpp: ending and copying tables, however deep they are nested
//
// Both walks keep their list in the tables themselves, so they need neither the stack nor memory of their own.

#include "kernel/memory.hpp"
#include "kernel/records.hpp"
#include "kernel/tables.hpp"

namespace hvm::kernel {
namespace {

// Drops a reference and puts the table in front of the list when that was the last one.
void drop_into_list(Table* table, Table*& dead) noexcept {
  if (!table || --table->references > 0) return;
  table->link = dead;
  dead = table;
}

void release_item(const HostValue& value, HostContext ctx, Table*& dead) noexcept {
  if (!holds_content(value)) return;
  if (value.tag == ValueTag::table) {
    drop_into_list(table_in(value), dead);
  } else {
    release_content(value, ctx);
  }
}

void free_table(Table* table) noexcept {
  give_back(table->index.get());
  give_back(table->items.get());
  give_back(table->places);
  for (void* piece = table->pieces; piece;) {
    void* before = arrayfold::load<void*>(piece);
    give_back(piece);
    piece = before;
  }
  give_back(table);
}

// ---- Copies

// The tables found so far, in the order in which they were found. The twin of each is its copy.
struct CopyList {
  Table* first = nullptr;
  Table* last = nullptr;

  // A reference to the copy of `source`, made and added to the list when there is none yet.
  HostHash* copy_of(Table* source) noexcept {
    if (!source) return nullptr;
    if (source->twin) return hold(source->twin);
    source->twin = new_table(source->index_count);
    if (!source->twin) return nullptr;
    (last ? last->link : first) = source;
    last = source;
    return source->twin;
  }

  ~CopyList() {
    while (first) {
      Table* next = first->link;
      first->link = first->twin = nullptr;
      first = next;
    }
  }
};

void fill_twin(Table& source, CopyList& list) noexcept {
  TableWalk walk(&source);
  while (const Entry entry = walk.next()) {
    HostValue* slot = make_slot(*source.twin, key_of(*entry.key));
    if (!slot) continue;
    Table* inner = table_in(*entry.value);
    *slot = inner ? table_record(list.copy_of(inner)) : deep_copy(*entry.value);
  }
}

}  // namespace

void drop_table(Table* table, HostContext ctx) noexcept {
  Table* dead = nullptr;
  drop_into_list(table, dead);
  while (dead) {
    Table* dying = dead;
    dead = dying->link;
    TableWalk walk(dying);
    while (const Entry entry = walk.next()) {
      release_content(*entry.key, ctx);
      release_item(*entry.value, ctx, dead);
    }
    free_table(dying);
  }
}

HostValue copy_of_table(const HostValue& value) noexcept {
  CopyList list;
  HostValue copy = table_record(list.copy_of(table_in(value)));
  for (Table* source = list.first; source; source = source->link) fill_twin(*source, list);
  return copy;
}

}  // namespace hvm::kernel
