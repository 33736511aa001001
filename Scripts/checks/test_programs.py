#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Names the test programs (build targets) that hold a test whose name matches a pattern."""

import argparse
import json
import pathlib
import re
import sys

TEST_MACRO = re.compile(r"\bTYPED_TEST(?:_P)?\s*\(\s*(\w+)\s*,\s*(\w+)|\bTEST(?:_F|_P)?\s*\(\s*(\w+)\s*,\s*(\w+)")
TARGET = re.compile(r" -o \S*CMakeFiles/([^/]+)\.dir/")


def names_in(source):
    for groups in TEST_MACRO.findall(source.read_text(errors="replace")):
        suite, case = groups[0] or groups[2], groups[1] or groups[3]
        yield f"{suite}.{case}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, help="a configured build folder")
    parser.add_argument("pattern")
    arguments = parser.parse_args()
    wanted = re.compile(arguments.pattern)

    targets = set()
    for entry in json.loads((pathlib.Path(arguments.build) / "compile_commands.json").read_text()):
        target = TARGET.search(entry["command"])
        source = pathlib.Path(entry["file"])
        if target and "Tests" in source.parts and any(map(wanted.search, names_in(source))):
            targets.add(target.group(1))
    print("\n".join(sorted(targets)), end="\n" if targets else "")
    return 0


if __name__ == "__main__":
    sys.exit(main())
