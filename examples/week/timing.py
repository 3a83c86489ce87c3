"""How long an inversion takes, the best of five."""

import time

import numpy as np

a = np.random.default_rng(1).standard_normal((200, 200))
seconds = []
for turn in range(5):
    start = time.perf_counter()
    np.linalg.inv(a)
    seconds.append(time.perf_counter() - start)
print("the best of", len(seconds), "is between 0 and 10 s:", int(0 < min(seconds) < 10))
