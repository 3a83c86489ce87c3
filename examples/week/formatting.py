"""A table of powers in aligned columns."""

import numpy as np

print(f"{'x':>4}{'root':>10}{'cube':>12}")
for x in [1, 2, 10, 100]:
    print(f"{x:4}{np.sqrt(x):10.4f}{x**3:12.3e}")
