// refhost/script/explain/data_rows.cpp: warnings about the data of xarray

#include "explain/warning_rows.hpp"

namespace hvm::testing {

const std::vector<WarnedScript>& data_rows() {
  static const std::vector<WarnedScript> rows = {
      {"data-that-end-early",
       "a = xones(2); xarray(@double, [a, a])",
       "xarray stops reading its data at a double array; stack(rows) of use \"arrays\" makes a matrix of arrays",
       {"xarray(@double, [1, 2.5, 3L])", "xarray(@double, [])", "xarray(@double, [[]])",
        "xarray(@int, [[[1, 2]], [[3, 4]]])"}},
      {"data-that-end-early",
       "xarray(@double, [1, \"x\", 3])",
       "xarray stops reading its data at the string \"x\"; make numbers of all entries first",
       {}},
      {"data-that-end-early",
       "xarray(@double, [1, \"an array\"])",
       "xarray stops reading its data at the string \"an array\"; make numbers of all entries first",
       {}},
      {"data-that-end-early",
       "xarray(@int, [[1, 2], [3, nil]])",
       "xarray stops reading its data at nil; make numbers of all entries first",
       {}},
      {"ragged-rows",
       "xarray(@double, [[1, 2], [3]])",
       "the data have rows of 2 and 1: xarray takes the shape of the last ones, cuts elements off or adds zeros; make "
       "all rows of one length",
       {"xarray(@double, [[1, 2], [3, 4]])"}},
      {"ragged-rows",
       "xarray(@double, [1, [2, 3]])",
       "the data have a row and a number: xarray takes the shape of the last ones, cuts elements off or adds zeros; "
       "make all rows of one length",
       {}},
      {"ragged-rows",
       "xarray(@double, [[1, 2], [[3], [4]]])",
       "the data have rows of numbers and of rows: xarray takes the shape of the last ones, cuts elements off or adds "
       "zeros; make all rows of one length",
       {}},
      {"named-entries",
       "xarray(@int, [\"a\": 1, \"b\": 2])",
       "xarray passes over entries under names, and there are no others: the first is under \"a\"; give entries "
       "without "
       "names",
       {"xarray(@int, [1, 2, \"unit\": \"m\"])"}},
      {"dropped-element",
       "xarray(@double, @[[1.0, 2.0], [3.0]])",
       "the data literal has rows of 2 and 1: xarray drops elements or adds zeros; make all rows of one length",
       {"xarray(@double, @[[1.0, 2.0], [3.0, 4.0]])", "xarray(@double, @[[[1.0], [2.0]], [[3.0], [4.0]]])"}},
      {"dropped-element",
       "xarray(@double, @[1, 2.5])",
       "a data literal of reals drops the integer 1; write 1.0 or use a table",
       {"xarray(@double, @[1.0, 2.5])", "xarray(@int, @[1, 2])", "x = 1; xarray(@int, @[x, 2])",
        "xarray(@double, [1, 2])"}},
      {"dropped-element", "xarray(@int, @[1, 2.5])", "a data literal of the kind int drops 2.5; use a table", {}},
      {"dropped-element", "xarray(@int64, @[1, 2])", "a data literal of the kind int64 drops 1; use a table", {}},
      {"dropped-element",
       "xarray(@double, @[1.0, \"s\"])",
       "a data literal of the kind double drops \"s\"; use a table",
       {}},
      {"dtype-that-is-a-variable",
       "double = 3; xarray(@double, [1, 2])",
       "'double' is a variable here, and @double its value instead of a kind: xarray gives nothing; give the variable "
       "another name",
       {"doubles = 3; xarray(@double, [1, 2])", "double = 3; xarray(@double(2))"}},
      {"dtype-that-is-a-variable",
       "fn f(int)\n xarray(@int, [1, 2])\nend\nf(3)",
       "'int' is a variable here, and @int its value instead of a kind: xarray gives nothing; give the variable "
       "another "
       "name",
       {"fn f(int)\n return int\nend\nf(3); xarray(@int, [1, 2])"}},
      {"float-dtype",
       "xarray(@float, [1, 2])",
       "xarray gives nothing for the kind float, of which there are no arrays; write @double",
       {}},
      {"unknown-dtype",
       "xarray(@real, [1, 2])",
       "xarray gives nothing, since 'real' is no kind of array; write @int, @int64, @double or @bool",
       {"xarray(@bool, [1, 2]); xarray(@int64, [1])"}},
      {"data-that-are-no-table",
       "a = xones(2); xarray(@double, a)",
       "xarray gives nothing for a double array, since its data are a table or a data literal; a + 0 copies it",
       {"a = [1, 2]; xarray(@double, a)"}},
      {"data-that-are-no-table",
       "xarray(@double, xlinspace(1, 3, 3))",
       "xarray gives nothing for an int array, since its data are a table or a data literal; xminimum(a, a) makes "
       "doubles of it",
       {}},
      {"data-that-are-no-table",
       "xarray(@double, 5)",
       "xarray gives nothing for an int, since its data are a table or a data literal; write a table of numbers",
       {}},
  };
  return rows;
}

}  // namespace hvm::testing
