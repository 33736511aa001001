#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the documents say in figures and lists is what the code says."""

import ast
import json
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCS = ROOT / "Docs"


def first_column(text):
    """The words in back quotes that stand in the first column of a table's rows."""
    return [name for row in re.findall(r"^\| (`[^|]*) \|", text, re.M) for name in re.findall(r"`([^`]+)`", row)]


def c_value(expression):
    """The value of a C++ integer expression as it stands in Limits.h."""
    plain = re.sub(r"u?int\d+_t\{(\d+)\}", r"\1", expression.replace("'", ""))
    if not re.fullmatch(r"[\d\s<*+()]+", plain):
        raise ValueError(expression)
    return eval(plain)  # digits and operators only, by the line above


class Documents(unittest.TestCase):
    def test_limits_are_those_of_the_code(self):
        header = (ROOT / "Include/PlatformKit/Limits.h").read_text()
        in_code = {name: c_value(value)
                   for name, value in re.findall(r"uint\d+_t (maximum\w+) = ([^;]+);", header)}
        rows = re.findall(r"^\| `(maximum\w+)` \| (\d+) \|", (DOCS / "limits.md").read_text(), re.M)
        self.assertEqual({name: int(value) for name, value in rows}, in_code)
        self.assertGreater(len(in_code), 0)

    def test_presets_are_those_of_cmake(self):
        presets = json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]
        visible = {preset["name"] for preset in presets if not preset.get("hidden")}
        section = (DOCS / "testing.md").read_text().partition("## ")[0]
        self.assertEqual(set(first_column(section)), visible)

    def test_steps_are_those_of_the_check_script(self):
        steps = subprocess.run([ROOT / "Scripts/check", "--list"], check=True, capture_output=True, text=True)
        section = (DOCS / "testing.md").read_text().partition("## Checks")[2]
        self.assertEqual(set(first_column(section)), set(steps.stdout.split()))

    def test_dependencies_are_those_that_the_library_may_need(self):
        table = (DOCS / "architecture.md").read_text().partition("## What it builds on")[2]
        source = (ROOT / "Tests/System/library_test.py").read_text()
        may_need = re.search(r"^MAY_NEED = (\{[^}]*\})", source, re.M)
        for library in ast.literal_eval(may_need.group(1)):
            with self.subTest(library):
                self.assertIn(library.partition("-")[0], table)


if __name__ == "__main__":
    unittest.main()
