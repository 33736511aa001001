// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/PeerExif.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fi::bench {

const std::vector<PeerExif>& peersOfExif() {
    static const std::vector<PeerExif> peers = {
#ifdef FI_BENCH_LIBEXIF
        {"Exif facts / libexif", 0.25, [] {}, readByLibexif},
#endif
#ifdef FI_BENCH_EXIV2
        {"Exif facts / Exiv2", 0.16, prepareExiv2, readByExiv2},
#endif
    };
    return peers;
}

bool readHeadBarely(const char* path) {
    char head[4096];
    struct stat status {};
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool isRead = fstat(file, &status) == 0 && pread(file, head, sizeof head, 0) > 0;
    return close(file) == 0 && isRead;
}

}  // namespace fi::bench
