"""A straight line through the readings of an instrument, and how far it misses them."""

import numpy as np

shown, reference = np.loadtxt("data/norris.csv", delimiter=",", skiprows=1, unpack=True)
slope, start = np.polyfit(reference, shown, 1)
residuals = shown - slope * reference - start
print("shown =", start, "+", slope, "* reference")
print("the largest residual is", abs(residuals).max(), "and their deviation", residuals.std())
