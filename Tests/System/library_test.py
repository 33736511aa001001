#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the built shared library is to the program that loads it. Usage: library_test.py LIBRARY [CASE...]"""

import pathlib
import subprocess
import sys
import unittest

LIBRARY = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else None

# Every library that the importer may bring into the process of an application, with its licence in
# Docs/architecture.md. None of them is under the GPL.
MAY_NEED = {"jpeg", "tiff", "png16", "z", "zimg", "lcms2", "utf8proc", "plist-2.0", "mount"}
RUNTIME = {"stdc++", "gcc_s", "m", "c", "ld-linux-x86-64", "ld-linux-aarch64"}


def dynamic_entries():
    """The dynamic section as pairs of tag and value."""
    listing = subprocess.run(["readelf", "-dW", str(LIBRARY)], check=True, capture_output=True, text=True).stdout
    for line in listing.splitlines():
        words = line.split(None, 2)
        if len(words) == 3 and words[0].startswith("0x"):
            yield words[1].strip("()"), words[2]


def bracketed(value):
    return value[value.index("[") + 1:value.rindex("]")]


def load(code="", bind_now="1"):
    """Loads the library into a fresh interpreter, runs `code` there and returns the finished process."""
    program = f"import ctypes, os\nlibrary = ctypes.CDLL({str(LIBRARY)!r}, mode=os.RTLD_NOW)\n{code}"
    return subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=60,
                          env={"LD_BIND_NOW": bind_now, "PATH": "/usr/bin:/bin", "HOME": "/nonexistent"})


class Library(unittest.TestCase):
    def test_bears_the_name_of_its_major_version(self):
        names = [bracketed(value) for tag, value in dynamic_entries() if tag == "SONAME"]
        self.assertEqual(names, ["libFileImporter.so.1"])

    def test_needs_only_libraries_of_the_table(self):
        needed = {bracketed(value).partition(".so.")[0].removeprefix("lib")
                  for tag, value in dynamic_entries() if tag == "NEEDED"}
        self.assertEqual(needed - MAY_NEED - RUNTIME, set())
        self.assertIn("c", needed)

    def test_carries_no_search_path_and_no_text_relocation(self):
        tags = {tag for tag, _ in dynamic_entries()}
        self.assertEqual(tags & {"RPATH", "RUNPATH", "TEXTREL"}, set())

    def test_asks_for_no_executable_stack(self):
        listing = subprocess.run(["readelf", "-lW", str(LIBRARY)],
                                 check=True, capture_output=True, text=True).stdout
        stack = [line.split() for line in listing.splitlines() if "GNU_STACK" in line]
        self.assertEqual(len(stack), 1)
        self.assertNotIn("RWE", stack[0])

    def test_loads_with_every_symbol_bound_and_says_nothing(self):
        loaded = load()
        self.assertEqual((loaded.returncode, loaded.stdout, loaded.stderr), (0, "", ""))

    def test_starts_no_thread_and_opens_no_file_by_being_loaded(self):
        loaded = load("descriptors = sorted(os.listdir('/proc/self/fd'))\n"
                      "print(len(os.listdir('/proc/self/task')), descriptors)")
        # 0 to 2, and the one that lists the folder.
        self.assertEqual((loaded.stdout, loaded.stderr), ("1 ['0', '1', '2', '3']\n", ""))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]])
