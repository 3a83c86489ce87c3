"""Reads a file of weather measurements and looks at it."""

import numpy as np

weather = np.genfromtxt("data/weather.csv", delimiter=",", names=True, dtype=None, encoding="utf-8")
print(len(weather), "days of", ", ".join(weather.dtype.names))
print("the warmest had", weather["temp_max"].max(), "degrees, the windiest", weather["wind"].max(), "m/s")
