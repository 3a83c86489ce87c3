"""Pi, from the share of random points of a square that lie in a circle."""

import numpy as np

n = 1000000
rng = np.random.default_rng(1)
inside = np.count_nonzero(rng.random(n) ** 2 + rng.random(n) ** 2 <= 1)
print(f"pi is about {4 * inside / n:.2f}")
