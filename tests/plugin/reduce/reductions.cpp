// reduce/reductions.cpp: the number that a function gives

#include "reductions.hpp"

namespace arrayfold::test {

HostNumber ReductionTest::number_given(const std::string& name, const Value& operand) const {
  const Answer answer = call(name, {operand});
  EXPECT_EQ(answer.returned, 1) << name;
  const auto& record = answer.result.record();
  for (const HostNumber& found :
       {host_number(load<double>(record.payload)), host_number(load<std::int32_t>(record.payload)),
        host_number(load<std::int64_t>(record.payload))})
    if (answer.operations == Words{"AnyCheck 0", "GetAny 0", found.setter}) return found;
  ADD_FAILURE() << name << " asks of the host " << ::testing::PrintToString(answer.operations);
  return {"", 0};
}

}  // namespace arrayfold::test
