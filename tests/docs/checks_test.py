# tests/docs/checks_test.py: the checks of the documentation notice what they are for

import pathlib
import re
import shutil
import sys
import tempfile
import unittest

import extract_blocks
import function_pages
import pages
import phrases
import printed

PROJECT = pathlib.Path(sys.argv.pop(1))
USED = ["plugin/host/functions.def", "refhost/script/library/arrays.hvm", "docs", "tests/scripts"]


class ExtractBlocks(unittest.TestCase):
    def test_a_block_keeps_its_lines(self):
        (block,) = extract_blocks.blocks_of("one\n\n```hvm\nprint(1)\n```\n")
        self.assertEqual(extract_blocks.script_of([block]).splitlines()[3], "print(1)")

    def test_blocks_of_one_script_stay_together_on_their_lines(self):
        own, shared = "```hvm\nprint(0)\n```\n", "```hvm\nx = 1\n```\ntext\n```sh\nls\n```\n```hvm\nprint(x)\n```\n"
        page = f"{own}<!-- one script -->\n{shared}<!-- end of the script -->\n{own}<!-- one script -->\n{shared}"
        scripts = [extract_blocks.script_of(blocks).splitlines() for blocks in extract_blocks.scripts_of(page)]
        self.assertEqual([[line for line in script if line] for script in scripts],
                         [["print(0)"], ["x = 1", "print(x)"], ["print(0)"], ["x = 1", "print(x)"]])
        for script in scripts:
            for number, line in enumerate(script):
                self.assertIn(line, ("", page.splitlines()[number]))

    def test_the_indent_of_a_block_goes(self):
        (block,) = extract_blocks.blocks_of("1. first\n\n   ```hvm\n   if 1\n     print(1)\n   end\n   ```\n")
        self.assertEqual(block.lines, ["if 1", "  print(1)", "end"])

    def test_a_block_of_no_language_is_a_fault(self):
        for text in ("```\nprint(1)\n```\n", "```hmv\nprint(1)\n```\n"):
            with self.assertRaises(ValueError):
                extract_blocks.blocks_of(text)

    def test_an_open_block_is_a_fault(self):
        with self.assertRaises(ValueError):
            extract_blocks.blocks_of("```hvm\nprint(1)\n")

    def test_pages_of_every_folder_are_read_and_old_scripts_go(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for pages in ("docs/functions", "docs/library"):
                (root / pages).mkdir(parents=True)
            for page in ("README.md", "docs/guide.md", "docs/functions/xone.md", "docs/library/one.md"):
                (root / page).write_text("```hvm\nprint(1)\n```\n```text\nnot run\n```\n")
            output = root / "out"
            output.mkdir()
            (output / "old.hvm").write_text("fail()")
            self.assertEqual(extract_blocks.extract(root, output), (4, []))
            names = sorted(str(path.relative_to(output)) for path in output.rglob("*.hvm"))
            self.assertEqual(names, ["README-line-2.hvm", "docs/functions/xone-line-2.hvm", "docs/guide-line-2.hvm",
                                     "docs/library/one-line-2.hvm"])


class Printed(unittest.TestCase):
    PAGE = "```hvm\nprint(1)\n```\n\n<!-- printed -->\n\n```text\n1\n```\n"

    def test_a_text_belongs_to_the_script_above(self):
        ((block, script),) = printed.shown_by(self.PAGE + "```hvm\nprint(2)\n```\n")
        self.assertEqual((block.lines, script[0].lines), (["1"], ["print(1)"]))

    def test_a_mark_without_a_text_or_a_script_is_a_fault(self):
        for page in (self.PAGE.replace("```text", "```hvm"), self.PAGE.replace("```hvm", "```sh"),
                     "```hvm\n1\n```\n<!-- printed -->\n"):
            with self.assertRaises(ValueError):
                list(printed.shown_by(page))

    def test_another_output_and_a_failing_script_are_noticed(self):
        with tempfile.TemporaryDirectory() as folder:
            hvm = pathlib.Path(folder) / "hvm"
            for status, output, faults in ((0, "0\n1  \n2", 0), (0, "0", 1), (1, "1", 1)):
                hvm.write_text(f"#!/bin/sh\nprintf '{output}'\nexit {status}\n")
                hvm.chmod(0o755)
                self.assertEqual(len(list(printed.faults_of_page(self.PAGE, hvm))), faults)


class Pages(unittest.TestCase):
    def faults_of_links(self, text):
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder) / "page.md"
            page.write_text(text)
            other = page.with_name("other.md")
            other.write_text("# Other\n\n## `a + b`, and *more*\n\n## Twice\n\n## Twice\n")
            return list(pages.faults_of_links(page))

    def test_links_to_files_and_titles_are_in_order(self):
        self.assertEqual(self.faults_of_links("# Page\n[a](other.md) [b](other.md#a--b-and-more) [c](#page) [d](.)\n"
                                              "[e](https://example.org/x.md#y) [f](other.md#twice-1) `[g](none.md)`\n"
                                              "```text\n[h](none.md)\n```\n"), [])

    def test_a_link_to_nothing_is_noticed_with_its_line(self):
        for link in ("none.md", "other.md#none", "#none", "other.md#twice-2"):
            with self.subTest(link):
                (fault,) = self.faults_of_links(f"# Page\n```text\nx\n```\nSee [this]({link}).\n")
                self.assertTrue(fault.startswith("5: links to "), fault)

    def test_a_name_of_no_test_is_noticed_with_its_line(self):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder) / "tests/plugin/one_test.cpp"
            source.parent.mkdir(parents=True)
            source.write_text("TEST(One, IsOne) {}\nTEST_P(Two,\n       AreTwo) {}\n")
            tests = pages.tests_of(pathlib.Path(folder))
        self.assertEqual(list(pages.faults_of_test_names("`One.IsOne`, `Two.AreTwo`, `One.*`, `one.is`\n", tests)), [])
        for name in ("One.IsTwo", "Two.IsOne", "Three.*"):
            (fault,) = pages.faults_of_test_names(f"# Page\n\nSee `One.IsOne` and `{name}`.\n", tests)
            self.assertEqual(fault, f"3: names the test {name}, which there is not")

    def test_a_path_to_nothing_is_noticed_with_its_line(self):
        with tempfile.TemporaryDirectory() as folder:
            project = pathlib.Path(folder)
            (project / "plugin/array").mkdir(parents=True)
            (project / "plugin/array/one.hpp").touch()
            text = "`array/one.hpp`, `array/one`, `plugin/array`, `x / x`, `one.hpp`\n"
            self.assertEqual(list(pages.faults_of_paths(text, project)), [])
            for path in ("array/two.hpp", "array/on", "array/one.cpp", "reader/one.hpp"):
                (fault,) = pages.faults_of_paths(f"# Page\nSee `array/one` and `{path}`.\n", project)
                self.assertEqual(fault, f"2: names {path}, which there is not")

    def test_a_row_of_a_table_with_other_cells_than_the_head_is_noticed(self):
        table = "| a | b |\n| --- | --- |\n| `x \\| y` | 2 |\n"
        self.assertEqual(list(pages.faults_of_tables(table + "\n| c |\n| --- |\n```text\n| 1 | 2 |\n```\n")), [])
        for row in ("| 1 |", "| 1 | 2 | 3 |", "| --- | --- | --- |"):
            self.assertIn("4: has ", "".join(pages.faults_of_tables(table + row + "\n")))

    def test_a_page_that_no_links_lead_to_is_noticed(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "docs/library").mkdir(parents=True)
            (root / "README.md").write_text("[a](docs/a.md) [library](docs/library) [none](none.md)\n")
            (root / "docs/a.md").write_text("[a](#a) [b](b.md#x)\n")
            (root / "docs/b.md").write_text("[a](a.md) `[c](c.md)`\n")
            (root / "docs/c.md").write_text("[b](b.md)\n")
            (root / "docs/library/README.md").write_text("[one](one.md)\n")
            (root / "docs/library/one.md").write_text("# one\n")
            self.assertEqual(pages.orphans_of(root), [root / "docs/c.md"])

    def test_pages_of_other_folders_are_reached_by_links(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder).resolve()
            (root / "bench").mkdir()
            (root / "README.md").write_text("[bench](bench) [none](none.md)\n")
            (root / "bench/README.md").write_text("[up](../README.md) [more](more.md)\n")
            (root / "bench/more.md").write_text("more\n")
            (root / "bench/other.md").write_text("other\n")
            self.assertEqual(pages.reached_from_readme(root),
                             {root / page for page in ("README.md", "bench/README.md", "bench/more.md")})

    def test_a_function_without_a_task_is_noticed(self):
        listing = "FUNCTION(xone, create, 1, working)\nFUNCTION(xtwo, create, 1, stub)\nFUNCTION(xeig, x, 1, working)\n"
        library = "fn three(a)\nfn arrays_four(a)\n"
        text = "[xone](functions/xone.md) [three](library/three.md)\n"
        self.assertEqual(list(pages.faults_of_tasks(text, listing, library)), [])
        self.assertEqual(list(pages.faults_of_tasks("", listing, library)),
                         ["1: does not link to functions/xone.md", "1: does not link to library/three.md"])

    def test_a_long_readme_is_noticed(self):
        self.assertEqual(list(pages.faults_of_readme("line\n" * 90)), [])
        self.assertEqual(list(pages.faults_of_readme("line\n" * 91)), ["91: has 91 lines, more than 90"])

    def test_a_recipe_without_one_block_that_expects_is_noticed(self):
        recipe = "### Recipe\n\n```hvm\nprint(1)  # expect: 1\n```\n\n"
        enough = recipe * pages.FEWEST_RECIPES
        self.assertEqual(list(pages.faults_of_cookbook(enough)), [])
        self.assertEqual(list(pages.faults_of_cookbook(enough[len(recipe):])), ["1: 39 recipes, fewer than 40"])
        for other in (recipe.replace("# expect", "# gives"), recipe.replace("```hvm", "```text"), "### Recipe\n",
                      recipe.replace("print(1)", "print(0)\n```\n```hvm\nprint(1)")):
            (fault,) = pages.faults_of_cookbook(enough + other)
            self.assertIn("the recipe is not one hvm block", fault)


