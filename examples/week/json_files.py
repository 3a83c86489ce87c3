"""Stores a matrix with its description as JSON, and gets it back."""

import json
import pathlib

import numpy as np

m = np.array([[2.0, 1.0], [1.0, 3.0]])
pathlib.Path("matrix.json").write_text(json.dumps({"name": "stiffness", "matrix": m.tolist()}, indent=2))
stored = json.loads(pathlib.Path("matrix.json").read_text())
print(stored["name"], "has the determinant", np.linalg.det(stored["matrix"]))
