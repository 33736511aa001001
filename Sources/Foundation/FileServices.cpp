// SPDX-License-Identifier: Apache-2.0
#include "Foundation/FileServices.h"

#include <optional>
#include <string>

#include "PlatformKit/Base/Calendar.h"
#include "PlatformKit/Files/FileSystem.h"
#include "PlatformKit/Files/URLText.h"
#include "PlatformKit/PrivateFolders.h"
#include "PlatformKit/Text/PascalText.h"
#include "PlatformKit/Text/PathText.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

/// True for a name with a component "..": the folder would lie outside of the private one.
bool leadsUp(std::string_view name) {
    while (!name.empty()) {
        if (lastPathComponent(name) == "..") return true;
        const std::string_view rest = withoutLastPathComponent(name);
        if (rest.size() >= name.size()) break;
        name = rest;
    }
    return false;
}

/// Creates one more level of a temporary folder.
OSErr enterFolder(std::string& path, const unsigned char* name) {
    if (name == nullptr) return kNotFoundErr;
    const std::string_view text = pascalView(name);
    if (!isValidUTF8(text) || text.find('\0') != std::string_view::npos || leadsUp(text))
        return kNotFoundErr;
    if (!text.empty()) path = joinedPath(path, text);
    return makeFolder(path, Parents::Create) ? kNoErr : kFolderErr;
}

DateTimeRec recordOf(const std::optional<FileFacts>& facts, FileTime FileFacts::*time) {
    return facts ? localDate(((*facts).*time).seconds, WeekDays::FromOne) : DateTimeRec{};
}

}  // namespace

const char* pathOf(CFURLRef url) {
    return url != nullptr && url->path() != nullptr ? url->path()->c_str() : nullptr;
}

bool existsAt(CFURLRef url) {
    const char* path = pathOf(url);
    return path != nullptr && itemExists(path);
}

uint32_t fileSizeAt(CFURLRef url) {
    const char* path = pathOf(url);
    const auto facts = path != nullptr ? fileFacts(path, Links::Keep) : std::nullopt;
    return facts ? static_cast<uint32_t>(facts->size) : 0;
}

Ref<const CFString> nameAt(CFURLRef url, bool withParent) {
    if (pathOf(url) == nullptr) return nullptr;
    const std::string_view path = url->path()->view();
    const std::string_view name = lastPathComponent(path);
    if (!withParent) return CFString::create(name);
    return CFString::create(joinedPath(lastPathComponent(withoutLastPathComponent(path)), name));
}

OSErr deleteFileAt(CFURLRef url) {
    if (url == nullptr) return kNoErr;
    const char* path = pathOf(url);
    if (path == nullptr || !itemExists(path)) return kNotFoundErr;
    return removeItem(path) ? kNoErr : kFileBusyErr;
}

OSErr copyFile(CFURLRef destination, CFURLRef source) {
    const char* from = pathOf(source);
    if (destination == nullptr || from == nullptr || !itemExists(from)) return kNotFoundErr;
    const char* to = pathOf(destination);
    if (to == nullptr) return kNoErr;
    // Callers remove the destination first when they want a copy: one that exists is removed and that
    // is all. Only when it will not go is the copy tried, which then fails on it.
    if (itemExists(to) && removeItem(to)) return kFileBusyErr;
    return copyItem(from, to) ? kNoErr : kFileBusyErr;
}

OSErr modificationDate(const char* path, DateTimeRec* date) {
    const auto facts = path != nullptr ? fileFacts(path, Links::Follow) : std::nullopt;
    if (!facts) return kNotFoundErr;
    *date = localDate(facts->modified.seconds, WeekDays::FromZero);
    return kNoErr;
}

OSErr fileTimes(CFURLRef url, DateTimeRec* creation, DateTimeRec* modification) {
    if (url == nullptr || url->string() == nullptr) return kNotFoundErr;
    const std::string_view text = url->string()->view();
    const std::string path = isFileURLText(text) ? pathOfFileURLText(text).value_or("") : std::string(text);
    const auto facts = fileFacts(path.c_str(), Links::Follow);
    if (creation == nullptr) return kNoOutputErr;
    *creation = recordOf(facts, &FileFacts::created);
    if (modification == nullptr) return kNoOutputErr;
    *modification = recordOf(facts, &FileFacts::modified);
    return kNoErr;
}

OSErr makeTemporarySubfolder(Ref<const CFURL>& folder, const unsigned char* name,
                             const unsigned char* subName) {
    const auto temporary = copyTemporaryFolder();
    if (!temporary) return kNotFoundErr;
    std::string path(temporary->path()->view());
    if (const OSErr code = enterFolder(path, name); code != kNoErr) return code;
    if (subName != nullptr) {
        if (const OSErr code = enterFolder(path, subName); code != kNoErr) return code;
    }
    folder = CFURL::createFromPath(path);
    return kNoErr;
}

}  // namespace fi
