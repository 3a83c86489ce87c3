"""Three equations with three unknowns."""

import numpy as np

a = np.array([[2, 1, -1], [-3, -1, 2], [-2, 1, 2]])
b = np.array([8, -11, -3])
x = np.linalg.solve(a, b)
print("x =", x, "missed by", np.linalg.norm(a @ x - b))
