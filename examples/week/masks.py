"""The days that were warm."""

import numpy as np

highest = np.loadtxt("data/weather.csv", delimiter=",", skiprows=1, usecols=2)
warm = highest > 25
print(np.count_nonzero(warm), "days above 25 degrees, with a mean of", highest[warm].mean())
print("the first of them:", np.flatnonzero(warm)[:5])
