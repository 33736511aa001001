// SPDX-License-Identifier: Apache-2.0
// The manager of files that are prepared in the background: reads of their heads and the cache of their
// Exif facts.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "FileImporter/ExifInformation.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/Array.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/DateTime.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/Geometry.h"
#include "PlatformKit/Selector.h"
#include "PlatformKit/String.h"

namespace fi {

/// One object for the process. Nothing is thrown. Any thread, but for the first defaultManager().
class FI_EXPORT ZebFileManager final : public NSObject {
public:
    /// selector: defaultManager
    /// BORROWED: the one manager, made by the first call, which comes from the main thread. It is never
    /// destroyed. Null only when memory does not suffice for it; the next call tries again.
    static ZebFileManager* defaultManager();

    /// selector: terminateManager
    /// Empties the image cache, once there is one; the manager stays.
    static void terminateManager();

    /// selector: readDataHandle:handle:
    /// The first 65567 bytes of the file at most, AUTORELEASED through `*handle`, links followed. 0; -43
    /// for a missing or empty file, one that cannot be opened and one of the application's project files;
    /// -108 when reading fails (a folder, a pulled card) and without memory. `*handle` is null unless the
    /// result is 0. Sizes count modulo 2^32: a file of exactly 4 GiB is an empty one.
    OSErr readDataHandle(CFStringRef path, const NSData** handle);

    /// selector: readDataHandle:handle:readSize:
    /// The same. `*readSize` is NEVER WRITTEN: the form with four keywords tells the size.
    OSErr readDataHandle(CFStringRef path, const NSData** handle, uint32_t* readSize);

    /// selector: readDataHandle:handle:readSize:limit:
    /// The same, the whole file when `limit` is false. `*readSize`, which may be null, receives the bytes
    /// to be read as soon as they are known, also when reading them fails then; a file that is missing,
    /// empty or a project file leaves it alone.
    OSErr readDataHandle(CFStringRef path, const NSData** handle, uint32_t* readSize, bool limit);

    /// selector: fileSize:
    /// Bytes of the file, of a link itself; 0 when there is none.
    [[nodiscard]] uint64_t fileSize(CFStringRef path);

    /// selector: fileModDate:date:
    /// The local modification date, links followed; day of week 0 (Sunday) to 6. 0, or -43 when there is
    /// no such file.
    OSErr fileModDate(CFStringRef path, DateTimeRec* date);

    /// selector: fileManager:shouldProceedAfterError:
    /// Always true.
    [[nodiscard]] bool fileManager(id fileManager, CFDictionaryRef error);

    /// selector: readExifTag:info:
    /// The facts of a photo, from the cache as long as its modification time (of a link itself) is the
    /// same, else from its first 65567 bytes. 0, also for a file whose head cannot be read: then only the
    /// modification time is new in `*info`, the rest is as the caller passed it in (width and height
    /// exchanged when the orientation in it is 5 to 8), and is remembered so: zero the record first. -43
    /// when no file exists (a link counts as what it points at).
    OSErr readExifTag(CFStringRef path, ExifInformation* info);

    /// selector: exifFromCache:exif:
    /// Copies the remembered facts of an unchanged file. False for a null path, a missing file and facts
    /// that are not there.
    bool exifFromCache(CFStringRef path, ExifInformation* exif);

    /// selector: setExifToCahce:exif:
    /// Remembers a copy of the facts and retains the path. False, nothing changed: facts of the file as it
    /// is now are there already, the path is null, or memory does not suffice.
    bool setExifToCahce(CFStringRef path, const ExifInformation* exif);

    /// selector: flushExifCache
    /// Forgets all facts.
    void flushExifCache();

    /// selector: sizeFromExif:resolution:
    /// Width and height of readExifTag:info:; `*resolution`, which may be null, receives its resolutions.
    /// Zero, `*resolution` untouched, when that fails.
    NSSize sizeFromExif(CFStringRef path, NSPoint* resolution);

    /// selector: replaceSizeInCache:size:resolution:
    /// Overwrites the size (truncated, modulo 2^16) that is remembered of an unchanged file, and its
    /// resolutions unless both given are zero. Nothing when no facts are there.
    void replaceSizeInCache(CFStringRef path, NSSize size, NSPoint resolution);

private:
    friend struct ZebFileManagerLayout;
    ZebFileManager();
    ~ZebFileManager() override;

    id _target = nullptr;           ///< no use
    SEL _preparedAction = nullptr;  ///< no use
    std::mutex _queueLock;
    Ref<NSMutableArray> _queues;
    std::atomic<uint8_t> _isPrepareThreadRunning{0};
    std::atomic<uint8_t> _isMainBusy{0};
    id _mountedVolumes = nullptr;  ///< no use
};

}  // namespace fi
