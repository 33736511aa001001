// SPDX-License-Identifier: Apache-2.0
// A file search with URLs for results and a cursor over them.
#pragma once

#include <cstdint>

#include "FileImporter/FileSearchDC.h"
#include "PlatformKit/Array.h"
#include "PlatformKit/URL.h"

namespace fi {

struct _FILEARRAY;  // NOLINT(bugprone-reserved-identifier): historic name, never defined

/// Positions are 1-based. One thread at a time. Nothing is thrown but by the constructor; without memory
/// a search keeps what it has found.
class FI_EXPORT CFileSearchDC {
public:
    CFileSearchDC();
    ~CFileSearchDC();
    CFileSearchDC(const CFileSearchDC&) = delete;
    CFileSearchDC& operator=(const CFileSearchDC&) = delete;

    /// Chooses the folder to search; false when it does not exist.
    bool Open(CFURLRef folder);
    /// Empties the list.
    void Close();
    /// Appends the photos of the folder, `depth` levels deep. Always 0.
    int16_t FileSearch(int depth);
    /// Appends the paths of a history list: an array of dictionaries by "historyDataSourceTypeKey",
    /// "historyDataSourceSourceKey" and "historyDataSourceChildrenKey". Elements of other types are
    /// ignored. Returns the length of the list, modulo 2^16; 0 for null.
    int16_t FileSearchByPList(CFArrayRef history);
    /// Appends the paths in the "historyDataSourceChildrenKey" arrays of the dictionaries in `items`.
    void FileAddFromCFArray(CFArrayRef items);
    /// Appends a path unless it is listed. Always 1, also for a path that was.
    int16_t FileAddFromPath(CFStringRef path);
    /// Searches anew; `*changed` (may not be null) says whether the list was replaced. Always 0.
    int16_t FileUpdate(int depth, unsigned char* changed);
    /// Leaves the list as it is; the argument is ignored.
    void Sort(_FILEARRAY* files);

    /// Folders that the last search or update met and could not read: it passed over them.
    [[nodiscard]] uint32_t unreadableFolderCount() const;
    /// The path of one of them by its 1-based index through `*out`, OWNED by the caller; false, `*out`
    /// untouched, beyond.
    [[nodiscard]] bool copyUnreadableFolder(CFStringRef* out, uint32_t index) const;

    [[nodiscard]] uint32_t GetListNum() const;
    [[nodiscard]] uint32_t GetNowListPos() const;
    /// False, cursor unchanged, for 0 and beyond the list's length.
    bool SetNowListPos(uint32_t position);

    /// A new URL through `*out`, OWNED by the caller; false, `*out` untouched, without such an entry.
    bool GetURLAt(CFURLRef* out, uint32_t index) const;
    /// The cursor goes to 1, or to the list's length, whether there is an entry or not.
    bool GetURLFirst(CFURLRef* out);
    bool GetURLLast(CFURLRef* out);
    /// False, cursor unchanged, at the end (beginning) of the list.
    bool GetURLNext(CFURLRef* out);
    bool GetURLPrev(CFURLRef* out);

private:
    void followList();
    void addReadHistory(CFArrayRef children);
    void addIfPath(CFStringRef path);

    uint32_t m_listCount = 0;
    uint32_t m_nowListPos = 1;
    FileSearchDC* m_search;
};

}  // namespace fi
