"""The distance of every point from every other one."""

import numpy as np

points = np.array([[0, 0], [3, 4], [6, 8], [-5, 12]])
distances = np.linalg.norm(points[:, None] - points, axis=2)
print(distances)
