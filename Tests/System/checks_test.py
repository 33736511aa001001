#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Each check of Scripts/checks passes a sound checkout and names the fault of an unsound one."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECKS = pathlib.Path(__file__).resolve().parents[2] / "Scripts" / "checks"
HEAD = "// SPDX-License-Identifier: Apache-2.0\n"
HEADER = HEAD + "#pragma once\n"
KIT = "Sources/PlatformKit"
SOUND = {
    "README.md": "See Docs/testing.md.\n",
    "Docs/testing.md": "# Testing\n",
    f"{KIT}/Base/CMakeLists.txt": "# SPDX-License-Identifier: Apache-2.0\nfi_room(Base SOURCES\n  Bytes.cpp)\n",
    f"{KIT}/Base/Bytes.h": HEADER,
    f"{KIT}/Base/Bytes.cpp": HEAD + '#include "PlatformKit/Base/Bytes.h"\n',
    f"{KIT}/Text/CMakeLists.txt": "# SPDX-License-Identifier: Apache-2.0\nfi_room(Text SOURCES Words.cpp)\n",
    f"{KIT}/Text/Words.cpp": HEAD + '#include "PlatformKit/Words.h"\n#include <utf8proc.h>\n'
                             '#include "PlatformKit/Base/Bytes.h"\n',
    "Include/PlatformKit/Words.h": HEADER,
}


