"""How sure is the mean of a hundred measurements? The means of samples drawn from them tell."""

import numpy as np

speed = np.loadtxt("data/michelson.csv", skiprows=1)
rng = np.random.default_rng(1)
means = [rng.choice(speed, len(speed)).mean() for _ in range(2000)]
low, high = np.quantile(means, [0.025, 0.975])
print(f"95% of the means lie between {low:.2f} and {high:.2f}")
