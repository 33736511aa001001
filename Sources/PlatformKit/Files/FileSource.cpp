// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/FileSource.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>

namespace fi {

FileSource::~FileSource() {
    close(m_descriptor);
}

size_t FileSource::read(uint64_t offset, std::span<uint8_t> out) {
    size_t filled = 0;
    while (filled < out.size()) {
        if (offset > static_cast<uint64_t>(std::numeric_limits<off_t>::max()) - filled) break;
        const ssize_t count = pread(m_descriptor, out.data() + filled, out.size() - filled,
                                    static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) m_failed = true;
        if (count <= 0) break;
        filled += static_cast<size_t>(count);
    }
    return filled;
}

std::unique_ptr<FileSource> openFileSource(const char* path) {
    // O_NONBLOCK: a pipe without a writer would keep us waiting; regular files do not notice.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return nullptr;
    }
    try {
        return std::make_unique<FileSource>(descriptor, static_cast<uint64_t>(status.st_size));
    } catch (...) {
        close(descriptor);
        throw;
    }
}

}  // namespace fi
