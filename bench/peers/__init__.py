# bench/peers: the same work in NumPy, and upper bounds for the ratio of both times
#
# Each module of this package is a family of cases. Its CASES have the names and sizes that the C++ source adds.

import importlib
import pkgutil
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Case:
    """One benchmark at several sizes.

    ratios  size -> upper bound of the module's time as a multiple of NumPy's, or None without a bound. Its keys are the
            sizes of the case.
    numpy   the expression in NumPy, over `np`, `n` and what `setup` defines. Its value is freed inside the timed call,
            as the module's is. A dict size -> expression where sizes need different peers; None without a peer.
    setup   statements that run once, untimed.
    limits  size -> upper bound of the nanoseconds of one call of the module.
    beside  size -> another expression, measured and shown without a bound.
    untouched  sizes at which the module's result is pages that nothing has touched. Their time says nothing of the work
            that they put off, so no mean counts them.
    """

    ratios: dict
    numpy: object = None
    setup: str = ""
    limits: dict = field(default_factory=dict)
    beside: dict = field(default_factory=dict)
    untouched: frozenset = frozenset()

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
    """Limits of calls, from a limit for each element."""
    return {n: nanoseconds * n for n in sizes}


def all_cases():
    """Every case of every family, in the order of the families' names."""
    for module in sorted(info.name for info in pkgutil.iter_modules(__path__)):
        family = importlib.import_module(f"{__name__}.{module}")
        for label, case in family.CASES.items():
            for n in case.ratios:
                yield SizedCase(f"{module}/{label}/{n}", n, case)
