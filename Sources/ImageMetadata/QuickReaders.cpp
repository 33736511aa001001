// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/QuickReaders.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>

#include "Foundation/FileServices.h"
#include "Foundation/FileTypes.h"
#include "Foundation/HeadRead.h"
#include "Foundation/ImageFacts.h"
#include "ImageMetadata/ExifFacts.h"
#include "ImageMetadata/ExifValues.h"
#include "ImageMetadata/HeldTag.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/FileSource.h"
#include "PlatformKit/Files/FileSystem.h"
#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

constexpr uint16_t kMainSlot = 0;
constexpr uint16_t kExifSlot = 1;
constexpr uint16_t kOrientationTag = 274;
constexpr uint16_t kOriginalDateTag = 36867;
constexpr uint16_t kDigitizedDateTag = 36868;

struct FileHead {
    OSErr code = kMemFullErr;
    std::unique_ptr<void, decltype(&std::free)> bytes{nullptr, &std::free};
    uint32_t size = 0;
};

bool isEmptyFile(const char* path) {
    const auto facts = fileFacts(path, Links::Follow);
    return facts && !facts->isFolder && facts->size == 0;
}

FileHead readFileHead(CFURLRef url) {
    FileHead head;
    const char* path = pathOf(url);
    if (path == nullptr) return head;
    if (isEmptyFile(path)) {
        head.code = kNotFoundErr;
        return head;
    }
    guarded([&] { head.bytes.reset(readFileBlock(url, &head.size, ReadLimit::Head)); });
    if (head.bytes) head.code = head.size > 0 ? kNoErr : kNotFoundErr;
    return head;
}

/// A field over the head of a file, closed at the end of the scope. It may be incomplete: what was read
/// before an error can be asked for.
class OpenField {
public:
    OpenField(CIMAGETAG& tags, const FileHead& head) : m_tags(tags) {
        int16_t format = 0;
        uint32_t nextOffset = 0;
        uint32_t nextSize = 0;
        uint32_t error = kTagNoError;
        (void)tags.CreateField(nullptr, static_cast<const char*>(head.bytes.get()), head.size, &format,
                               &nextOffset, &nextSize, &error);
    }
    ~OpenField() { m_tags.CloseField(); }
    OpenField(const OpenField&) = delete;
    OpenField& operator=(const OpenField&) = delete;

private:
    CIMAGETAG& m_tags;
};

bool readDateTag(CIMAGETAG& tags, uint16_t tag, DateTimeRec& date) {
    const HeldTag held(tags, kExifSlot, tag);
    return held && readDateText(textOfTag(*held), date);
}

/// Null for what cannot be read.
std::unique_ptr<FileSource> openSource(CFURLRef url) {
    const char* path = pathOf(url);
    if (path == nullptr || isQALFile(url->path())) return nullptr;
    return guarded([path] { return openFileSource(path); }, std::unique_ptr<FileSource>());
}

/// A handle of `size` bytes, or null without memory.
Handle newHandle(size_t size) {
    return faultHappens(Fault::Allocation, "readDataHandle") ? nullptr : NewHandle(size);
}

}  // namespace

OSErr readDataHandle(CFURLRef url, Handle* handle) {
    *handle = nullptr;
    const FileHead head = readFileHead(url);
    if (head.code != kNoErr) return head.code;
    *handle = newHandle(head.size);
    if (*handle == nullptr) return kMemFullErr;
    std::copy_n(static_cast<const char*>(head.bytes.get()), head.size, **handle);
    return kNoErr;
}

