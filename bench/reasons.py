# bench/reasons.py: what sets the time of the rows in which NumPy can be faster
#
# A bare row is a case of the family limits: the required work without the module, at the same size and in the same
# run. A row that takes as long as its bare row cannot be faster.

import fnmatch
from dataclasses import dataclass


@dataclass(frozen=True)
class Reason:
    """A sentence for the rows whose name matches a pattern, and the bare row beside them, if there is one."""

    pattern: str  # as of a shell, over family/case/n
    why: str
    bare: str = ""


EIGHT_BYTES = "Each result is a double of eight bytes; NumPy's is an integer of four."
TRUTHS = "Each result is a double; NumPy's is a byte."
MEMORY = "Both wait for the memory, which differs from process to process."
CHAINS = "There are two sums in order, and the second one needs the first; NumPy adds in pairs."
BLOCKS = "An array is five blocks of memory: the host's record, the object, the array, its container, its elements."
TANGENT = "Errors stay below 1 unit in the last place, which takes a corrected quotient; NumPy's reach 3.3."

# The first one that matches counts.
REASONS = [
    Reason("reductions/xmean/*", "Elements are added strictly from left to right; NumPy adds in pairs.",
           "add_in_order"),
    Reason("reductions/xvariance/100000", CHAINS, "two_sums_in_order"),
    Reason("reductions/xstddev/100000", CHAINS, "two_sums_in_order"),
    Reason("reductions/*/10000000", MEMORY, "read"),
    Reason("binning/xbincount*/10000000", MEMORY),
    Reason("ordering/xarg*/10000000", MEMORY, "read"),
    Reason("ordering/xpartition*",
           "Scripts see the order in which the selection of the C++ library leaves the elements."),
    Reason("creation/xones/10000000", MEMORY, "write_doubles"),
    Reason("linear_algebra/*dot*/10000000", MEMORY, "read"),
    Reason("operators/equal*/10000000", MEMORY, "read"),
    Reason("linear_algebra/norm_vector/*",
           "The norm is that of BLAS, which cannot overflow; NumPy takes the root of an inner product.",
           "euclidean_norm"),
    Reason("linear_algebra/norm/*",
           "The squares of a row are added strictly from left to right; NumPy takes the root of an inner product.",
           "squares_by_rows"),
    Reason("linear_algebra/dot_mixed/*",
           "Products are rounded before they are added, in the order of the inner index; NumPy's BLAS fuses both."),
    Reason("elementwise/xsquare_int/*", EIGHT_BYTES, "square_ints"),
    Reason("elementwise/xcube_int/*", EIGHT_BYTES, "square_ints"),
    Reason("elementwise/xabs_int/*", EIGHT_BYTES, "square_ints"),
    Reason("elementwise/xm??imum_int/*", EIGHT_BYTES, "smaller_ints"),
    Reason("elementwise/xis*_int/*", "Each result is a double, whose bytes are written; NumPy's is a byte.",
           "write_doubles"),
    Reason("elementwise/xis*", TRUTHS, "mark_nan"),
    Reason("elementwise/xtan*", TANGENT),
    Reason("elementwise/x*imum/10000000", MEMORY, "divide"),
    Reason("elementwise/xabs/10000000", MEMORY, "mark_nan"),
    Reason("elementwise/xlog/10000000", MEMORY, "mark_nan"),
    Reason("elementwise/xlog1p/10000000", MEMORY, "mark_nan"),
    Reason("elementwise/xcbrt/10000000", MEMORY, "mark_nan"),
    Reason("operators/less_ints/*", MEMORY, "compare_ints"),
    Reason("operators/less/10000000", MEMORY, "compare"),
    Reason("operators/less_number*/10000000", MEMORY),
    Reason("operators/in_place/10000000", MEMORY, "add_in_place"),
    Reason("operators/in_place_*/10000000", MEMORY),
    Reason("operators/*_ints/10000000", MEMORY, "add_ints"),
    Reason("operators/*/10000000", MEMORY, "divide"),
    Reason("linear_algebra/eig/32",
           "Both spend their time in the same routine of LAPACK; the two differ by a few per cent from run to run."),
    Reason("calls/shape/*",
           "The result is a table of the host, which takes four of its operations and memory; NumPy returns a tuple "
           "that it has.", "table_of_two"),
    Reason("calls/make_and_destroy/*", BLOCKS, "five_blocks"),
    Reason("creation/xzeros/10", BLOCKS, "five_blocks"),
    Reason("host/loop_additions/*",
           "hvm walks the tree of a script, and its values are records of 18 bytes; Lua runs instructions."),
    Reason("host/parse_json/*",
           "hvm makes a record of each value; Python's reader is written in C, and equal names share their memory."),
    Reason("tables/dimensions/*",
           "There are two blocks: the array's zeros, and the elements that were gathered for it."),
    Reason("creation/xempty/*", "The call gives memory that nothing has written, and so does NumPy's."),
]


def reason_for(name):
    """The reason for a row, or None."""
    return next((reason for reason in REASONS if fnmatch.fnmatchcase(name, reason.pattern)), None)
