# bench/comparison.py: the times of two modules as ratios, their noise, and the verdict
#
# A round of a row is three times: of the old module, of the new one, and of the old one once more in another process.
# New over old is what counts; old over old, from the same round, shows what the machine does to equal code.

import math
import statistics
from dataclasses import dataclass


@dataclass(frozen=True)
class Row:
    """A case and its rounds, each (old, new, again) in nanoseconds per call."""

    case: str
    rounds: tuple

    @property
    def family(self):
        return self.case.partition("/")[0]

    @property
    def old_ns(self):
        return statistics.median(old for old, _, _ in self.rounds)

    @property
    def new_ns(self):
        return statistics.median(new for _, new, _ in self.rounds)

    @property
    def ratios(self):
        return [new / old for old, new, _ in self.rounds]

    @property
    def ratio(self):
        """New over old: the median of the rounds."""
        return statistics.median(self.ratios)

    @property
    def same_ratio(self):
        """Old over old, in the same way."""
        return statistics.median(again / old for old, _, again in self.rounds)

    @property
    def own_noise(self):
        """How far apart two processes with the old module are.

        This is the deviation two ranks above the middle one: the largest of five rounds, the seventh of ten. The median
        ratio of equal code is slower in 1 to 3 rows of 100, whether times scatter normally or have rare large outliers;
        with three rounds in 5 to 7.
        """
        deviations = sorted(max(again / old, old / again) - 1 for old, _, again in self.rounds)
        return deviations[min((len(deviations) - 1) // 2 + 2, len(deviations) - 1)]


def noise_floor(rows):
    """The minimum noise of a row: the lower quartile of all. The few deviations of one row can be small by chance."""
    noises = sorted(row.own_noise for row in rows)
    return noises[len(noises) // 4] if noises else 0.0


@dataclass(frozen=True)
class Judged:
    """A row with the noise that it is judged by."""

    row: Row
    noise: float

    @property
    def is_slower(self):
        return self.row.ratio > 1 + self.noise

    @property
    def is_faster(self):
        return self.row.ratio * (1 + self.noise) < 1

    @property
    def beyond_noise(self):
        """How much slower the row is after its noise is taken off; below 0 for rows within noise."""
        return self.row.ratio / (1 + self.noise) - 1

    def is_too_slow(self, limit):
        return self.beyond_noise > limit


def judged(rows, floor):
    return [Judged(row, max(row.own_noise, floor)) for row in rows]


def geometric_mean(ratios):
    ratios = list(ratios)
    return math.exp(sum(map(math.log, ratios)) / len(ratios))


def means(rows):
    """(family, rows, new over old, old over old) for each family in alphabetical order, and `all` at the end."""
    families = sorted({row.family for row in rows})
    parts = [(family, [row for row in rows if row.family == family]) for family in families] + [("all", list(rows))]
    return [(name, len(part), geometric_mean(row.ratio for row in part), geometric_mean(row.same_ratio for row in part))
            for name, part in parts if part]


# ---- Text

def table(headings, lines):
    """A table in Markdown, its first column to the left and all others to the right."""
    widths = [max(len(text) for text in column) for column in zip(headings, *lines)]
    rule = ["-" * width if column == 0 else "-" * (width - 1) + ":" for column, width in enumerate(widths)]
    shown = [[text.ljust(width) if column == 0 else text.rjust(width)
              for column, (text, width) in enumerate(zip(texts, widths))] for texts in [headings, rule, *lines]]
    return "\n".join("| " + " | ".join(texts) + " |" for texts in shown)


def nanoseconds(time):
    return f"{time:.2f}" if time < 100 else f"{time:,.0f}"


def percent(share):
    return f"{100 * share:.1f} %"


def mark(row, limit):
    return "TOO SLOW" if row.is_too_slow(limit) else "slower" if row.is_slower else "faster"


def changes(rows, limit):
    """The table of the judged rows outside noise, slower ones first."""
    outside = sorted((one for one in rows if one.is_slower or one.is_faster), key=lambda one: -one.row.ratio)
    if not outside:
        return "No row is outside noise."
    return table(["case", "old (ns)", "new (ns)", "ratio", "spread", "noise", "mark"],
                 [[one.row.case, nanoseconds(one.row.old_ns), nanoseconds(one.row.new_ns), f"{one.row.ratio:.3f}",
                   f"{min(one.row.ratios):.3f} to {max(one.row.ratios):.3f}", percent(one.noise), mark(one, limit)]
                  for one in outside])


def summary(rows, limit, sizes):
    """Counts, means, the worst row, the sizes of both files, and the verdict."""
    slower, faster = sum(one.is_slower for one in rows), sum(one.is_faster for one in rows)
    noises = sorted(one.noise for one in rows)
    worst = max(rows, key=lambda one: one.beyond_noise)
    too_slow = [one for one in rows if one.is_too_slow(limit)]
    old_size, new_size = sizes
    lines = [
        f"Rows: {len(rows)}. Slower beyond noise: {slower}. Faster: {faster}. Within: {len(rows) - slower - faster}.",
        f"Noise: {percent(noises[len(noises) // 2])} in the median row, {percent(noises[len(noises) * 9 // 10])} "
        f"or more in one row of ten; above the limit in {sum(noise > limit for noise in noises)}.",
        "",
        table(["family", "rows", "new / old", "old / old"],
              [[name, str(count), f"{ratio:.3f}", f"{same:.3f}"] for name, count, ratio, same
               in means([one.row for one in rows])]),
        "",
        f"Worst row beyond noise: {worst.row.case}, {percent(worst.beyond_noise)}." if worst.is_slower
        else "No row is slower beyond noise.",
        f"Module files: old {old_size:,} bytes, new {new_size:,} bytes, ratio {new_size / old_size:.3f}.",
        f"TOO SLOW, by more than {percent(limit)} beyond noise: " + ", ".join(one.row.case for one in too_slow) + "."
        if too_slow
        else f"No row is slower than {percent(limit)} beyond noise.",
    ]
    return "\n".join(lines)


def exit_status(rows, limit, failed_in_new):
    """1 when a row is too slow or when a case fails in the new module only, else 0."""
    return 1 if failed_in_new or any(one.is_too_slow(limit) for one in rows) else 0
