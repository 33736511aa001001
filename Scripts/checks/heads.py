#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every source, build list and script names its licence at its head; every header guards itself."""

import tracked

MARK = "SPDX-License-Identifier: Apache-2.0"
BUILD_LISTS = (".cmake", ".cmake.in")


def needs_mark(root, path):
    name = path.name
    return (path.suffix in tracked.CPP + (".c",) or name == "CMakeLists.txt" or name.endswith(BUILD_LISTS)
            or tracked.is_script(root, path))


def check():
    root = tracked.arguments(__doc__).root
    findings, count = [], 0
    for path in tracked.files(root):
        if not needs_mark(root, path):
            continue
        count += 1
        text = tracked.lines(root, path)
        if not any(MARK in line for line in text[:2]):
            findings.append(f"{path}:1: no '{MARK}' in the first two lines")
        if path.suffix == ".h" and "#pragma once" not in text:
            findings.append(f"{path}:1: no '#pragma once'")
    return tracked.report(findings, f"{count} files")


if __name__ == "__main__":
    tracked.main(check)
