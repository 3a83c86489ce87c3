# bench/peers/calls.py: the peers of calls.cpp

from . import Case

CASES = {
    # Too few arguments: nothing in NumPy answers a wrong call without raising.
    "refused": Case(ratios={10: None}, limits={10: 5}),
    "make_and_destroy": Case(numpy="np.zeros(n)", ratios={10: None}, limits={10: 250}),
    # Ours is a table of the host's, made and released; NumPy's is a tuple.
    "shape": Case(numpy="a.shape", setup="a = np.zeros((2, 5))", ratios={10: None}),
}
