// SPDX-License-Identifier: Apache-2.0
#include "Finder.h"

#include <dirent.h>
#include <errno.h>
#include <sys/stat.h>

#include <cstring>
#include <optional>

#include "Console.h"
#include "FileImporter/CFileSearchDC.h"
#include "FileImporter/ResultCodes.h"
#include "PlatformKit/PropertyList.h"

namespace fi {

namespace {

constexpr const char* kNoList = "it is not a property list with an array that can be read";

using Complaint = std::optional<std::string>;

Complaint lastSystemError() {
    return errno == ENOENT ? resultCodeText(kNotFoundErr) : strerror(errno);
}

Complaint searchFolder(CFileSearchDC& search, const std::string& path, int depth) {
    // The search itself passes over a folder that it may not read.
    DIR* const folder = opendir(path.c_str());
    if (folder == nullptr) return lastSystemError();
    closedir(folder);
    const auto url = CFURL::createFromPath(path);
    if (!url || !search.Open(url.get())) return resultCodeText(kNotFoundErr);
    search.FileSearch(depth);
    return std::nullopt;
}

Complaint searchPath(CFileSearchDC& search, const std::string& path, int depth) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return lastSystemError();
    if (S_ISDIR(status.st_mode)) return searchFolder(search, path, depth);
    const auto url = CFURL::createFromPath(path);
    if (!url) return resultCodeText(kNotFoundErr);
    search.FileAddFromPath(url->path());
    return std::nullopt;
}

Complaint searchHistory(CFileSearchDC& search, const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return lastSystemError();
    const auto url = CFURL::createFromPath(path);
    const auto root = url ? readPropertyList(url.get()) : nullptr;
    const auto* history = dynamic_cast<const CFArray*>(root.get());
    if (history == nullptr) return kNoList;
    search.FileSearchByPList(history);
    return std::nullopt;
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

}  // namespace

SearchResult findPhotos(const SearchOrder& order, Console& console) {
    CFileSearchDC search;
    SearchResult result;
    const auto note = [&](const std::string& path, const Complaint& complaint) {
        if (!complaint) return;
        result.complete = false;
        console.complain(path, *complaint);
    };
    if (!order.historyList.empty()) note(order.historyList, searchHistory(search, order.historyList));
    for (const std::string& path : order.paths)
        note(path, searchPath(search, path, order.depth));
    result.photos = listOf(search);
    return result;
}

}  // namespace fi
