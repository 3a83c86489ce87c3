// reader/literal_table_test.cpp: the tables that array literals among arguments write down

#include "reader/literal_table.hpp"
#include "support/reader_test.hpp"

namespace arrayfold::test {
namespace {

class LiteralTables : public ReaderTest {
 protected:
  /// The table of a literal, as it prints.
  std::string built(const std::vector<HostCodeNode*>& items) { return built_of(code.array_literal(items)); }
  std::string built_of(const HostCodeNode* literal) {
    Value result;
    build(literal, result);
    return hvm::printed(result.record());
  }
  void build(const HostCodeNode* literal, Value& result) {
    ExpressionEvaluator evaluator(ctx(), 0);
    build_literal_table(evaluator, literal, result.address());
  }
};

TEST_F(LiteralTables, OfNothing_AreEmpty) {
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(built(std::vector<HostCodeNode*>()), "[]"); }),
            (Words{"Malloc 512", "Malloc 256", "NewHash 4", "Free", "Free"}));
}

TEST_F(LiteralTables, AsArguments_AreValues) {
  EXPECT_EQ(evaluated(leads_to(code.array_literal({code.element(integer(1))}))), "value [1]");
}

TEST_F(LiteralTables, OfElements_CountFromZero) {
  EXPECT_EQ(built({code.element(integer(1)), code.element(real(2.5)), code.element(code.text("x")),
                   code.element(integer64(std::int64_t{1} << 40)), code.element(code.wide_text(u"w"))}),
            "[1, 2.5, \"x\", 1099511627776, w\"w\"]");
  EXPECT_EQ(operations_of([&] {
              built({code.element(integer(1)), code.element(integer(2))});
            }),
            (Words{"Malloc 512", "Malloc 256", "NewHash 4", "HashSetInt 0", "HashSetInt 1", "Free", "Free"}));
}

TEST_F(LiteralTables, OfStrings_FollowTheFrame) {
  const HostCodeNode* literal = code.array_literal(
      {code.element(code.text("recorded")), code.element(code.text("measured", Length::unrecorded))});
  for (const bool copy : {true, false}) {
    host.copy_strings(copy);
    Value result;
    const auto words = operations_of([&] { build(literal, result); });
    EXPECT_EQ(words, (Words{"Malloc 512", "Malloc 256", "NewHash 4", copy ? "SetStringEx 8" : "SetConstStringEx 8",
                            "HashSetInt 0", "SetString", "HashSetInt 1", "Free", "Free"}));
    EXPECT_EQ(hvm::printed(result.record()), "[\"recorded\", \"measured\"]");
  }
}

TEST_F(LiteralTables, OfWhatIsNoLiteral_HoldNil) {
  host[3] = Value(7);
  EXPECT_EQ(built({code.element(variable(3)), code.element(nowhere()), code.element(integer(1))}), "[nil, nil, 1]");
  EXPECT_EQ(built({code.node(NodeKind::literal_item, nowhere(), absent())}), "[nil]");
}

TEST_F(LiteralTables, ThatAreNested_OpenAndClose) {
  EXPECT_EQ(built({code.element(integer(1)), code.open(), code.element(integer(2)), code.open(), code.close(),
                   code.close(), code.element(integer(3))}),
            "[1, [2, []], 3]");
  EXPECT_EQ(
      operations_of([&] {
        built({code.open(), code.element(integer(2)), code.close()});
      }),
      (Words{"Malloc 512", "Malloc 256", "NewHash 4", "HashSetInt 0", "NewHash 4", "HashSetInt 0", "Free", "Free"}));
}

TEST_F(LiteralTables, LeftOpen_StandAsTheyAre) { EXPECT_EQ(built({code.open(), code.element(integer(1))}), "[[1]]"); }

TEST_F(LiteralTables, OfACloseWithoutAnOpen_End) {
  EXPECT_EQ(built({code.element(integer(1)), code.close(), code.element(integer(2))}), "[1]");
  EXPECT_EQ(built({code.open(), code.close(), code.close(), code.element(integer(2))}), "[[]]");
}

// ---- Keys

TEST_F(LiteralTables, OfPairs_HaveTheirKeys) {
  EXPECT_EQ(built({code.pair(code.text("k"), integer(1)), code.pair(integer(7), real(2.5)),
                   code.pair(real(3.5), code.text("x")), code.pair(code.wide_text(u"w"), integer(2))}),
            "[\"k\": 1, 7: 2.5, 3.5: \"x\", \"w\": 2]");
}

TEST_F(LiteralTables, OfAPair_AskForTheSlotAfterBothAreRead) {
  EXPECT_EQ(operations_of([&] { built({code.pair(code.text("k"), code.text("v"))}); }),
            (Words{"Malloc 512", "Malloc 256", "NewHash 4", "SetStringEx 1", "SetStringEx 1", "HashSet", "Free", "Free",
                   "Free"}));
}

