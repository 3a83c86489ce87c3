"""How many days had which wind, with the bounds of each bin."""

import numpy as np

wind = np.loadtxt("data/weather.csv", delimiter=",", skiprows=1, usecols=4)
counts, edges = np.histogram(wind, bins=8)
for low, high, count in zip(edges, edges[1:], counts):
    print(f"{low:5.2f} to {high:5.2f} m/s: {count:3} days")
