// array/kind_frames_test.cpp: which kind a frame finds, and in which order it asks

#include "array/kind_frames.hpp"

#include "support/hand_made.hpp"

namespace arrayfold::test {
namespace {

/// The dtype of the array that a frame visited.
struct DtypeOf {
  std::string* dtype;
  template <class Kind>
  void operator()(Kind, const xarray_of<typename Kind::element>&) const {
    *dtype = Kind::dtype;
  }
  template <class Kind>
  void operator()(Kind, const xarray_of<typename Kind::element>&, const xarray_of<typename Kind::element>&) const {
    *dtype = std::string(Kind::dtype) + " pair";
  }
};

class KindFrames : public ModuleTest {
 protected:
  /// Every kind of object there is, by the dtype of its array.
  std::vector<std::pair<std::string, const HostAny*>> objects() const {
    const auto any = [](const Value& value) -> const HostAny* { return hvm::object_of(value.record()); };
    return {{"bool", any(bools_)},       {"int", any(ints_)},       {"int64", any(int64s_)},
            {"float", floats_.object()}, {"double", any(doubles_)}, {"foreign", foreign_.object()}};
  }

 private:
  Value bools_ = array_of<XTBool>(ctx(), {1}, {true});
  Value ints_ = array_of<XTInt>(ctx(), {1}, {1});
  Value int64s_ = array_of<XTInt64>(ctx(), {1}, {1});
  Value doubles_ = array_of<XTDouble>(ctx(), {1}, {1});
  FloatObject floats_{{1}, {1}};
  ForeignObject foreign_{"$foreign", floats_.object()->content};  // its name alone tells it from an array
};

TEST_F(KindFrames, VisitKind_FindsTheNumericKindsAndNoOther) {
  for (const auto& [dtype, any] : objects()) {
    const bool numeric = dtype != "bool" && dtype != "foreign";
    std::string visited;
    EXPECT_EQ(visit_kind(double_first{}, any, DtypeOf{&visited}), numeric) << dtype;
    EXPECT_EQ(visited, numeric ? dtype : "");
    visited.clear();
    const auto numbers = unbox_numeric(any);
    EXPECT_EQ(numbers.has_value(), numeric) << dtype;
    if (numbers) visit_ref(*numbers, DtypeOf{&visited});
    EXPECT_EQ(visited, numeric ? dtype : "");
  }
}

TEST_F(KindFrames, VisitKind_AsksOnlyForTheKindsNamed) {
  for (const auto& [dtype, any] : objects()) {
    std::string visited;
    EXPECT_EQ(visit_kind(kinds<XTBool>{}, any, DtypeOf{&visited}), dtype == "bool") << dtype;
  }
}

TEST_F(KindFrames, VisitSameKind_FindsPairsOfOneNumericKind) {
  for (const auto& [left, left_any] : objects())
    for (const auto& [right, right_any] : objects()) {
      const bool pair = left == right && left != "bool" && left != "foreign";
      std::string visited;
      EXPECT_EQ(visit_same_kind(double_first{}, left_any, right_any, DtypeOf{&visited}), pair) << left << right;
      EXPECT_EQ(visited, pair ? left + " pair" : "");
    }
}

TEST_F(KindFrames, Kinds_StandInTheirOrders) {
  EXPECT_TRUE((std::is_same_v<double_first, kinds<XTDouble, XTFloat, XTInt, XTInt64>>));
  EXPECT_TRUE((std::is_same_v<int_first, kinds<XTInt, XTInt64, XTFloat, XTDouble>>));
  EXPECT_TRUE((std::is_same_v<registered_kinds, kinds<XTBool, XTInt, XTInt64, XTDouble>>));
}

}  // namespace
}  // namespace arrayfold::test
