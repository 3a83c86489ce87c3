"""Writes a table of a function to sine.csv, and reads it back."""

import numpy as np

x = np.linspace(0, 3, 7)
np.savetxt("sine.csv", np.column_stack([x, np.sin(x)]), delimiter=",", header="x,sine", comments="")
print(np.loadtxt("sine.csv", delimiter=",", skiprows=1))
