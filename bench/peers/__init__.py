# bench/peers: what the same work is in NumPy, and how our time may compare with it
#
# A module of this package is a family of cases: its CASES name what its C++ source registers, and the sizes with them.

import importlib
import pkgutil
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Case:
    """One benchmark at several sizes.

    ratios  size -> the most that our time may be, as a multiple of NumPy's; None where there is no such bound.
            Its keys are the sizes of the case.
    numpy   the expression in NumPy, over `np`, `n` and what `setup` defines. Its value dies inside the timed call, as
            ours does. A dict size -> expression where one expression is no fair peer at every size; None without peer.
    setup   statements that run once, untimed.
    limits  size -> the most nanoseconds that one call of ours may take.
    beside  size -> another expression, measured and shown without bound.
    """

    ratios: dict
    numpy: object = None
    setup: str = ""
    limits: dict = field(default_factory=dict)
    beside: dict = field(default_factory=dict)

    def peer(self, n):
        return self.numpy[n] if isinstance(self.numpy, dict) else self.numpy


@dataclass(frozen=True)
class SizedCase:
    """A case at one size, under the name that both lists share."""

    name: str
    n: int
    case: Case


def by_size(ten, thousand, hundred_thousand, ten_million):
    """Bounds at the four sizes that most cases have."""
    return {10: ten, 1_000: thousand, 100_000: hundred_thousand, 10_000_000: ten_million}


def per_element(nanoseconds, *sizes):
    """A limit for each element, as limits of whole calls."""
    return {n: nanoseconds * n for n in sizes}


def all_cases():
    """Every case of every family, in the order of the families' names."""
    for module in sorted(info.name for info in pkgutil.iter_modules(__path__)):
        family = importlib.import_module(f"{__name__}.{module}")
        for label, case in family.CASES.items():
            for n in case.ratios:
                yield SizedCase(f"{module}/{label}/{n}", n, case)
