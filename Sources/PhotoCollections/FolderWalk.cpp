// SPDX-License-Identifier: Apache-2.0
#include "PhotoCollections/FolderWalk.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>

#include "Foundation/PdfFile.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/FileSystem.h"
#include "PlatformKit/Files/Visibility.h"
#include "PlatformKit/String.h"
#include "PlatformKit/Text/PathText.h"
#include "PlatformKit/Text/Unicode.h"
#include "PlatformKit/URL.h"

namespace fi {

namespace {

constexpr std::array<std::string_view, 7> kExcludedFolders = {
    "TRASH", "RESOURCE.FRK", "___MOVE&RENAME", "THEVOLUMESETTINGSFOLDER", "___MOV~", "THEVOL~", ".TRASHES"};

constexpr std::array<std::string_view, 4> kListedExtensions = {"JPG", "TIF", "PCT", "PIC"};

/// No path that the system accepts goes deeper; a loop of links must not go on for ever.
constexpr int32_t kMostLevels = 2048;

/// The path with its links resolved; nothing when nothing is there (a dangling link).
std::optional<std::string> resolvedItem(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    if (!resolved) return std::nullopt;
    return std::string(resolved.get());
}

bool isFolderAt(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// What the extension says of a file.
enum class PhotoKind : uint8_t { None, Picture, Document };

PhotoKind photoKind(std::string_view path) {
    const std::string extension = uppercased(pathExtension(path));
    if (extension == "PDF") return PhotoKind::Document;
    const bool listed =
        std::find(kListedExtensions.begin(), kListedExtensions.end(), extension) != kListedExtensions.end();
    return listed ? PhotoKind::Picture : PhotoKind::None;
}

bool isListedDocument(std::string_view path) {
    return isListedPdfAt(CFURL::createFromPath(path).get());
}

}  // namespace

bool mayEnterFolder(std::string_view name) {
    const std::string upper = uppercased(lastPathComponent(name));
    return std::find(kExcludedFolders.begin(), kExcludedFolders.end(), upper) == kExcludedFolders.end();
}

bool isListedPhoto(std::string_view path) {
    const PhotoKind kind = photoKind(path);
    return kind == PhotoKind::Picture || (kind == PhotoKind::Document && isListedDocument(path));
}

FolderWalk::FolderWalk(NSMutableArray& found) : m_found(found), m_mounts(MountTable::read()) {
    if (m_found.count() > 0) rememberFound();
}

void FolderWalk::walk(const std::string& folder, int32_t levels) {
    if (levels <= 0) return;
    if (const auto resolved = resolvedItem(folder)) walkResolved(*resolved, std::min(levels, kMostLevels));
}

void FolderWalk::walkResolved(const std::string& path, int32_t levels) {
    if (levels <= 0) return;
    Folder& folder = m_folders[path];
    if (folder.finishedLevels >= levels || !readOnce(path, folder)) return;
    ++folder.walksUnderWay;
    walkEntries(path, folder, levels);
    --folder.walksUnderWay;
    if (folder.walksUnderWay == 0 && !m_keepsKnown) folder.listing.reset();
}

bool FolderWalk::readOnce(const std::string& path, Folder& folder) {
    if (folder.listing) return true;
    if (folder.isUnreadable) return false;
    folder.listing = DirectoryListing::read(path.c_str());
    if (folder.listing) return true;
    folder.isUnreadable = true;
    m_unreadable.push_back(path);
    return false;
}

void FolderWalk::walkEntries(const std::string& path, Folder& folder, int32_t levels) {
    for (const DirectoryEntry& entry : folder.listing->entries()) {
        if (visit(path, entry, folder.listing->onFAT(), levels) == Then::LeaveFolder) return;
    }
    folder.finishedLevels = levels;  // walks inside this one went less deep
}

FolderWalk::Then FolderWalk::visit(const std::string& folder, const DirectoryEntry& entry, bool onFAT,
                                   int32_t levels) {
    const std::string full = joinedPath(folder, entry.view());
    if (m_mounts.isMountPoint(full)) return Then::GoOn;
    switch (entry.kind) {
        case EntryKind::Folder:
            visitFolder(entry.view(), full, levels);
            return Then::GoOn;
        case EntryKind::File:
        case EntryKind::Other:
            return visitFile(full, onFAT);
        case EntryKind::Link:
        case EntryKind::Unknown:
            break;
    }
    const Target& target = targetOf(full);
    if (target.path.empty()) return Then::GoOn;
    if (!target.isFolder) return visitFile(target.path, target.onFAT);
    visitFolder(entry.view(), target.path, levels);
    return Then::GoOn;
}

const FolderWalk::Target& FolderWalk::targetOf(const std::string& link) {
    if (!m_keepsKnown) rememberFound();
    const auto [entry, added] = m_targets.try_emplace(link);
    Target& target = entry->second;
    if (added) {
        target.path = resolvedItem(link).value_or("");
        target.isFolder = isFolderAt(target.path);
        target.onFAT = !target.path.empty() && !target.isFolder &&
                       isOnFAT(std::string(withoutLastPathComponent(target.path)).c_str());
    }
    return target;
}

void FolderWalk::visitFolder(std::string_view name, const std::string& resolved, int32_t levels) {
    if (levels <= 1 || isPackageFolder(resolved) || !mayEnterFolder(name)) return;
    walkResolved(resolved, levels - 1);
}

FolderWalk::Then FolderWalk::visitFile(const std::string& resolved, bool onFAT) {
    if (faultHappens(Fault::FileReference, resolved)) return Then::LeaveFolder;
    // The cheap tests first: the answer is the same in any order.
    const PhotoKind kind = photoKind(resolved);
    if (kind == PhotoKind::None || isKnown(resolved)) return Then::GoOn;
    if (visibilityOfFile(resolved, onFAT) != Visibility::Visible) return Then::GoOn;
    if (kind == PhotoKind::Document && !isListedDocument(resolved)) return Then::GoOn;
    auto path = CFString::create(resolved);
    if (m_keepsKnown) m_known.insert(path->view());
    m_found.append(std::move(path));
    return Then::GoOn;
}

bool FolderWalk::isKnown(const std::string& path) const {
    return m_keepsKnown && m_known.contains(path);
}

void FolderWalk::rememberFound() {
    m_keepsKnown = true;
    m_known.reserve(m_found.count());
    for (size_t i = 0; i < m_found.count(); ++i) {
        if (const auto* path = m_found.at<CFString>(i)) m_known.insert(path->view());
    }
}

}  // namespace fi
