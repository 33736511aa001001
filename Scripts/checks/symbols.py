#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The shared library exports exactly the names of the golden list: an export is always a decision."""

import difflib
import pathlib
import subprocess

import tracked

GOLDEN = "Tests/System/exported-symbols.txt"
# What the linker and the toolchain put into every library.
OURS = ("fi::", "typeinfo for fi::", "typeinfo name for fi::", "vtable for fi::", "VTT for fi::",
        "non-virtual thunk to fi::", "virtual thunk to fi::")
EVERYWHERE = {"_init", "_fini", "_edata", "_end", "__bss_start"}


def exported(library):
    """The library's own exported names, demangled and sorted by their bytes."""
    listing = subprocess.run(["nm", "-DC", "--defined-only", str(library)],
                             check=True, capture_output=True, text=True).stdout
    names = {line.split(" ", 2)[2] for line in listing.splitlines() if line.strip()}
    return sorted(names - EVERYWHERE, key=str.encode)


def check():
    arguments = tracked.arguments(
        __doc__,
        ("--library", {"type": pathlib.Path, "required": True}),
        ("--update", {"action": "store_true", "help": "rewrite the golden list from the library"}))
    golden = arguments.root / GOLDEN
    names = exported(arguments.library)
    if arguments.update:
        golden.write_text("".join(name + "\n" for name in names))
    listed = golden.read_text().splitlines()
    findings = [line for line in difflib.unified_diff(listed, names, GOLDEN, "exported now", lineterm="", n=0)]
    if findings:
        findings.append("Meant? Then run Scripts/check --update-symbols and commit the list.")
    findings += [f"{name}: not of namespace fi" for name in names if not name.startswith(OURS)]
    return tracked.report(findings, f"{len(names)} names")


if __name__ == "__main__":
    tracked.main(check)