class Phrases(unittest.TestCase):
    LIST = "# List\n\nin order to: to\nis to be had: there is\nexcept old.md: in order to\n"

    def faults(self, text, name="new.md"):
        others = {"old.md": "In order to."}
        return list(phrases.faults_of_pages({**others, name: text}, phrases.phrases_of(self.LIST)))

    def test_a_phrase_is_noticed_with_file_and_line(self):
        self.assertEqual(self.faults("# Title\n\nIt is to be had.\n"), ["new.md:3: 'is to be had'; write: there is"])

    def test_a_phrase_is_noticed_in_any_case_and_across_line_ends(self):
        for text in ("In Order To", "- in order\n  to go", "| in order to |", "**in order** to, in order  to"):
            with self.subTest(text):
                self.assertEqual([fault[:9] for fault in self.faults(text)], ["new.md:1:"])

    def test_parts_of_words_and_code_are_no_phrases(self):
        for text in ("within order to", "in order today", "`in order to`", "```text\nin order to\n```"):
            with self.subTest(text):
                self.assertEqual(self.faults(text), [])

    def test_a_line_behind_code_keeps_its_number(self):
        (fault,) = self.faults("```text\na\nb\n```\n`x` in order to\n")
        self.assertTrue(fault.startswith("new.md:5: "), fault)

    def test_an_exception_holds_for_its_page_alone(self):
        self.assertEqual(self.faults("In order to.", "old.md"), [])
        self.assertEqual(len(self.faults("In order to.")), 1)

    def test_an_exception_that_is_not_needed_is_noticed(self):
        faults = self.faults("To go.", "old.md")
        self.assertEqual(faults, ["phrases.txt:5: old.md does not need the exception 'in order to'"])

    def test_a_line_that_is_no_phrase_is_a_fault(self):
        for line in ("in order to", "in order to: to\nin order to: for", "except a.md: is to be had"):
            with self.subTest(line), self.assertRaises(ValueError):
                phrases.phrases_of(line + "\n")


