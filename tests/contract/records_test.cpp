// contract/records_test.cpp: the records of the host, read from bytes laid out by hand

#include <array>
#include <cstddef>

#include <gtest/gtest.h>

#include "array/xt_object.hpp"
#include "host/host_operations.hpp"

namespace arrayfold {
namespace {

/// Bytes at an odd address, so that whatever needs alignment is seen by the sanitizers.
template <class Record, std::size_t Size = sizeof(Record)>
struct Unaligned {
  alignas(16) std::array<std::byte, Size + 1> bytes{};
  std::byte* at(std::size_t offset) { return bytes.data() + 1 + offset; }
  Record& record() { return *static_cast<Record*>(static_cast<void*>(at(0))); }
};

TEST(Records, HostValue_IsEighteenBytesAndWalkedInStepsOfEighteen) {
  HostValue values[3];
  const auto address = [&](int n) { return static_cast<const char*>(static_cast<const void*>(values + n)); };
  EXPECT_EQ(address(1) - address(0), 18);
  EXPECT_EQ(address(2) - address(0), 36);
}

TEST(Records, HostValue_HasTagPayloadOwnedAndLifetimeInPlace) {
  Unaligned<HostValue> value;
  *value.at(0) = std::byte{1};
  store<double>(value.at(1), 2.5);
  store<std::uint32_t>(value.at(9), 7);
  *value.at(17) = std::byte{2};
  EXPECT_EQ(value.record().tag, ValueTag::real);
  EXPECT_EQ(load<double>(value.record().payload), 2.5);
  EXPECT_EQ(value.record().owned, 7u);
  EXPECT_EQ(value.record().lifetime, Lifetime::plain);
}

TEST(Records, HostAny_HasStateManagerAndContentInPlace) {
  Unaligned<HostAny> any;
  AnyMan man{};
  int content = 0;
  store<std::uint32_t>(any.at(4), 200);
  store<AnyMan*>(any.at(8), &man);
  store<void*>(any.at(16), &content);
  EXPECT_EQ(any.record().state, 200u);
  EXPECT_EQ(any.record().manager.get(), &man);
  EXPECT_EQ(any.record().content.get(), &content);
}

TEST(Records, AnyMan_BeginsWithTheName) {
  Unaligned<AnyMan> man;
  store<const char*>(man.at(0), "$type");
  EXPECT_STREQ(man.record().name, "$type");
}

TEST(Records, HostHash_HasIndexAndItemsInPlace) {
  Unaligned<HostHash> hash;
  HostHashItem item{};
  HostHashItem* index[] = {&item};
  store<HostHashItem**>(hash.at(0), index);
  store<std::int32_t>(hash.at(8), 1);
  store<HostHashItem*>(hash.at(16), &item);
  store<std::int32_t>(hash.at(24), -5);
  EXPECT_EQ(hash.record().index.get(), index);
  EXPECT_EQ(hash.record().index_count, 1);
  EXPECT_EQ(hash.record().items.get(), &item);
  EXPECT_EQ(hash.record().item_count, -5);
}

TEST(Records, HostHashItem_IsFortyFourBytesWithTheValueAtEighteen) {
  HostHashItem items[2];
  const auto* first = static_cast<const char*>(static_cast<const void*>(&items[0]));
  EXPECT_EQ(static_cast<const char*>(static_cast<const void*>(&items[1])) - first, 44);
  EXPECT_EQ(static_cast<const char*>(static_cast<const void*>(&items[0].value)) - first, 18);
}

TEST(Records, HostContext_HasFrameAndFunctionsInPlace) {
  Unaligned<HostContextRecord> context;
  HostFrame frame{};
  const HostContextRecord::CallFunction call = [](const void*, HostContext, HostValue*, int, HostValue*) { return 3; };
  const HostContextRecord::ReadSlot read = [](HostContext, int) -> HostValue* { return nullptr; };
  store<HostFrame*>(context.at(56), &frame);
  store<HostContextRecord::CallFunction>(context.at(72), call);
  store<HostContextRecord::ReadSlot>(context.at(80), read);
  EXPECT_EQ(context.record().frame.get(), &frame);
  EXPECT_EQ(context.record().call_function.get(), call);
  EXPECT_EQ(context.record().read_slot.get(), read);
}

TEST(Records, HostFrame_HasSlotBaseAndCopyStringsInPlace) {
  Unaligned<HostFrame> frame;
  store<std::uint32_t>(frame.at(16), 11);
  store<std::uint32_t>(frame.at(64), 1);
  EXPECT_EQ(frame.record().slot_base, 11u);
  EXPECT_EQ(frame.record().copy_strings, 1u);
}

TEST(Records, HostCode_HasRootAndFrameBaseInPlace) {
  Unaligned<HostCode> code;
  HostCodeNode node{};
  store<HostCodeNode*>(code.at(8), &node);
  store<std::uint32_t>(code.at(32), 9);
  EXPECT_EQ(code.record().root.get(), &node);
  EXPECT_EQ(code.record().frame_base, 9u);
}

TEST(Records, HostCodeNode_HasKindAndBothSlotsInPlace) {
  Unaligned<HostCodeNode> node;
  store<std::uint32_t>(node.at(8), 109);
  store<std::uint32_t>(node.at(16), 5);
  store<std::uint64_t>(node.at(24), 42);
  store<std::uint32_t>(node.at(40), 2);
  store<std::uint64_t>(node.at(48), 43);
  store<std::uint32_t>(node.at(56), 4);
  EXPECT_EQ(node.record().kind, NodeKind::quotation);
  EXPECT_EQ(node.record().link.tag, SlotTag::variable);
  EXPECT_EQ(load<std::uint64_t>(node.record().link.payload), 42u);
  EXPECT_EQ(node.record().value.tag, SlotTag::string);
  EXPECT_EQ(load<std::uint64_t>(node.record().value.payload), 43u);
  EXPECT_EQ(node.record().value.length, 4u);
}

TEST(Records, HostSymbol_HasItsTextInTheFourthWord) {
  Unaligned<HostSymbol> symbol;
  store<const char*>(symbol.at(24), "double");
  EXPECT_STREQ(symbol.record().text, "double");
}

TEST(Records, HostStringRecord_HasLengthAtSixteenAndTextAtThirtySix) {
  Unaligned<HostStringRecord, 48> record;
  store<std::int32_t>(record.at(16), 2);
  *record.at(36) = std::byte{'h'};
  EXPECT_EQ(record.record().length, 2);
  EXPECT_EQ(record.record().text[0], 'h');
}

TEST(Records, HostIndexList_HasCountsAndEntriesInPlace) {
  Unaligned<HostIndexList> list;
  HostIndexEntry entry{};
  store<std::uint64_t>(list.at(0), 3);
  store<HostIndexEntry*>(list.at(8), &entry);
  EXPECT_EQ(list.record().packed_size, 3u);
  EXPECT_EQ(load<HostIndexEntry*>(list.record().entries), &entry);
  EXPECT_EQ(sizeof(HostIndexEntry), 16u);
}

TEST(Records, FunctionRow_IsSixteenBytes) { EXPECT_EQ(sizeof(FunctionRow), 16u); }

TEST(Records, Tags_HaveTheirNumbers) {
  const std::pair<ValueTag, int> numbers[] = {{ValueTag::integer, 0},
                                              {ValueTag::real, 1},
                                              {ValueTag::string, 2},
                                              {ValueTag::table, 5},
                                              {ValueTag::string_record, 6},
                                              {ValueTag::nil, 10},
                                              {ValueTag::converted_string, 11},
                                              {ValueTag::code, 13},
                                              {ValueTag::object, 16},
                                              {ValueTag::matrix, 17},
                                              {ValueTag::integer64, 20},
                                              {ValueTag::wide_string, 24},
                                              {ValueTag::two_words, 25},
                                              {ValueTag::scalar_4, 4},
                                              {ValueTag::scalar_18, 18},
                                              {ValueTag::scalar_80, 80},
                                              {ValueTag::scalar_81, 81}};
  for (const auto& [tag, number] : numbers) EXPECT_EQ(static_cast<int>(tag), number);
}

TEST(Records, NodeKinds_HaveTheirNumbers) {
  const std::pair<NodeKind, unsigned> numbers[] = {{NodeKind::call, 3},
                                                   {NodeKind::selection, 4},
                                                   {NodeKind::literal_open, 7},
                                                   {NodeKind::literal_close, 8},
                                                   {NodeKind::literal_item, 9},
                                                   {NodeKind::slot_list, 10},
                                                   {NodeKind::name_wrapper, 11},
                                                   {NodeKind::array_literal, 45},
                                                   {NodeKind::name, 77},
                                                   {NodeKind::variable_name, 86},
                                                   {NodeKind::list_cell, 105},
                                                   {NodeKind::data_row, 106},
                                                   {NodeKind::slot_list_inner, 108},
                                                   {NodeKind::quotation, 109},
                                                   {NodeKind::range, 112},
                                                   {NodeKind::labelled, 388}};
  for (const auto& [kind, number] : numbers) EXPECT_EQ(static_cast<unsigned>(kind), number);
}

TEST(Records, SlotTagsLifetimesAndOpcodes_HaveTheirNumbers) {
  const std::pair<SlotTag, unsigned> tags[] = {
      {SlotTag::node, 0}, {SlotTag::absent, 1},   {SlotTag::string, 2},    {SlotTag::integer, 3},
      {SlotTag::real, 4}, {SlotTag::variable, 5}, {SlotTag::integer64, 7}, {SlotTag::wide_string, 10}};
  for (const auto& [tag, number] : tags) EXPECT_EQ(static_cast<unsigned>(tag), number);
  EXPECT_EQ(static_cast<int>(Lifetime::none), 0);
  EXPECT_EQ(static_cast<int>(Lifetime::temporary), 1);
  EXPECT_EQ(static_cast<int>(Lifetime::plain), 2);
  const std::pair<Opcode, int> opcodes[] = {{Opcode::less_equal, 81},
                                            {Opcode::greater_equal, 82},
                                            {Opcode::not_equal, 83},
                                            {Opcode::less, 84},
                                            {Opcode::greater, 85},
                                            {Opcode::equal, 86},
                                            {Opcode::add, 95},
                                            {Opcode::subtract, 96},
                                            {Opcode::multiply, 97},
                                            {Opcode::divide, 98},
                                            {Opcode::remainder, 99},
                                            {Opcode::read_one_index, 101},
                                            {Opcode::read_element, 36865},
                                            {Opcode::write_element, 36866}};
  for (const auto& [opcode, number] : opcodes) EXPECT_EQ(static_cast<int>(opcode), number);
}

// The array objects stand behind a host's pointer, too: their layout is part of what another build of the module sees.
TEST(Records, XTObject_IsAVirtualTableAndOnePointer) {
  EXPECT_EQ(sizeof(XTObject<ArrayOf<XTInt>>), 16u);
  XTObject<ArrayOf<XTInt>> object;
  const auto* begin = static_cast<const char*>(static_cast<const void*>(&object));
  EXPECT_EQ(static_cast<const char*>(static_cast<const void*>(&object.array)) - begin, 8);
  EXPECT_EQ(object.array, nullptr);
  EXPECT_TRUE(std::has_virtual_destructor_v<XTObject<ArrayOf<XTInt>>>);
}

TEST(Records, XTArray_HasDataThenArray) {
  using Array = ArrayOf<XTDouble>;
  Array array{};
  const auto place = [&](const auto& member) {
    return static_cast<const char*>(static_cast<const void*>(&member)) -
           static_cast<const char*>(static_cast<const void*>(&array));
  };
  EXPECT_EQ(place(array.data), 0);
  EXPECT_EQ(place(array.array), static_cast<std::ptrdiff_t>(sizeof(std::vector<double>)));
  EXPECT_FALSE(std::is_polymorphic_v<Array>);
  EXPECT_TRUE(array.data.empty());
  EXPECT_EQ(array.array, nullptr);
}

TEST(Records, Container_IsRowMajorWithAlignmentThirtyTwo) {
  using Expected =
      xt::xarray_container<xt::uvector<double, xsimd::aligned_allocator<double, 32>>, xt::layout_type::row_major,
                           xt::svector<std::size_t, 4, std::allocator<std::size_t>, true>, xt::xtensor_expression_tag>;
  EXPECT_TRUE((std::is_same_v<xarray_of<double>, Expected>));
}

TEST(Records, InvalidArrayObject_HasItsMessageInQuotationMarks) {
  EXPECT_STREQ(invalid_array_object().what(), "\"object is not array\"");
}

}  // namespace
}  // namespace arrayfold
