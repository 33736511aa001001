#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A file includes only its own floor and the floors below, and nothing goes in circles.

A public header stands on the floor of the .cpp files that bear its name, or on the highest floor that it
includes itself when it has none."""

import re

import tracked

# Lowest first; folders in one row share a floor. A longer path wins over a shorter one.
FLOORS = [
    ["Sources/PlatformKit/Base"],
    ["Sources/PlatformKit/Text"],
    ["Sources/PlatformKit/Files"],
    ["Sources/PlatformKit/RunLoop"],
    ["Sources/PlatformKit/Codecs"],
    ["Sources/PlatformKit/Drawing"],
    ["Sources/PlatformKit/Imaging"],
    ["Sources/PlatformKit/Pdf"],
    ["Sources/PlatformKit/Devices"],
    ["Sources/Foundation"],
    ["Sources/ImageMetadata"],
    ["Sources/PhotoCollections", "Sources/DPOF"],
    ["Sources/CocoaImageServices"],
    ["Sources/FileImporter"],
    ["Sources/DataPreparation"],
]
PUBLIC = "Include"
# Nobody includes these from outside. The first group sees public headers only, the second everything.
USERS = ("Tools/", "Examples/", "Tests/Install/")
WITNESSES = ("Tests/", "Fuzz/", "Bench/")
HELPERS = "Helpers/"
HELPER_FLOOR = "Sources/PlatformKit/Pdf"
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')
ROOTS = ("Include", "Sources", "Tests", "Fuzz", "Bench", "Tools", "Tools/fileimporter", "Examples", "Helpers", "")


class Layers:
    """The include graph of the checkout and the floor of each of its files."""

    def __init__(self, root):
        self.root = root
        self.paths = {str(path) for path in tracked.files(root) if path.suffix in tracked.CPP}
        self.findings = []
        self.edges = {path: self._includes(path) for path in sorted(self.paths)}
        self.rooms = {folder: rank for rank, row in enumerate(FLOORS) for folder in row}
        self.floor_of_name = self._floors_of_names()
        self.floor = {}
        for path in sorted(self.paths):
            self._settle(path, set())

    def _includes(self, path):
        found = []
        folder = path.rpartition("/")[0]
        for number, line in enumerate(tracked.lines(self.root, path), 1):
            include = INCLUDE.match(line)
            if not include:
                continue
            target = self._resolve(folder, include.group(1))
            if target is None:
                self.findings.append(f'{path}:{number}: "{include.group(1)}" is no file of the repository')
            else:
                found.append((number, target))
        return found

    def _resolve(self, folder, name):
        for base in (folder, *ROOTS):
            candidate = f"{base}/{name}" if base else name
            if candidate in self.paths:
                return candidate
        return None

    def _room_floor(self, path):
        """The floor of the room that a file of Sources stands in, or None outside of all rooms."""
        folder = path.rpartition("/")[0]
        while folder:
            if folder in self.rooms:
                return self.rooms[folder]
            folder = folder.rpartition("/")[0]
        return None

    def _floors_of_names(self):
        """The highest floor on which a .cpp file of that name (or `Name_Topic.cpp`) stands."""
        floors = {}
        for path in self.paths:
            floor = self._room_floor(path)
            if path.endswith(".cpp") and floor is not None:
                stem = path.rpartition("/")[2].removesuffix(".cpp")
                for name in {stem, stem.partition("_")[0]}:
                    floors[name] = max(floor, floors.get(name, -1))
        return floors

    def _settle(self, path, on_the_way):
        """The floor of a file; -1 for a public header that needs nothing."""
        if path in self.floor or path in on_the_way:
            return self.floor.get(path, -1)
        floor = self._room_floor(path)
        if floor is None and path.startswith(HELPERS):
            floor = self.rooms[HELPER_FLOOR]
        if floor is None and path.startswith(PUBLIC + "/"):
            stem = path.rpartition("/")[2].removesuffix(".h")
            floor = self.floor_of_name.get(stem)
            if floor is None:
                below = [self._settle(target, on_the_way | {path}) for _, target in self.edges[path]]
                floor = max(below, default=-1)
        self.floor[path] = len(FLOORS) if floor is None else floor
        return self.floor[path]

    def _name(self, floor):
        return "the public headers" if floor < 0 else " and ".join(FLOORS[floor])

    def _fault(self, path, target):
        """What is wrong with `path` including `target`, or None."""
        if path.startswith(USERS):
            own = path.split("/")[:2] == target.split("/")[:2]
            return None if own or target.startswith(PUBLIC + "/") else "only public headers here"
        if path.startswith(WITNESSES):
            return None
        if target.startswith(USERS + WITNESSES):
            return "nothing of the library depends on this"
        if path.startswith(PUBLIC + "/") and not target.startswith(PUBLIC + "/"):
            return "a public header includes public headers only"
        if path.startswith(PUBLIC + "/PlatformKit/") and not target.startswith(PUBLIC + "/PlatformKit/"):
            return "the kit knows nothing of the importer"
        if self.floor[target] > self.floor[path]:
            return f"goes up from {self._name(self.floor[path])} to {self._name(self.floor[target])}"
        return None

    def check_floors(self):
        for path in sorted(self.paths):
            if path.startswith("Sources/") and self._room_floor(path) is None:
                self.findings.append(f"{path}:1: stands in no room of the table in layering.py")
                continue
            for number, target in self.edges[path]:
                what = self._fault(path, target)
                if what:
                    self.findings.append(f"{path}:{number}: {target}: {what}")

    def check_circles(self):
        graph = {path: {target for _, target in targets} for path, targets in self.edges.items()}
        for circle in circles(graph):
            self.findings.append("circle of files: " + " -> ".join(circle))
        for parent, siblings in self._folder_graphs().items():
            for circle in circles(siblings):
                self.findings.append(f"circle of folders in {parent}: " + " -> ".join(circle))

    def _folder_graphs(self):
        """For each folder, who of its sub-folders includes whom. A folder's own files and its
        sub-folders are one body where they meet, so these do not make a circle."""
        graphs = {}
        for path, targets in self.edges.items():
            for _, target in targets:
                ours, theirs = path.split("/")[:-1], target.split("/")[:-1]
                depth = 0
                while depth < min(len(ours), len(theirs)) and ours[depth] == theirs[depth]:
                    depth += 1
                if depth < min(len(ours), len(theirs)):
                    siblings = graphs.setdefault("/".join(ours[:depth]) or ".", {})
                    siblings.setdefault(ours[depth], set()).add(theirs[depth])
                    siblings.setdefault(theirs[depth], set())
        return graphs


def circles(graph):
    """One circle for each place where a depth-first walk comes back to a node on its own way."""
    state, found = {}, []

    def walk(node, way):
        state[node] = "open"
        for target in sorted(graph.get(node, ())):
            if state.get(target) == "open":
                found.append([*way[way.index(target):], target])
            elif target not in state:
                walk(target, [*way, target])
        state[node] = "done"

    for node in sorted(graph):
        if node not in state:
            walk(node, [node])
    return found


def check():
    layers = Layers(tracked.arguments(__doc__).root)
    layers.check_floors()
    layers.check_circles()
    includes = sum(map(len, layers.edges.values()))
    return tracked.report(layers.findings, f"{len(layers.paths)} files, {includes} includes")


if __name__ == "__main__":
    tracked.main(check)
