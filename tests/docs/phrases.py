# tests/docs/phrases.py: no page uses a phrase that readers stumble over
#
# Usage: phrases.py PROJECT_DIRECTORY
#
# phrases.txt beside this file lists the phrases and their exceptions. Phrases are searched in the text of all pages,
# across line ends, and not in code. An exception that no page needs is a fault, so that the list stays true.

import pathlib
import re
import sys
from typing import NamedTuple

import extract_blocks
import pages

EXCEPTION = re.compile(r"except (\S+): (.+)")
ROW = re.compile(r"([^:]+): (.+)")


class Phrases(NamedTuple):
    instead: dict  # by phrase, what to write
    exceptions: dict  # by page and phrase, the line of the exception


def phrases_of(text):
    """The phrases and exceptions of a list; raises ValueError for a line that is neither."""
    phrases = Phrases({}, {})
    for number, line in enumerate(text.splitlines(), start=1):
        if not line.strip() or line.startswith("#"):
            continue
        exception, row = EXCEPTION.fullmatch(line), ROW.fullmatch(line)
        if exception:
            phrases.exceptions[exception.groups()] = number
        elif row and row[1] not in phrases.instead:
            phrases.instead[row[1]] = row[2]
        else:
            raise ValueError(f"{number}: is no phrase with what to write in its place, or stands there twice")
    for (_, phrase), number in phrases.exceptions.items():
        if phrase not in phrases.instead:
            raise ValueError(f"{number}: excepts '{phrase}', which is no phrase of the list")
    return phrases


def found_in(text, instead):
    """Line and phrase of every use."""
    searched = pages.CODE.sub(lambda code: "`" * len(code.group()), pages.prose_of(text))
    for phrase in instead:
        words = r"\s+".join(re.escape(word) for word in phrase.split())
        for match in re.finditer(rf"(?<!\w){words}(?!\w)", searched, re.IGNORECASE):
            yield searched.count("\n", 0, match.start()) + 1, phrase


def faults_of_pages(texts, phrases):
    """What is wrong with pages, given as their text by name, as `NAME:LINE: words`; and the exceptions not needed."""
    needed = set()
    for name, text in texts.items():
        for line, phrase in sorted(found_in(text, phrases.instead)):
            if (name, phrase) in phrases.exceptions:
                needed.add((name, phrase))
            else:
                yield f"{name}:{line}: '{phrase}'; write: {phrases.instead[phrase]}"
    for (name, phrase), number in phrases.exceptions.items():
        if (name, phrase) not in needed:
            yield f"phrases.txt:{number}: {name} does not need the exception '{phrase}'"


def main(project):
    project = pathlib.Path(project)
    phrases = phrases_of(pathlib.Path(__file__).with_name("phrases.txt").read_text())
    texts = {str(page.relative_to(project)): page.read_text() for page in extract_blocks.pages_of(project)}
    faults = list(faults_of_pages(texts, phrases))
    print("\n".join(faults) or f"{len(texts)} pages use none of {len(phrases.instead)} phrases")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
