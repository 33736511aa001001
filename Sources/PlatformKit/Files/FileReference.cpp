// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/FileReference.h"

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

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

}  // namespace

bool makeFileReference(const char* path, FSRef* out) {
    if (path == nullptr || out == nullptr || faultHappens(Fault::FileReference, path)) return false;
    if (!itemExists(path)) return false;
    std::string resolved = resolvingLinks(path);
    ReferenceTable& references = table();
    const std::lock_guard lock(references.mutex);
    auto entry = references.ids.find(resolved);
    if (entry == references.ids.end()) {
        // The path first: without memory for its id it only stands there unused.
        references.paths.push_back(resolved);
        entry = references.ids.emplace(std::move(resolved), references.paths.size()).first;
    }
    *out = FSRef{entry->second, {}};
    return true;
}

Ref<const CFURL> urlOfFileReference(const FSRef& reference) {
    ReferenceTable& references = table();
    const std::lock_guard lock(references.mutex);
    if (reference.id == 0 || reference.id > references.paths.size()) return nullptr;
    return CFURL::createFromPath(references.paths[reference.id - 1]);
}

}  // namespace fi