TEST_F(LiteralTables, Required_ARealKeyThatIsTheNextOne_AdvancesTheAutomaticIndex) {
  EXPECT_EQ(built({code.pair(real(0.0), integer(10)), code.element(integer(20))}), "[0.0: 10, 1: 20]");
  // The truncation counts.
  EXPECT_EQ(built({code.pair(real(0.75), integer(10)), code.element(integer(20))}), "[0.75: 10, 1: 20]");
  EXPECT_EQ(built({code.pair(real(-0.5), integer(10)), code.element(integer(20))}), "[-0.5: 10, 1: 20]");
}

TEST_F(LiteralTables, ARealKeyThatIsAnother_LeavesTheAutomaticIndex) {
  for (const double key : {1.0, -1.0, 1e300, -1e300})
    EXPECT_EQ(built({code.pair(real(key), integer(10)), code.element(integer(20))}).substr(0, 4), "[20,") << key;
}

TEST_F(LiteralTables, ARealKeyThatIsNotANumber_LeavesTheAutomaticIndex) {
  EXPECT_EQ(built({code.pair(real(std::numeric_limits<double>::quiet_NaN()), integer(10)), code.element(integer(20))})
                .substr(0, 4),
            "[20,");
}

TEST_F(LiteralTables, Required_AnIntegerKeyThatIsTheNextOne_DoesNotAdvanceTheAutomaticIndex) {
  EXPECT_EQ(built({code.pair(integer(0), integer(10)), code.element(integer(20))}), "[20]");
  EXPECT_EQ(built({code.pair(integer64(0), integer(10)), code.element(integer(20))}), "[20]");
}

TEST_F(LiteralTables, OfASlotThatIsTaken_ReleaseWhatWasThere) {
  EXPECT_EQ(built({code.pair(integer(0), code.text("old")), code.element(code.text("new"))}), "[\"new\"]");
  EXPECT_EQ(built({code.pair(integer(0), code.text("old")), code.open(), code.close()}), "[[]]");
  EXPECT_EQ(built({code.pair_of_table(integer(0)), code.close(), code.element(integer(1))}), "[1]");
  EXPECT_EQ(built({code.pair(code.text("k"), code.text("old")), code.pair(code.text("k"), code.text("new"))}),
            "[\"k\": \"new\"]");
  EXPECT_EQ(built({code.pair(code.text("k"), code.text("old")), code.pair_of_table(code.text("k"))}), "[\"k\": []]");
}

TEST_F(LiteralTables, OfAnElementInATakenSlot_ReleaseWhateverIsNoNil) {
  EXPECT_EQ(
      operations_of([&] {
        built({code.pair(integer(0), integer(1)), code.element(integer(2))});
      }),
      (Words{"Malloc 512", "Malloc 256", "NewHash 4", "HashSet", "HashSetInt 0", "FreeObjectContent", "Free", "Free"}));
}

TEST_F(LiteralTables, OfAPairInATakenSlot_ReleaseContentAlone) {
  EXPECT_EQ(operations_of([&] {
              built({code.pair(integer(0), integer(1)), code.pair(integer(0), integer(2))});
            }),
            (Words{"Malloc 512", "Malloc 256", "NewHash 4", "HashSet", "HashSet", "Free", "Free"}));
}

TEST_F(LiteralTables, OfAPairWithATable_NestUnderTheKey) {
  EXPECT_EQ(
      built({code.pair_of_table(code.text("k")), code.element(integer(1)), code.close(), code.element(integer(2))}),
      "[2, \"k\": [1]]");
  EXPECT_EQ(built({code.pair_of_table(real(0.0)), code.element(integer(1)), code.close(), code.element(integer(2))}),
            "[0.0: [1], 1: 2]");
  EXPECT_EQ(operations_of([&] {
              built({code.pair_of_table(integer(5)), code.close()});
            }),
            (Words{"Malloc 512", "Malloc 256", "NewHash 4", "HashSet", "NewHash 4", "Free", "Free"}));
}

TEST_F(LiteralTables, OfAPairWhoseValueIsNoLiteral_HoldNil) {
  EXPECT_EQ(built({code.pair(code.text("k"), variable(3))}), "[\"k\": nil]");
  EXPECT_EQ(built({code.pair(code.text("k"), nowhere())}), "[\"k\": nil]");
  EXPECT_EQ(built({code.pair(code.text("k"), code.call_slot("f"))}), "[\"k\": nil]");
}

TEST_F(LiteralTables, OfAPairWhoseKeyIsNoLiteral_LeaveItToTheHost) {
  // The reference host takes no nil as a key: the entry is lost.
  EXPECT_EQ(built({code.pair(variable(3), code.text("lost")), code.element(integer(1))}), "[1]");
}

