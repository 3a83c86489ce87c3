"""The carbon dioxide of the air without its seasons, as the mean of twelve months."""

import numpy as np

ppm = np.loadtxt("data/co2.csv", delimiter=",", skiprows=1, usecols=1)
trend = np.convolve(ppm, np.ones(12) / 12, mode="valid")
print(len(trend), "means from", trend[0], "to", trend[-1], "ppm")
