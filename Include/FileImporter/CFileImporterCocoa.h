// SPDX-License-Identifier: Apache-2.0
// Thin file services: files by URL, plain values and result codes back. Nothing is thrown. Any thread,
// where not said otherwise. An argument that is an output may be null only where it says so.
#pragma once

#include <cstddef>
#include <cstdint>

#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/FileReference.h"
#include "PlatformKit/URL.h"

namespace fi {

/// True when a file or folder exists there; a link counts as what it points at. False for a null URL or
/// one without a path.
FI_EXPORT bool IsExistAtURLCocoa(CFURLRef url);

/// Bytes of the file, modulo 2^32; of a symbolic link itself. 0 on any failure.
FI_EXPORT uint32_t GetFileSizeAtURLCocoa(CFURLRef url);

/// OWNED. The last path component, with `withParent` the parent folder's name and "/" before it; null on
/// failure.
FI_EXPORT CFStringRef GetNameAtURLCocoa(CFURLRef url, uint8_t withParent);

/// Removes a file, or a folder with all it holds. 0 on success and for a null URL; -43 when there is no
/// path or nothing there (a dangling link is nothing); -47 when it could not be removed.
FI_EXPORT OSErr DeleteFileAtURLCocoa(CFURLRef url);

/// Copies `source` to `destination`, in this order of arguments, when nothing is at the destination.
/// Whatever is there is REMOVED and nothing is copied: -47 (callers remove it first when they want a
/// copy; source and destination being the same loses the file). 0 on success, and without copying when
/// the destination has no path; -43 for a null URL or a source that has no path or does not exist; -47
/// when the copy fails.
FI_EXPORT OSErr CopyFileCocoa(CFURLRef destination, CFURLRef source);

/// OWNED (released with free): the first 65567 bytes of the file at most, their number through `size`
/// (which may be null). Null when they cannot be read, for an empty file and for a Qal file; `size` is
/// then untouched, except that it is stored when only the block could not be allocated.
FI_EXPORT void* ReadFileAtURLCocoa(CFURLRef url, uint32_t* size);

/// The same with a choice: `limit` 0 reads the whole file.
FI_EXPORT void* ReadFileAtURLCocoaWithLimit(CFURLRef url, uint32_t* size, uint8_t limit);

/// The local modification date, links followed; day of week 0 (Sunday) to 6. 0, or -43 when there is no
/// such file.
FI_EXPORT OSErr GetFileModDateCocoa(CFURLRef url, DateTimeRec* date);

/// Top and left 0; right and bottom the stored pixel size, truncated and modulo 2^16. All zero on failure.
FI_EXPORT Rect GetFileBoundsAtURLCocoa(CFURLRef url);

/// Bits per pixel of the file's first image. 0, or -43 for a null URL, a Qal file, or no image (then
/// `*depth` is untouched).
FI_EXPORT OSErr imageDepthAtPathCocoa(CFURLRef url, int32_t* depth);

/// Makes `name` (and in it `subName`, which may be null) in the temporary folder, length-prefixed UTF-8;
/// what is there stays. `*folder` receives an OWNED URL. 0; -43 without a temporary folder or for a name
/// that is null, not UTF-8 or holds a component ".."; -120 when a folder cannot be made.
FI_EXPORT OSErr GetTempFolderURLCocoa(CFURLRef* folder, const unsigned char* name,
                                      const unsigned char* subName);

/// True when a reference to the item at a UTF-8 path could be made.
FI_EXPORT bool PathToFSRefCocoa(const char* path, FSRef* reference);

/// Local creation and modification date of the item, day of week 1 (Sunday) to 7. `unused` is never
/// touched. 0 (all-zero dates for an item that does not exist); -43 when the URL has no text; -2700
/// when `creation` is null (nothing written) or `modification` is null (`creation` filled).
FI_EXPORT OSErr CMF_GetFileTime(CFURLRef url, DateTimeRec* creation, void* unused,
                                DateTimeRec* modification);

/// Reads "YYYY:MM:DD hh:mm:ss" (whatever the separators, and whatever follows) as a local date that
/// exists; day of week 0. False, `*date` untouched, for anything else.
FI_EXPORT bool CheckDateForCocoa(const char* text, DateTimeRec* date);

/// Reads one field of such a text: 0 year, 1 month, 2 day, 3 hour, 4 minute, 5 second. False, `*value`
/// untouched, when the text is too short for it, it holds anything but digits or lies out of range.
FI_EXPORT bool CheckDateSub(CFStringRef text, int16_t* value, int32_t field);

/// OWNED. The properties of the file's first image; null when there is none.
FI_EXPORT CFDictionaryRef GetUserDataAtPath(CFStringRef path);

/// OWNED. The image at the URL with its shorter side within `limit` pixels (0xFFFFFFFF: no limit). Null
/// for a null URL, and as long as the library has no image loader, which is the case in this version.
FI_EXPORT NSImage* NSImageRead(CFURLRef url, uint32_t limit);

/// Last path component as UTF-8 with a NUL into `buffer`. False, nothing written, when there is none or
/// it does not fit.
FI_EXPORT bool NSURLGetFileName(CFURLRef url, char* buffer, size_t size);

/// Last path component, AUTORELEASED, through `*name`. False, `*name` null, when there is none.
FI_EXPORT bool NSURLGetFileNameAsCFString(CFURLRef url, CFStringRef* name);

/// There is no heap object: null.
FI_EXPORT void* GetProcessHeap();
/// OWNED (HeapFree): a block of `size` bytes with undefined contents, whatever the flags ask; never null
/// for size 0. Null without memory. `heap` and `flags` are ignored here and below.
FI_EXPORT void* HeapAlloc(void* heap, uint32_t flags, uint32_t size);
/// OWNED: the block with another size, contents kept; null, the block untouched, without memory.
FI_EXPORT void* HeapReAlloc(void* heap, uint32_t flags, void* block, uint32_t size);
/// Gives a block back (null is allowed); always true.
FI_EXPORT bool HeapFree(void* heap, uint32_t flags, void* block);

/// Does nothing when `condition` holds. Otherwise `message` goes to the system log and the process stops
/// through the platform's assertion failure (see PlatformKit/Assertion.h).
FI_EXPORT void AssertCocoa(bool condition, const char* message);

}  // namespace fi
