"""The directions in which temperatures and wind vary most."""

import numpy as np

data = np.loadtxt("data/weather.csv", delimiter=",", skiprows=1, usecols=[2, 3, 4])
values, vectors = np.linalg.eigh(np.cov(data.T, bias=True))
print("variances:", values)
print("share of the first two:", values[1:].sum() / values.sum())
print("main direction, without its sign:", abs(vectors[:, 2]))
