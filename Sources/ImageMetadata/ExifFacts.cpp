// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifFacts.h"

#include "ImageMetadata/ExifCache.h"
#include "ImageMetadata/FactReaders.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Files/FileSystem.h"

namespace fi {

OSErr readExifTag(CFStringRef path, ExifInformation& info) noexcept {
    ExifCache& cache = sharedExifCache();
    const ExifCache::Key key(path);
    if (cache.find(key, info)) return kNoErr;
    if (!readFactsQuickly(path, info)) {
        if (path == nullptr || !itemExists(path->c_str())) return kNotFoundErr;
        readFactsPlainly(path, info);
    }
    guarded([&] { cache.add(key, info); });
    return kNoErr;
}

}  // namespace fi
