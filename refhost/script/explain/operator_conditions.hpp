// script/explain/operator_conditions.hpp: operators, elements and methods that do something else than they say

#pragma once

#include "script/explain/warning_subjects.hpp"

namespace hvm {

Found number_on_the_left(const ArrayOperation& operation);
Found fraction_of_a_number(const ArrayOperation& operation);
Found range_of_a_number(const ArrayOperation& operation);
Found remainder_of_doubles(const ArrayOperation& operation);
Found bool_product(const ArrayOperation& operation);

Found fraction_of_an_element(const ElementAccess& access);
Found range_of_an_element(const ElementAccess& access);
Found fewer_indices(const ElementAccess& access);

Found value_of_reshape(const AnsweredMethod& call);

}  // namespace hvm
