"""A function and its tests."""

import numpy as np


def rescaled(a):
    """The elements of an array, moved and stretched so that they reach from 0 to 1."""
    return (a - a.min()) / (a.max() - a.min())


np.testing.assert_array_equal(rescaled(np.array([2, 4, 10])), [0, 0.25, 1])
assert len(rescaled(np.random.rand(100))) == 100, "no element is lost"
assert np.count_nonzero(rescaled(np.random.rand(100)) > 1) == 0, "the largest element is 1"
print("all tests passed")
