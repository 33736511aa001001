// SPDX-License-Identifier: Apache-2.0
// The working half of the file services: what the exported functions and the classes above forward to.
#pragma once

#include <cstdint>

#include "FileImporter/ResultCodes.h"
#include "PlatformKit/DateTime.h"
#include "PlatformKit/String.h"
#include "PlatformKit/URL.h"

namespace fi {

/// The C string of a URL's path; null for a null URL or one without a path.
[[nodiscard]] const char* pathOf(CFURLRef url);

[[nodiscard]] bool existsAt(CFURLRef url);
[[nodiscard]] uint32_t fileSizeAt(CFURLRef url);
[[nodiscard]] Ref<const CFString> nameAt(CFURLRef url, bool withParent);
[[nodiscard]] OSErr deleteFileAt(CFURLRef url);
[[nodiscard]] OSErr copyFile(CFURLRef destination, CFURLRef source);

/// The file's modification date, links followed, day of week from 0; -43 when nothing exists there.
[[nodiscard]] OSErr modificationDate(const char* path, DateTimeRec* date);

/// Creation and modification date by the URL's text: one that begins with "file:" is decoded to its
/// path, any other is a path as it stands. Days of week from 1.
[[nodiscard]] OSErr fileTimes(CFURLRef url, DateTimeRec* creation, DateTimeRec* modification);

[[nodiscard]] OSErr makeTemporarySubfolder(Ref<const CFURL>& folder, const unsigned char* name,
                                           const unsigned char* subName);

}  // namespace fi
