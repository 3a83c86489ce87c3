"""A parabola through ten years of carbon dioxide."""

import numpy as np

ppm = np.loadtxt("data/co2.csv", delimiter=",", skiprows=1, usecols=2)
years = np.arange(len(ppm)) / 12
fit = np.polyfit(years, ppm, 2)
print("ppm =", fit[2], "+", fit[1], "* years +", fit[0], "* years squared")
