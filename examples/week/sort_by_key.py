"""Records in the order of one of their entries."""

import numpy as np

rivers = np.array(
    [("Nile", 6650), ("Danube", 2850), ("Amazon", 6400), ("Rhine", 1230)],
    dtype=[("name", "U10"), ("length", int)],
)
for river in np.sort(rivers, order="length"):
    print(river["name"], river["length"], "km")
