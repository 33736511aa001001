// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/FileReference.h"

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/FileSystem.h"

namespace fi {

namespace {

/// Paths by id and ids by path. Ids begin at 1, so that a zeroed record stands for nothing.
struct ReferenceTable {
    std::mutex mutex;
    std::vector<std::string> paths;
    std::unordered_map<std::string, uint64_t> ids;
};

ReferenceTable& table() {
    static ReferenceTable& instance = *new ReferenceTable;  // outlives every thread
    return instance;
}

uint64_t idOf(std::string resolved) {
    ReferenceTable& references = table();
    const std::lock_guard lock(references.mutex);
    const auto known = references.ids.find(resolved);
    if (known != references.ids.end()) return known->second;
    // The path first: without memory for its id it only stands there unused.
    references.paths.push_back(resolved);
    return references.ids.emplace(std::move(resolved), references.paths.size()).first->second;
}

}  // namespace

bool makeFileReference(const char* path, FSRef* out) {
    if (path == nullptr || out == nullptr || faultHappens(Fault::FileReference, path)) return false;
    return guarded(
        [&] {
            if (!itemExists(path)) return false;
            *out = FSRef{idOf(resolvingLinks(path)), {}};
            return true;
        },
        false);
}

Ref<const CFURL> urlOfFileReference(const FSRef& reference) {
    return guarded(
        [&]() -> Ref<const CFURL> {
            ReferenceTable& references = table();
            const std::lock_guard lock(references.mutex);
            if (reference.id == 0 || reference.id > references.paths.size()) return nullptr;
            return CFURL::createFromPath(references.paths[reference.id - 1]);
        },
        Ref<const CFURL>());
}

}  // namespace fi
