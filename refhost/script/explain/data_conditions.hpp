// script/explain/data_conditions.hpp: what xarray reads in another way than it is written

#pragma once

#include "script/explain/warning_subjects.hpp"

namespace hvm {

Found data_that_ends_early(const AnsweredCall& call);
Found ragged_rows(const AnsweredCall& call);
Found named_entries(const AnsweredCall& call);
Found fraction_of_an_entry(const AnsweredCall& call);
Found range_of_an_entry(const AnsweredCall& call);
Found extents_beside_data(const AnsweredCall& call);
Found dropped_element(const AnsweredCall& call);
Found dtype_that_is_a_variable(const AnsweredCall& call);
Found float_dtype(const AnsweredCall& call);
Found unknown_dtype(const AnsweredCall& call);
Found data_that_are_no_table(const AnsweredCall& call);

}  // namespace hvm