class CheckTest(unittest.TestCase):
    def run_check(self, name, changes):
        """The exit status and output of one check on the sound checkout with these files changed."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            subprocess.run(["git", "init", "-q", folder], check=True)
            for path, text in {**SOUND, **changes}.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text)
            done = subprocess.run([sys.executable, "-B", str(CHECKS / name), "--root", folder],
                                  capture_output=True, text=True, timeout=60)
            return done.returncode, done.stdout + done.stderr

    def passes(self, name, changes=None):
        status, output = self.run_check(name, changes or {})
        self.assertEqual(status, 0, output)

    def finds(self, name, changes, fault):
        self.passes(name)
        status, output = self.run_check(name, changes)
        self.assertEqual(status, 1, output)
        self.assertIn(fault, output)

    def test_heads_finds_a_source_without_licence(self):
        self.finds("heads.py", {f"{KIT}/Base/Bytes.cpp": "int a;\n"}, "Bytes.cpp:1: no 'SPDX")

    def test_heads_finds_a_script_without_licence(self):
        self.finds("heads.py", {"Scripts/run": "#!/bin/sh\n\necho\n"}, "Scripts/run:1: no 'SPDX")

    def test_heads_finds_an_unguarded_header(self):
        self.finds("heads.py", {f"{KIT}/Base/Bytes.h": HEAD}, "Bytes.h:1: no '#pragma once'")

    def test_sizes_finds_a_file_of_more_than_a_thousand_lines(self):
        self.passes("sizes.py", {f"{KIT}/Base/Bytes.cpp": "\n" * 1000})
        self.finds("sizes.py", {f"{KIT}/Base/Bytes.cpp": "\n" * 1001}, "1001 lines, at most 1000")

    def test_sizes_finds_a_header_of_more_than_five_hundred_lines(self):
        self.finds("sizes.py", {f"{KIT}/Base/Bytes.h": "\n" * 501}, "501 lines, at most 500")

    def test_listed_finds_a_source_that_no_build_list_names(self):
        self.finds("listed.py", {f"{KIT}/Base/MoreBytes.cpp": HEAD}, "MoreBytes.cpp: in no CMakeLists.txt")

    def test_listed_takes_no_longer_name_for_a_shorter_one(self):
        self.finds("listed.py", {f"{KIT}/Base/ytes.cpp": HEAD}, "/ytes.cpp: in no CMakeLists.txt")

    def test_listed_finds_a_fuzzer_that_is_not_listed(self):
        lists = {"Fuzz/CMakeLists.txt": "fi_fuzzers(BytesFuzzer)\n", "Fuzz/BytesFuzzer.cpp": HEAD}
        self.passes("listed.py", lists)
        self.finds("listed.py", {**lists, "Fuzz/WordsFuzzer.cpp": HEAD}, "Fuzz/WordsFuzzer.cpp: in no")

    def test_layering_finds_a_room_that_looks_up(self):
        self.finds("layering.py",
                   {f"{KIT}/Text/Lines.h": HEADER,
                    f"{KIT}/Base/Bytes.cpp": HEAD + '#include "PlatformKit/Text/Lines.h"\n'},
                   f"Bytes.cpp:2: {KIT}/Text/Lines.h: goes up from {KIT}/Base to {KIT}/Text")

    def test_layering_knows_the_floor_of_a_public_header_by_its_source(self):
        self.finds("layering.py", {f"{KIT}/Base/Bytes.cpp": HEAD + '#include "PlatformKit/Words.h"\n'},
                   "Include/PlatformKit/Words.h: goes up")

    def test_layering_knows_the_floor_of_a_public_header_by_what_it_includes(self):
        self.finds("layering.py",
                   {"Include/PlatformKit/All.h": HEADER + '#include "PlatformKit/Words.h"\n',
                    f"{KIT}/Base/Bytes.cpp": HEAD + '#include "PlatformKit/All.h"\n'},
                   "Include/PlatformKit/All.h: goes up")

    def test_layering_finds_a_public_header_that_shows_an_internal_one(self):
        self.finds("layering.py",
                   {"Include/PlatformKit/Words.h": HEADER + '#include "PlatformKit/Base/Bytes.h"\n'},
                   "a public header includes public headers only")

    def test_layering_finds_a_tool_that_includes_an_internal_header(self):
        self.finds("layering.py",
                   {"Tools/fileimporter/Main.cpp": HEAD + '#include "PlatformKit/Base/Bytes.h"\n'},
                   "only public headers here")

    def test_layering_finds_a_circle_of_files(self):
        self.finds("layering.py",
                   {f"{KIT}/Base/Bytes.h": HEADER + '#include "PlatformKit/Base/Bits.h"\n',
                    f"{KIT}/Base/Bits.h": HEADER + '#include "PlatformKit/Base/Bytes.h"\n'},
                   "circle of files: ")

    def test_layering_finds_a_circle_of_folders_on_one_floor(self):
        self.finds("layering.py",
                   {"Sources/DPOF/Job.h": HEADER, "Sources/PhotoCollections/List.h": HEADER,
                    "Sources/DPOF/Job.cpp": HEAD + '#include "PhotoCollections/List.h"\n',
                    "Sources/PhotoCollections/List.cpp": HEAD + '#include "DPOF/Job.h"\n'},
                   "circle of folders in Sources: ")

    def test_layering_finds_a_room_that_is_not_in_its_table(self):
        self.finds("layering.py", {"Sources/Cellar/Wine.cpp": HEAD}, "stands in no room")

    def test_layering_finds_an_include_of_nothing(self):
        self.finds("layering.py", {f"{KIT}/Base/Bytes.cpp": HEAD + '#include "Bites.h"\n'},
                   '"Bites.h" is no file of the repository')

    def test_third_party_finds_a_library_outside_of_its_room(self):
        self.finds("third_party.py", {f"{KIT}/Base/Bytes.cpp": HEAD + "#include <utf8proc.h>\n"},
                   f"<utf8proc.h> belongs into {KIT}/Text")

    def test_third_party_finds_a_library_in_a_header_of_its_room(self):
        self.finds("third_party.py", {f"{KIT}/Text/Lines.h": HEADER + "#include <utf8proc.h>\n"},
                   "<utf8proc.h> in a header")

    def test_third_party_keeps_the_test_framework_out_of_the_library(self):
        self.finds("third_party.py", {f"{KIT}/Base/Bytes.cpp": HEAD + "#include <gtest/gtest.h>\n"},
                   "<gtest/gtest.h> belongs into Tests")

    def test_references_finds_a_document_that_is_not_there(self):
        self.finds("references.py", {"README.md": "See Docs/magic" + ".md.\n"},
                   "is not in the repository")

    def test_references_finds_a_path_that_is_not_there(self):
        self.finds("references.py", {"README.md": "Run Scripts/fly.\n"},
                   "README.md:1: Scripts/fly is not in the repository")
        self.passes("references.py", {"README.md": "```\nScripts/fly\n```\n"})

    def test_references_finds_pointers_to_elsewhere(self):
        for text in ("see Part" + " 3.1", "closes issue" + " #7", "lies in /" + "root/there", "TO" + "DO later"):
            with self.subTest(text):
                self.finds("references.py", {"README.md": text + "\n"}, "README.md:1: '")


if __name__ == "__main__":
    unittest.main()