class FunctionPages(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name)
        for used in USED:
            source = PROJECT / used
            target = self.root / used
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copytree(source, target) if source.is_dir() else shutil.copy(source, target)
        self.page = self.root / "docs/functions/xzeros.md"
        self.script = self.root / "tests/scripts/create/xzeros.hvm"

    def tearDown(self):
        self.folder.cleanup()

    def assert_faulty(self, words):
        """There is a fault with these words. One of a page names its line, which the words leave out or name."""
        faults = list(function_pages.faults_of_project(self.root))
        without_line = [re.sub(r"\.md:\d+: ", ".md: ", fault) for fault in faults]
        self.assertTrue(any(words in fault for fault in faults + without_line), f"'{words}' is not among {faults}")
        for fault, other in zip(faults, without_line):
            self.assertTrue(fault != other or ".md" not in fault, f"without a line: {fault}")

    def change(self, path, old, new):
        text = path.read_text()
        self.assertIn(old, text)
        path.write_text(text.replace(old, new))

    def test_a_missing_page_is_noticed(self):
        self.page.unlink()
        self.assert_faulty("xzeros.md:1: there is no such page")

    def test_a_missing_script_is_noticed(self):
        self.script.unlink()
        self.assert_faulty("0 scripts xzeros.hvm")

    def test_a_script_in_the_folder_of_another_family_is_noticed(self):
        self.script.rename(self.root / "tests/scripts/reduce/xzeros.hvm")
        self.assert_faulty("xzeros.hvm: lies in another folder than that of its family, create")

    def test_a_script_in_two_folders_is_noticed(self):
        shutil.copy(self.script, self.root / "tests/scripts/reduce/xzeros.hvm")
        self.assert_faulty("2 scripts xzeros.hvm")

    def test_a_script_that_calls_or_expects_nothing_is_noticed(self):
        self.script.write_text("print(1)  # xzeros(1)\n")
        self.assert_faulty("does not call xzeros")
        self.assert_faulty("expects nothing")

    def test_a_new_function_without_a_page_is_noticed(self):
        listing = self.root / "plugin/host/functions.def"
        listing.write_text(listing.read_text() + "FUNCTION(xnew, create, 1, working)\n")
        self.assert_faulty("xnew.md:1: there is no such page")

    def test_a_page_without_a_cost_or_with_two_is_noticed(self):
        self.change(self.page, "**Cost:** ", "Cost: ")
        self.assert_faulty(": has 0 paragraphs '**Cost:** …'")
        self.change(self.page, "Cost: ", "**Cost:** O(1).\n\n**Cost:** ")
        self.assert_faulty(": has 2 paragraphs '**Cost:** …'")

    def test_a_page_without_an_example_is_noticed(self):
        self.change(self.page, "```hvm", "```text")
        self.assert_faulty("has no example")

    def test_an_example_that_expects_nothing_is_noticed(self):
        self.change(self.page, "# expect", "# gives")
        self.assert_faulty("expects anything")

    def test_an_example_outside_its_section_does_not_count(self):
        text = self.page.read_text().replace("```hvm", "```text")
        self.page.write_text(text + "\n```hvm\nprint(1)  # expect: 1\n```\n")
        self.assert_faulty("has no example")

    def test_another_form_is_noticed(self):
        self.change(self.page, "## Result", "## Results")
        self.assert_faulty("has the sections")

    def test_the_old_title_of_the_failures_is_noticed(self):
        self.change(self.page, "## Failures", "## Refusals and errors")
        self.assert_faulty("has the sections")

    def test_another_section_is_noticed_with_its_line(self):
        page = "# xone\n\nGives one.\n\n" + "".join(f"## {title}\n\ntext\n\n" for title in function_pages.SECTIONS)
        for old, new, line in (("## Arguments\n\ntext\n\n", "", 13), ("## Result\n", "## Results\n", 17),
                               ("## See also\n\ntext\n\n", "", 24)):
            (fault,) = function_pages.faults_of_page(page.replace(old, new), "xone")
            self.assertTrue(fault.startswith(f"{line}: has the sections "), fault)

    def test_a_section_too_many_is_noticed(self):
        self.page.write_text(self.page.read_text() + "\n## More\n")
        self.assert_faulty("has the sections")

    def test_the_pages_are_in_order(self):
        self.assertEqual(list(function_pages.faults_of_project(self.root)), [])

    def test_other_columns_in_the_library_are_noticed(self):
        page = self.root / "docs/library/mask.md"
        self.change(page, "| When | What happens | Remedy |", "| When | Error | Remedy |")
        self.change(page, "| Name | Accepts |", "| Name | Kind |")
        self.assert_faulty("mask.md: has no table with the columns ['When', 'What happens', 'Remedy'] under Failures")
        self.assert_faulty("mask.md: has no table with the columns ['Name', 'Accepts', 'Default', 'Meaning']")

    def test_incomplete_rows_in_the_library_are_noticed(self):
        page = self.root / "docs/library/mask.md"
        self.change(page, "| the shapes differ |", "| |")
        self.assert_faulty("mask.md: has a failure without a condition")
        self.change(page, "| `a` | array | | the elements |", "| `a` | | | the elements |")
        self.assert_faulty("mask.md: has an argument without name, kind or meaning")
        self.change(page, "| `a` | | | the elements |", "| `a` | array | the elements |")
        self.assert_faulty("mask.md: has a row of 3 cells under Arguments")

    def test_a_failure_in_the_library_without_the_words_of_its_error_is_noticed(self):
        page = self.root / "docs/library/mask.md"
        self.change(page, "`mask: m has the shape [3], and a has [5]`", "the call fails")
        self.assert_faulty("without the words of the error in backticks")

    def test_a_page_of_the_library_without_a_cost_is_noticed(self):
        self.change(self.root / "docs/library/mask.md", "**Cost:** ", "Cost: ")
        self.assert_faulty("mask.md: has 0 paragraphs '**Cost:** …'")

    def test_a_missing_sentence_is_noticed(self):
        lines = self.page.read_text().splitlines()
        for sentence in ("", "two. Sentences.", "lower case.", "No end"):
            self.page.write_text("\n".join(lines[:2] + [sentence] + lines[3:]))
            self.assert_faulty("xzeros.md:3: has no sentence")

    def test_another_title_is_noticed(self):
        self.change(self.page, "# xzeros\n", "# zeros\n")
        self.assert_faulty("xzeros.md:1: does not begin")

    def test_a_page_that_the_index_leaves_out_is_noticed(self):
        self.change(self.root / "docs/functions/README.md", "(xzeros.md)", "(xones.md)")
        self.assert_faulty("README.md:1: does not link to xzeros.md")

    def test_a_page_of_nothing_is_noticed(self):
        self.page.with_name("xnothing.md").write_text("# xnothing\n")
        self.assert_faulty("xnothing.md:1: is of nothing that is served")

    def test_a_missing_page_or_script_of_the_library_is_noticed(self):
        (self.root / "docs/library/column.md").unlink()
        (self.root / "tests/scripts/library/column.hvm").unlink()
        self.assert_faulty("library/column.md:1: there is no such page")
        self.assert_faulty("0 scripts column.hvm")

    def test_a_new_function_of_the_library_without_a_page_is_noticed(self):
        library = self.root / "refhost/script/library/arrays.hvm"
        library.write_text(library.read_text() + "\nfn arrays_other(a)\nend\n\nfn other(a)\nend\n")
        self.assert_faulty("library/other.md:1: there is no such page")
        faults = "\n".join(function_pages.faults_of_project(self.root))
        self.assertNotIn("arrays_other", faults)


if __name__ == "__main__":
    unittest.main()
