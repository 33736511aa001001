// SPDX-License-Identifier: Apache-2.0
#include "Finder.h"

#include <dirent.h>
#include <errno.h>
#include <sys/stat.h>

#include <cstring>
#include <optional>
#include <set>

#include "Console.h"
#include "FileImporter/CFileSearchDC.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/PropertyList.h"
#include "ResolvedPath.h"

namespace fi {

namespace {

/// Where a repaired file system puts what it found: closed to everybody, and nobody's photos.
constexpr std::string_view kFilesOfRepairs = "/lost+found";

constexpr const char* kNoList = "it is not a property list with an array that can be read";
constexpr const char* kNoFolder = "the folder could not be read";

using Complaint = std::optional<std::string>;

std::string systemError(int number) {
    return number == ENOENT ? resultCodeText(kNotFoundErr) : strerror(number);
}

/// What keeps a folder from being opened or listed to its end; nothing when that goes well now.
Complaint faultOfFolder(const std::string& path) {
    DIR* const folder = opendir(path.c_str());
    if (folder == nullptr) return systemError(errno);
    do
        errno = 0;
    while (readdir(folder) != nullptr);
    const int problem = errno;
    closedir(folder);
    return problem != 0 ? Complaint(systemError(problem)) : std::nullopt;
}

std::vector<std::string> listOf(const CFileSearchDC& search) {
    std::vector<std::string> photos;
    photos.reserve(search.GetListNum());
    for (uint32_t i = 1; i <= search.GetListNum(); ++i) {
        CFURLRef found = nullptr;
        if (!search.GetURLAt(&found, i)) continue;
        const auto url = adopt(found);
        if (url->path() != nullptr) photos.emplace_back(url->path()->view());
    }
    return photos;
}

/// One search after the other, all into one list.
class Finder {
public:
    explicit Finder(Console& console) : m_console(console) {}

    void searchPath(const std::string& path, uint32_t depth);
    void searchHistory(const std::string& path);
    [[nodiscard]] SearchResult result() const { return {listOf(m_search), m_complete}; }

private:
    void searchFolder(const std::string& path, uint32_t depth);
    void addPhoto(const std::string& path);
    void tellUnreadableFolders(const std::string& searched);
    void complain(const std::string& path, const std::string& reason);

    Console& m_console;
    CFileSearchDC m_search;
    std::set<std::string> m_toldFolders;
    bool m_complete = true;
};

void Finder::searchPath(const std::string& path, uint32_t depth) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return complain(path, systemError(errno));
    if (S_ISDIR(status.st_mode)) return searchFolder(path, depth);
    addPhoto(path);
}

void Finder::searchFolder(const std::string& path, uint32_t depth) {
    const auto url = CFURL::createFromPath(path);
    if (!url || !m_search.Open(url.get())) return complain(path, resultCodeText(kNotFoundErr));
    m_search.FileSearch(static_cast<int>(depth));
    tellUnreadableFolders(path);
}

/// The search passes over what it cannot read, also over the folder itself.
void Finder::tellUnreadableFolders(const std::string& searched) {
    for (uint32_t i = 1; i <= m_search.unreadableFolderCount(); ++i) {
        CFStringRef path = nullptr;
        if (!m_search.copyUnreadableFolder(&path, i)) continue;
        const std::string folder(adopt(path)->view());
        const bool isSearched = folder == resolvedPath(searched);
        if (!isSearched && folder.ends_with(kFilesOfRepairs)) continue;
        if (!m_toldFolders.insert(folder).second) continue;
        complain(isSearched ? searched : folder, faultOfFolder(folder).value_or(kNoFolder));
    }
}

void Finder::searchHistory(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return complain(path, systemError(errno));
    const auto url = CFURL::createFromPath(path);
    const auto root = url ? readPropertyList(url.get()) : nullptr;
    const auto* history = dynamic_cast<const CFArray*>(root.get());
    if (history == nullptr) return complain(path, kNoList);
    CFileSearchDC search;
    search.FileSearchByPList(history);
    for (const std::string& photo : listOf(search))
        addPhoto(photo);
}

/// By the path that a search would list, so that a photo is listed once however it is spelt.
void Finder::addPhoto(const std::string& path) {
    const auto url = CFURL::createFromPath(resolvedPath(path));
    if (!url) return complain(path, resultCodeText(kNotFoundErr));
    m_search.FileAddFromPath(url->path());
}

void Finder::complain(const std::string& path, const std::string& reason) {
    m_complete = false;
    m_console.complain(path, reason);
}

}  // namespace

SearchResult findPhotos(const SearchOrder& order, Console& console) {
    Finder finder(console);
    if (!order.historyList.empty()) finder.searchHistory(order.historyList);
    for (const std::string& path : order.paths)
        finder.searchPath(path, order.depth);
    return finder.result();
}

}  // namespace fi
