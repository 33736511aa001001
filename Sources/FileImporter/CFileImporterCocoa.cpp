// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/CFileImporterCocoa.h"

#include <cstdlib>
#include <cstring>

#include "Foundation/DateText.h"
#include "Foundation/FileServices.h"
#include "Foundation/HeadRead.h"
#include "Foundation/ImageFacts.h"
#include "PlatformKit/Base/Assertion.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/ImplicitPool.h"

namespace fi {

bool IsExistAtURLCocoa(CFURLRef url) {
    return existsAt(url);
}

uint32_t GetFileSizeAtURLCocoa(CFURLRef url) {
    return fileSizeAt(url);
}

CFStringRef GetNameAtURLCocoa(CFURLRef url, uint8_t withParent) {
    return guarded([&] { return nameAt(url, withParent != 0).handOver(); }, CFStringRef{});
}

OSErr DeleteFileAtURLCocoa(CFURLRef url) {
    return guarded([&] { return deleteFileAt(url); }, kFileBusyErr);
}

OSErr CopyFileCocoa(CFURLRef destination, CFURLRef source) {
    return guarded([&] { return copyFile(destination, source); }, kFileBusyErr);
}

void* ReadFileAtURLCocoa(CFURLRef url, uint32_t* size) {
    return ReadFileAtURLCocoaWithLimit(url, size, 1);
}

void* ReadFileAtURLCocoaWithLimit(CFURLRef url, uint32_t* size, uint8_t limit) {
    const ReadLimit chosen = limit != 0 ? ReadLimit::Head : ReadLimit::None;
    return guarded([&] { return readFileBlock(url, size, chosen); }, static_cast<void*>(nullptr));
}

OSErr GetFileModDateCocoa(CFURLRef url, DateTimeRec* date) {
    return guarded([&] { return modificationDate(pathOf(url), date); }, kNotFoundErr);
}

Rect GetFileBoundsAtURLCocoa(CFURLRef url) {
    return guarded([&] { return imageBoundsAt(url); }, Rect{});
}

OSErr imageDepthAtPathCocoa(CFURLRef url, int32_t* depth) {
    return guarded([&] { return imageDepthAt(url, depth); }, kNotFoundErr);
}

OSErr GetTempFolderURLCocoa(CFURLRef* folder, const unsigned char* name, const unsigned char* subName) {
    return guarded(
        [&] {
            Ref<const CFURL> made;
            const OSErr code = makeTemporarySubfolder(made, name, subName);
            if (code == kNoErr) *folder = made.handOver();
            return code;
        },
        kFolderErr);
}

bool PathToFSRefCocoa(const char* path, FSRef* reference) {
    return guarded([&] { return makeFileReference(path, reference); }, false);
}

OSErr CMF_GetFileTime(CFURLRef url, DateTimeRec* creation, void* /*unused*/, DateTimeRec* modification) {
    return guarded([&] { return fileTimes(url, creation, modification); }, kNotFoundErr);
}

bool CheckDateForCocoa(const char* text, DateTimeRec* date) {
    return guarded(
        [&] {
            const auto found = text != nullptr ? dateOfText(text) : std::nullopt;
            if (found) *date = *found;
            return found.has_value();
        },
        false);
}

bool CheckDateSub(CFStringRef text, int16_t* value, int32_t field) {
    return guarded(
        [&] {
            const auto found = text != nullptr ? dateField(text->view(), field) : std::nullopt;
            if (found) *value = *found;
            return found.has_value();
        },
        false);
}

CFDictionaryRef GetUserDataAtPath(CFStringRef path) {
    return guarded(
        [&] {
            const auto url = path != nullptr ? CFURL::createFromPath(path->view()) : nullptr;
            return imagePropertiesAt(url.get()).handOver();
        },
        CFDictionaryRef{});
}

NSImage* NSImageRead(CFURLRef /*url*/, uint32_t /*limit*/) {
    return nullptr;
}

bool NSURLGetFileName(CFURLRef url, char* buffer, size_t size) {
    return guarded(
        [&] {
            const auto name = nameAt(url, false);
            if (!name || name->view().size() >= size) return false;
            std::memcpy(buffer, name->c_str(), name->view().size() + 1);
            return true;
        },
        false);
}

bool NSURLGetFileNameAsCFString(CFURLRef url, CFStringRef* name) {
    return guarded(
        [&] {
            *name = nullptr;
            reserveAutorelease();
            *name = nameAt(url, false).handOver();
            autorelease(*name);
            return *name != nullptr;
        },
        false);
}

void* GetProcessHeap() {
    return nullptr;
}

void* HeapAlloc(void* /*heap*/, uint32_t /*flags*/, uint32_t size) {
    return std::malloc(size == 0 ? 1 : size);
}

void* HeapReAlloc(void* /*heap*/, uint32_t /*flags*/, void* block, uint32_t size) {
    return std::realloc(block, size == 0 ? 1 : size);
}

bool HeapFree(void* /*heap*/, uint32_t /*flags*/, void* block) {
    std::free(block);
    return true;
}

void AssertCocoa(bool condition, const char* message) {
    // Programs that read crash reports know the place by these words.
    if (!condition) assertionFailed("AssertCocoa", "CFileImporterCocoa", 164, message);
}

}  // namespace fi