TEST_F(LiteralTables, OfATableWhoseKeyIsNoLiteral_End) {
  EXPECT_EQ(built({code.element(integer(1)), code.pair_of_table(variable(3)), code.pair_of_table(variable(3)),
                   code.pair(code.text("k"), code.text("v")), code.close(), code.close(), code.element(integer(2))}),
            "[1]");
}

// ---- The chain

TEST_F(LiteralTables, OfCellsWithoutAnItem_PassThemOver) {
  HostCodeNode* literal =
      code.array_literal({code.element(integer(1)), code.element(integer(2)), code.element(integer(3))});
  auto* first = load<HostCodeNode*>(literal->value.payload);
  first->link.tag = SlotTag::absent;
  auto* second = load<HostCodeNode*>(first->value.payload);
  store<HostCodeNode*>(second->link.payload, nullptr);
  EXPECT_EQ(built_of(literal), "[3]");
}

TEST_F(LiteralTables, OfItemsOfOtherKinds_PassThemOver) {
  EXPECT_EQ(built({code.element(integer(1)), code.node(NodeKind::name, code.text("x")), code.element(integer(2))}),
            "[1, 2]");
}

TEST_F(LiteralTables, OfAChain_EndAtACellOfAnotherKindOrAValueThatIsNoNode) {
  for (const HostCodeSlot& value : {absent(), integer(3), variable(3), nowhere()}) {
    HostCodeNode* literal = code.array_literal({code.element(integer(1))});
    load<HostCodeNode*>(literal->value.payload)->value = value;
    EXPECT_EQ(built_of(literal), "[1]");
  }
  HostCodeNode* literal = code.array_literal({code.element(integer(1)), code.element(integer(2))});
  auto* first = load<HostCodeNode*>(literal->value.payload);
  load<HostCodeNode*>(first->value.payload)->kind = NodeKind::data_row;
  EXPECT_EQ(built_of(literal), "[1]");
}

// ---- Depth

TEST_F(LiteralTables, OfManyLevels_GrowTheirStacks) {
  std::vector<HostCodeNode*> items(200, code.open());
  Value result;
  const auto words = operations_of([&] { build(code.array_literal(items), result); });
  const auto count_of = [&](const char* word) { return std::count(words.begin(), words.end(), word); };
  // 201 tables of 8 bytes and counts of 4: from 512 to 2048 bytes, from 256 to 1024.
  EXPECT_EQ(count_of("Realloc2 1024"), 2);
  EXPECT_EQ(count_of("Realloc2 2048"), 1);
  EXPECT_EQ(count_of("Realloc2 512"), 1);
  EXPECT_EQ(count_of("NewHash 4"), 201);
}

/// The depth of tables under the keys "k", or 0.
int depth_of(const Value& table) {
  int depth = 0;
  const HostHash* hash = hvm::table_of(table.record());
  while (hash != nullptr) {
    const HostValue* inner = hvm::find(hash, "k");
    if (inner == nullptr) inner = hvm::find(hash, 0);
    hash = inner == nullptr ? nullptr : hvm::table_of(*inner);
    ++depth;
  }
  return depth;
}

TEST_F(LiteralTables, Required_AtADepthOf102400_TheReadingStopsSilently) {
  for (const int levels : {102399, 102400, 102405}) {
    for (HostCodeNode* opening : {code.open(), code.pair_of_table(code.text("k"))}) {
      std::vector<HostCodeNode*> items(static_cast<std::size_t>(levels), opening);
      items.insert(items.end(), static_cast<std::size_t>(levels), code.close());
      items.push_back(code.element(integer(7)));
      Value result;
      build(code.array_literal(items), result);
      // The root table is at depth 0, so one more table is there than the depth says.
      EXPECT_EQ(depth_of(result), 102400) << levels;
      const bool read_to_the_end = hvm::entry_count(hvm::table_of(result.record())) == 2;
      EXPECT_EQ(read_to_the_end, levels == 102399) << levels;
    }
  }
}

TEST_F(LiteralTables, WithoutHostMemory_ThrowBadAllocAndLeakNothing) {
  const HostCodeNode* literal = code.array_literal({code.pair(integer(0), code.text("old")), code.open()});
  int thrown = 0;
  for (int nth = 1;; ++nth) {
    Value result;
    hvm::fail_allocation(nth);
    try {
      build(literal, result);
    } catch (const std::bad_alloc&) {
      ++thrown;
    }
    const bool came = hvm::allocation_has_failed();
    hvm::fail_allocation(0);
    if (!came) break;
  }
  EXPECT_GE(thrown, 4);  // both stacks and both tables
}

}  // namespace
}  // namespace arrayfold::test
