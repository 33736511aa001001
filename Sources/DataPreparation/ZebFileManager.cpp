// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/ZebFileManager.h"

#include "Foundation/FileServices.h"
#include "Foundation/HeadRead.h"
#include "ImageMetadata/ExifCache.h"
#include "ImageMetadata/ExifFacts.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/Files/FileSystem.h"

namespace fi {

namespace {

constinit ZebFileManager* g_defaultManager = nullptr;

}  // namespace

ZebFileManager::ZebFileManager() : _queues(NSMutableArray::create()) {}

ZebFileManager::~ZebFileManager() {
    _queues->removeAll();
}

ZebFileManager* ZebFileManager::defaultManager() {
    return guarded(
        [] {
            // Stored before anything else is done with it: what a first call sets off may ask for it, too.
            if (g_defaultManager == nullptr) g_defaultManager = new ZebFileManager;
            return g_defaultManager;
        },
        static_cast<ZebFileManager*>(nullptr));
}

void ZebFileManager::terminateManager() {}

OSErr ZebFileManager::readDataHandle(CFStringRef path, const NSData** handle) {
    return readDataHandle(path, handle, nullptr, true);
}

OSErr ZebFileManager::readDataHandle(CFStringRef path, const NSData** handle, uint32_t* /*readSize*/) {
    return readDataHandle(path, handle, nullptr, true);
}

OSErr ZebFileManager::readDataHandle(CFStringRef path, const NSData** handle, uint32_t* readSize,
                                     bool limit) {
    *handle = nullptr;
    return guarded(
        [&] {
            reserveAutorelease();
            HeadRead head = readHead(path, limit ? ReadLimit::Head : ReadLimit::None);
            if (readSize != nullptr && head.readSize != 0) *readSize = head.readSize;
            *handle = autorelease(head.data.handOver());
            return head.code;
        },
        kMemFullErr);
}

uint64_t ZebFileManager::fileSize(CFStringRef path) {
    const auto facts = path != nullptr ? fileFacts(path->c_str(), Links::Keep) : std::nullopt;
    return facts ? facts->size : 0;
}

OSErr ZebFileManager::fileModDate(CFStringRef path, DateTimeRec* date) {
    return modificationDate(path != nullptr ? path->c_str() : nullptr, date);
}

bool ZebFileManager::fileManager(id /*fileManager*/, CFDictionaryRef /*error*/) {
    return true;
}

OSErr ZebFileManager::readExifTag(CFStringRef path, ExifInformation* info) {
    return fi::readExifTag(path, *info);
}

bool ZebFileManager::exifFromCache(CFStringRef path, ExifInformation* exif) {
    return guarded([&] { return sharedExifCache().find(ExifCache::Key(path), *exif); }, false);
}

bool ZebFileManager::setExifToCahce(CFStringRef path, const ExifInformation* exif) {
    return guarded([&] { return sharedExifCache().add(ExifCache::Key(path), *exif); }, false);
}

void ZebFileManager::flushExifCache() {
    guarded([] { sharedExifCache().flush(); });
}

NSSize ZebFileManager::sizeFromExif(CFStringRef path, NSPoint* resolution) {
    ExifInformation info{};
    if (readExifTag(path, &info) != kNoErr) return {};
    if (resolution != nullptr) *resolution = {info.xResolution, info.yResolution};
    return {static_cast<CGFloat>(info.width), static_cast<CGFloat>(info.height)};
}

void ZebFileManager::replaceSizeInCache(CFStringRef path, NSSize size, NSPoint resolution) {
    guarded([&] { sharedExifCache().replaceSize(ExifCache::Key(path), size, resolution); });
}

}  // namespace fi
