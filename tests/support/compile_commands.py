"""The commands by which a build compiles the sources."""

import json
import pathlib
import re


def commands_of(build):
    """Each source and its command, once for each target that compiles it. Sources that are compiled together, in a file
    that includes them, share the command of that file."""
    for entry in json.loads((pathlib.Path(build) / "compile_commands.json").read_text(encoding="utf-8")):
        file = pathlib.Path(entry["file"])
        together = [file]
        if is_unit(entry["command"]) and file.exists():
            together = re.findall(r'^#include "(.*)"$', file.read_text(encoding="utf-8"), re.MULTILINE)
        for source in together:
            yield pathlib.Path(source).resolve(), entry["command"]


def is_unit(command):
    """Whether the command compiles several sources together."""
    return "/Unity/unity_" in command
