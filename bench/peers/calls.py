# bench/peers/calls.py: the peers of calls.cpp

from . import Case

CASES = {
    # Too few arguments, which fails without an exception; a wrong call in NumPy raises one.
    "refused": Case(ratios={10: None}, limits={10: 5}),
    "make_and_destroy": Case(numpy="np.zeros(n)", ratios={10: None}, limits={10: 250}),
    # The module makes a host table, which is released; NumPy returns a tuple.
    "shape": Case(numpy="a.shape", setup="a = np.zeros((2, 5))", ratios={10: None}),
    # Stubs check their arguments and compute nothing, so that no work is left for a peer.
    **{
        stub: Case(ratios={10: None})
        for stub in ("xrandint", "xchoice", "xsearchsorted", "xmatrix_power", "xremainder", "xpow", "xclip", "xfma",
                     "xinterp", "xsetdiff1d")
    },
}
