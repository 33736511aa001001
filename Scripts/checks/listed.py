#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every .cpp file is named in the build list of its folder (or of one above): none is forgotten."""

import re

import tracked


def build_lists(root, path):
    """The build lists that may name `path`, each with the name it would use, nearest first."""
    for folder in path.parents:
        if (root / folder / "CMakeLists.txt").is_file():
            yield folder / "CMakeLists.txt", path.relative_to(folder)


def names(text, relative):
    return re.search(rf'(?<![\w./-]){re.escape(str(relative))}(?![\w.-])', text) is not None


def check():
    root = tracked.arguments(__doc__).root
    findings, count = [], 0
    for path in tracked.files(root):
        # The consumer in Tests/Install is a project of its own, with a build list that this finds too.
        if path.suffix != ".cpp":
            continue
        count += 1
        # A fuzzer is listed by its bare name: its target is called like its file.
        relatives = [path.stem] if path.parts[0] == "Fuzz" else []
        if not any(names((root / build_list).read_text(), name)
                   for build_list, relative in build_lists(root, path) for name in [relative, *relatives]):
            findings.append(f"{path}: in no CMakeLists.txt, so it is never compiled")
    return tracked.report(findings, f"{count} files")


if __name__ == "__main__":
    tracked.main(check)
