"""How a hundred measurements of the speed of light are distributed, in 1000 km/s."""

import numpy as np

speed = np.loadtxt("data/michelson.csv", skiprows=1)
counts, edges = np.histogram(speed, bins=7)
for low, count in zip(edges, counts):
    print(f"{low:.2f} " + "#" * count)
