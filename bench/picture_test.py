# bench/picture_test.py: the picture is an SVG with a dot for every ratio, on the right side of 1

import json
import pathlib
import unittest
import xml.etree.ElementTree

import picture

FACTS = {"numpy": "1.0", "processor": "A < B & C"}
SVG = "{http://www.w3.org/2000/svg}"


def row(case, n, ratio):
    return {"case": f"{case}/{n}", "n": n, "ratio": ratio}


def drawn(rows, facts=FACTS):
    return xml.etree.ElementTree.fromstring(picture.picture(facts, rows))


def dots_of(svg):
    """What the dots are of -> the dots; those of the legend have no n."""
    dots = {dot.find(SVG + "title").text: dot for dot in svg.iter(SVG + "circle")}
    return {title: dot for title, dot in dots.items() if "n = " in title}


class Pictures(unittest.TestCase):
    def test_every_ratio_has_its_dot(self):
        rows = [row("a/one", 10, 0.5), row("a/one", 1000, 2.0), row("b_c/two", 10, 30.0), row("b_c/three", 10, None)]
        self.assertEqual(sorted(dots_of(drawn(rows))),
                         ["one, n = 1,000: 2.00", "one, n = 10: 0.50", "two, n = 10: 30.00"])

    def test_slower_is_further_right(self):
        ratios = (0.02, 0.9, 1.0, 1.1, 40)
        dots = dots_of(drawn([row("a/one", n, ratio) for n, ratio in enumerate(ratios, 1)]))
        places = [float(dot.get("cx")) for _, dot in sorted(dots.items())]
        self.assertEqual(places, sorted(set(places)))
        self.assertAlmostEqual(places[2], picture.Axis([0.02, 40]).x(1.0), places=1)
        self.assertGreaterEqual(places[0], picture.LABELS_WIDTH)
        self.assertLess(places[-1], picture.COLUMN_WIDTH)

    def test_sizes_count_from_the_smallest_of_the_case(self):
        dots = dots_of(drawn([row("a/one", 1000, 1), row("a/one", 10, 1), row("a/two", 1000, 1)]))
        shown = [dots[f"{what}: 1.00"] for what in ("one, n = 10", "one, n = 1,000", "two, n = 1,000")]
        self.assertEqual([dot.get("class") for dot in shown],
                         ["size0", "size1", "size0"])

    def test_nothing_measured_is_an_empty_picture(self):
        self.assertEqual(dots_of(drawn([])), {})

    def test_the_saved_results_are_those_of_the_saved_picture(self):
        results = pathlib.Path(__file__).parent / "results"
        saved = sorted(results.glob("*.json"))
        self.assertTrue(saved)
        for path in saved:
            measured = json.loads(path.read_text())
            shown = picture.picture(measured["machine"], measured["rows"])
            self.assertEqual(path.with_suffix(".svg").read_text(), shown)


if __name__ == "__main__":
    unittest.main()
