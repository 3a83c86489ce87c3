// script/explain/reduction_conditions.hpp: reductions and products that count other elements than they are given

#pragma once

#include "script/explain/warning_subjects.hpp"

namespace hvm {

/// The functions that read columns in another way.
std::vector<std::string_view> functions_odd_on_columns();

Found largest_of_doubles(const AnsweredCall& call);
Found largest_of_int64(const AnsweredCall& call);
Found column(const AnsweredCall& call);
Found rows_beyond_the_matrix(const AnsweredCall& call);
Found kind_of_product(const AnsweredCall& call);
Found unused_argument(const AnsweredCall& call);

}  // namespace hvm