OSErr readDataHandleOffset(CFURLRef url, Handle* handle, int32_t offset, int32_t length, int32_t* got) {
    *handle = nullptr;
    *got = 0;
    const auto source = openSource(url);
    if (!source) return kMemFullErr;
    const auto size = static_cast<uint32_t>(source->size());
    const auto start = static_cast<uint32_t>(offset);
    if (start > size) return offset < 0 ? kParamErr : kMemFullErr;
    // A place beyond 2 GiB cannot be meant by a negative number.
    if (offset < 0) return kMemFullErr;
    const uint32_t wanted = std::min(size - start, static_cast<uint32_t>(length));
    const Handle made = newHandle(wanted);
    if (made == nullptr) return kMemFullErr;
    const std::span<uint8_t> block(reinterpret_cast<uint8_t*>(*made), wanted);
    if (source->read(start, block) != wanted || faultHappens(Fault::ShortRead, pathOf(url))) {
        DisposeHandle(made);
        return kMemFullErr;
    }
    *handle = made;
    *got = static_cast<int32_t>(wanted);
    return kNoErr;
}

OSErr readDateFromExifFast(CFURLRef url, CIMAGETAG& tags, DateTimeRec& date) {
    const FileHead head = readFileHead(url);
    if (head.code != kNoErr) return head.code;
    const OpenField field(tags, head);
    if (readDateTag(tags, kOriginalDateTag, date) || readDateTag(tags, kDigitizedDateTag, date))
        return kNoErr;
    date = {};
    (void)modificationDate(pathOf(url), &date);
    return kNoErr;
}

OSErr readOrientationFromExifFast(CFURLRef url, CIMAGETAG& tags, int16_t& orientation) {
    const FileHead head = readFileHead(url);
    if (head.code != kNoErr) return head.code;
    const OpenField field(tags, head);
    const HeldTag held(tags, kMainSlot, kOrientationTag);
    orientation = held ? firstShortOfTag(*held) : int16_t{0};
    return kNoErr;
}

OSErr readDate(CFURLRef url, int32_t fileDateMode, CIMAGETAG& tags, DateTimeRec& date) {
    if (fileDateMode != kFileDateOnly) {
        const CFStringRef type = guarded([url] { return fileTypeOfURL(url); }, CFStringRef{nullptr});
        const bool hasExif = type == kUTTypeJPEG || type == kUTTypeTIFF;
        const OSErr code = hasExif ? readDateFromExifFast(url, tags, date) : readPictDate(date);
        if (code == kNoErr) return kNoErr;
    }
    return modificationDate(pathOf(url), &date);
}

OSErr readPictDate(DateTimeRec& /*date*/) {
    return kNotFoundErr;
}

OSErr readExifOrientation(CFURLRef url, int16_t* orientation) {
    guarded([&] {
        const auto properties = imagePropertiesAt(url);
        if (!properties) return;
        const auto* stated = properties->value<CFNumber>(kCGImagePropertyOrientation);
        // The number is an int; only its low half fits the caller's variable.
        *orientation = stated != nullptr ? stated->int16Value() : int16_t{0};
    });
    return kNoErr;
}

bool checkPhotoSize(const tCacheInfo* record, CFURLRef url, Rect* bounds) {
    if (bounds != nullptr && record != nullptr && record->exifValue1 != 0 && record->exifValue2 != 0) {
        *bounds = {0, 0, static_cast<int16_t>(record->exifValue2),
                   static_cast<int16_t>(record->exifValue1)};
        return true;
    }
    const Rect own = guarded([url] { return imageBoundsAt(url); }, Rect{});
    if (own.top >= own.bottom || own.left >= own.right) return false;
    if (bounds != nullptr) {
        *bounds = {0, 0, static_cast<int16_t>(own.bottom - own.top),
                   static_cast<int16_t>(own.right - own.left)};
    }
    return true;
}

int16_t disposeExifTagData(char* block) {
    std::free(block);
    return 1;
}

OSErr readExifTagInto(CFURLRef url, tCacheInfo& info) {
    if (pathOf(url) == nullptr) return kNotFoundErr;
    ExifInformation facts{};
    const OSErr code = readExifTag(url->path(), facts);
    if (code != kNoErr) return code;
    info.date = facts.date;
    info.orientation = static_cast<uint16_t>(facts.orientation);
    info.exifValue1 = facts.width;
    info.exifValue2 = facts.height;
    return kNoErr;
}

}  // namespace fi
