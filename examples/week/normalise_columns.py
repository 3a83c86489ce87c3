"""Brings each column to the mean 0 and the deviation 1."""

import numpy as np

data = np.loadtxt("data/weather.csv", delimiter=",", skiprows=1, usecols=[2, 3, 4])
scaled = (data - data.mean(axis=0)) / data.std(axis=0)
print("the first days:", scaled[:3])
print("means:", scaled.mean(axis=0))
