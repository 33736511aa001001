// SPDX-License-Identifier: Apache-2.0
#include "PhotoFacts.h"

#include <errno.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "FileImporter/CFileImporterCocoa.h"
#include "Text.h"

namespace fi {

namespace {

struct NamedType {
    const char* extension;
    std::string_view type;
};

constexpr NamedType kTypes[] = {
    {"jpg", "jpeg"}, {"jpeg", "jpeg"}, {"tif", "tiff"}, {"tiff", "tiff"}, {"pct", "pict"},
    {"pic", "pict"}, {"pict", "pict"}, {"bmp", "bmp"},  {"pdf", "pdf"},   {"qal", "qal"},
};

/// Nothing for a date that the calendar cannot tell, too.
std::optional<DateTimeRec> modificationDate(const std::string& path) {
    DateTimeRec date{};
    if (GetFileModDateCocoa(CFURL::createFromPath(path).get(), &date) != kNoErr || date == DateTimeRec{})
        return std::nullopt;
    return date;
}

PhotoError systemError(int number) {
    if (number == ENOENT || number == ENOTDIR) return {kNotFoundErr, resultCodeText(kNotFoundErr)};
    return {kMemFullErr, std::string("it cannot be opened: ") + strerror(number)};
}

PhotoError unreadable(const char* reason) {
    return {kUnreadableImageErr, reason};
}

/// What keeps a file of this status from being a photo.
std::optional<PhotoError> faultOf(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) return unreadable("it is a folder");
    if (!S_ISREG(status.st_mode)) return unreadable("it is a pipe or a device, not a file");
    if (status.st_size == 0) return unreadable(resultCodeText(kUnreadableImageErr));
    return std::nullopt;
}

}  // namespace

std::string_view photoType(std::string_view path) {
    const std::string name(fileName(path));
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos) return "image";
    for (const NamedType& candidate : kTypes) {
        if (strcasecmp(name.c_str() + dot + 1, candidate.extension) == 0) return candidate.type;
    }
    return "image";
}

PhotoFacts readFileFacts(const std::string& path) {
    PhotoFacts facts;
    facts.path = path;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        facts.error = systemError(errno);
        return facts;
    }
    if (S_ISREG(status.st_mode)) facts.bytes = static_cast<uint64_t>(status.st_size);
    facts.modified = modificationDate(path);
    facts.date = facts.modified;
    facts.error = faultOf(status);
    return facts;
}

std::optional<PhotoError> faultOfOpening(const std::string& path) {
    // Without blocking: a pipe may have taken the file's place meanwhile.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) return systemError(errno);
    struct stat status {};
    const bool known = fstat(descriptor, &status) == 0;
    const int problem = errno;
    close(descriptor);
    return known ? faultOf(status) : systemError(problem);
}

}  // namespace fi
