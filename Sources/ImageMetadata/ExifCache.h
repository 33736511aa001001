// SPDX-License-Identifier: Apache-2.0
// What is remembered of photos' Exif facts, by path and modification time.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "FileImporter/ExifInformation.h"
#include "PlatformKit/Array.h"
#include "PlatformKit/Geometry.h"
#include "PlatformKit/String.h"

namespace fi {

/// Grows by an entry for each file and each modification time of it; entries go by flush() alone. A file
/// matches the first entry of its path whose modification time is the file's now. Any thread.
class ExifCache {
public:
    ExifCache();
    ~ExifCache();

    [[nodiscard]] bool find(CFStringRef path, ExifInformation& info);
    /// Adds an entry unless one matches. False when one does.
    bool add(CFStringRef path, const ExifInformation& info);
    void replaceSize(CFStringRef path, NSSize size, NSPoint resolution);
    void flush();

    /// OWNED: an array of dictionaries, oldest first, each with the file's path under "path" and the bytes
    /// of its record under "exif".
    [[nodiscard]] Ref<const CFArray> copyEntries();

private:
    struct Entries;
    std::mutex m_lock;
    std::unique_ptr<Entries> m_entries;
};

/// The process's own; never destroyed.
[[nodiscard]] ExifCache& sharedExifCache();

}  // namespace fi
