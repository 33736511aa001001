// SPDX-License-Identifier: Apache-2.0
// Finds the photos of a folder tree and holds the list of their paths.
#pragma once

#include <cstdint>
#include <memory>

#include "PlatformKit/Array.h"
#include "PlatformKit/String.h"
#include "PlatformKit/URL.h"

namespace fi {

class PathIndex;

/// The list is in the order of the walk: depth first, entries of a folder in the order of its listing
/// (by case-folded name), a sub-folder's files at the sub-folder's place. One thread at a time. Nothing is
/// thrown but by the constructor: without memory a search keeps what it has found, an update keeps the
/// list, an added path is dropped and a question is answered no.
class FI_EXPORT FileSearchDC final : public NSObject {
public:
    FileSearchDC();

    /// selector: open:
    /// Chooses the start folder.
    void open(CFURLRef folder);

    /// selector: close
    /// Empties the list.
    void close();

    /// selector: searchStart:
    /// Walks the start folder, `depth` levels deep (1: its own files only; 0 or less: nothing; more than
    /// 2048 count as 2048), and appends to the list.
    void searchStart(int32_t depth);

    /// selector: fileUpdate:
    /// Walks anew and replaces the list when the result differs; answers whether it did.
    bool fileUpdate(int32_t depth);

    /// selector: searchFiles:currentDepth:setArray:
    /// Walks `folder`, which counts as `currentDepth` levels below the start, into `array`.
    void searchFiles(CFStringRef folder, int32_t currentDepth, NSMutableArray* array);

    /// selector: CheckExclusionFolders:
    /// True when a folder of this name may be entered.
    [[nodiscard]] bool CheckExclusionFolders(CFStringRef name) const;

    /// selector: CheckJpgOrTif:
    /// True for a path with extension jpg, tif, pct or pic in any case, or pdf when the PDF query says
    /// yes; other spellings (jpeg, tiff) are refused.
    [[nodiscard]] bool CheckJpgOrTif(CFStringRef path) const;

    /// selector: fileSort:
    /// Leaves the array as it is.
    void fileSort(NSMutableArray* array);

    /// selector: fileCompare:setArrayB:
    /// True when an element of `a` differs from the one of `b` at its place; false for an empty or null
    /// `a`.
    [[nodiscard]] bool fileCompare(CFArrayRef a, CFArrayRef b) const;

    /// selector: addFileFromPath:
    /// Appends a path as it is, unless the list holds one with the same canonical decomposition.
    void addFileFromPath(CFStringRef path);

    /// selector: getFileNum
    [[nodiscard]] uint32_t getFileNum() const;

    /// selector: getStringAt:
    /// The path at a 1-based index, BORROWED from the list; null when there is none.
    [[nodiscard]] CFStringRef getStringAt(uint32_t index) const;

    /// Folders that the last search or update met and could not read: it passed over them.
    [[nodiscard]] uint32_t unreadableFolderCount() const;
    /// The path of one of them by its 1-based index, BORROWED until the next search; null beyond.
    [[nodiscard]] CFStringRef unreadableFolderAt(uint32_t index) const;

private:
    ~FileSearchDC() override;
    void walk(CFStringRef folder, int32_t currentDepth, NSMutableArray& array);

    Ref<NSMutableArray> m_filePathArray;
    int32_t m_searchDepth = 0;
    Ref<const CFString> m_searchDefaultDir;
    Ref<const CFArray> m_unreadable;

    /// So that adding a path need not read all of them.
    std::unique_ptr<PathIndex> m_index;
};

}  // namespace fi
