"""The mean, deviation, minimum and maximum of each column of a file."""

import numpy as np

names = ["precipitation", "temp_max", "temp_min", "wind"]
data = np.loadtxt("data/weather.csv", delimiter=",", skiprows=1, usecols=[1, 2, 3, 4])
for name, c in zip(names, data.T):
    print(f"{name:<14}{c.mean():8.2f}{c.std():8.2f}{c.min():8.2f}{c.max():8.2f}")
