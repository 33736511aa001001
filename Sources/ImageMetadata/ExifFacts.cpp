// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifFacts.h"

#include "ImageMetadata/ExifCache.h"
#include "ImageMetadata/FactReaders.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Files/FileSystem.h"

namespace fi {

OSErr readExifTag(CFStringRef path, ExifInformation& info) noexcept {
    // Null when there was no memory to make it.
    ExifCache* const cache = guarded([] { return &sharedExifCache(); }, static_cast<ExifCache*>(nullptr));
    const ExifCache::Key key(path);
    if (cache != nullptr && cache->find(key, info)) return kNoErr;
    if (!readFactsQuickly(path, info)) {
        if (path == nullptr || !itemExists(path->c_str())) return kNotFoundErr;
        readFactsPlainly(path, info);
    }
    if (cache != nullptr) guarded([&] { cache->add(key, info); });
    return kNoErr;
}

}  // namespace fi
