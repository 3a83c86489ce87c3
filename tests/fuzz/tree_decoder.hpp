// fuzz/tree_decoder.hpp: bytes to expression trees, as a host could hand them over
//
// A tree is well-formed where a module must rely on it: a payload is what its tag says, and what is read whatever the
// tag says is a node or null. All else is up to the bytes: which kinds stand where, tags that nobody knows, null
// payloads, nodes that several parents share. There are no cycles, and the tree is small even with its shared parts
// and the matches of its selections written out. Two forms that end the process are left out: an argument chain that
// does not begin with a node, and a wrapped name that is none.
//
// The letters of the forms are those in tree_decoder.cpp; `.` ends a list.

#pragma once

#include <deque>
#include <memory>
#include <string_view>
#include <vector>

#include "fuzz/byte_source.hpp"
#include "host/host_value.hpp"

namespace arrayfold::fuzz {

class TreeDecoder {
 public:
  explicit TreeDecoder(ByteSource& bytes) : bytes_(bytes) {}
  TreeDecoder(const TreeDecoder&) = delete;
  TreeDecoder& operator=(const TreeDecoder&) = delete;

  /// The next quotation. It lives as long as the decoder.
  const HostCode* code();
  /// The next quoted data literal.
  const HostCode* data_literal();

 private:
  /// Nodes that may be shared, with the size that they have when their own shared parts and matches are written out.
  struct Finished {
    HostCodeNode* node;
    int size;
  };
  using Pool = std::vector<Finished>;

  HostCodeNode* make(NodeKind kind);
  HostCodeNode* finish(Pool& pool, HostCodeNode* node, int spent_before);
  HostCodeNode* shared(const Pool& pool);
  NodeKind any_kind();

  // Slots.
  void lead_to(HostCodeSlot& slot, const void* payload, SlotTag tag = SlotTag::node);
  /// A frame slot, which may be beyond those that the host has.
  void name_variable(HostCodeSlot& slot);
  void write_text(HostCodeSlot& slot, std::string_view text, bool with_length);
  void write_wide_text(HostCodeSlot& slot);
  void write_unknown(HostCodeSlot& slot);
  /// A literal by its letter; false when the letter is none of a literal's.
  bool write_literal(HostCodeSlot& slot, char letter);
  void write_name(HostCodeSlot& slot, std::string_view name);
  void write_element(HostCodeSlot& slot, char letter);
  void write_selector(HostCodeSlot& slot, int depth);

  // Nodes.
  const HostCode* quotation_of(void (TreeDecoder::*write_link)(HostCodeSlot&));
  void write_quoted(HostCodeSlot& link);
  void write_data(HostCodeSlot& link);
  HostCodeNode* call(std::string_view name, int depth);
  HostCodeNode* inner_quotation(int depth);
  HostCodeNode* slot_list();
  HostCodeNode* labelled();
  HostCodeNode* argument_chain(int depth);
  bool write_argument(HostCodeNode* cell, char letter, int depth);
  HostCodeNode* child(int depth);
  HostCodeNode* array_literal();
  HostCodeNode* literal_item(char letter);
  HostCodeNode* selection(int depth);
  HostCodeNode* name_cell();
  HostCodeNode* row(int depth);

  std::string_view dtype();
  std::string_view word();
  const char* lasting(std::string_view text);
  const void* symbol(std::string_view name);

  ByteSource& bytes_;
  std::deque<HostCodeNode> nodes_;
  std::deque<HostCode> codes_;
  std::vector<std::unique_ptr<std::byte[]>> texts_;  // each a block of its own: reading beyond its end is seen
  Pool chains_, children_, literals_, rows_;
  int spent_ = 0;
};

}  // namespace arrayfold::fuzz
