// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/ReplacementFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <system_error>

#include "PlatformKit/Files/FileSystem.h"
#include "PlatformKit/Text/PathText.h"

namespace fi {

namespace {

/// Names that no other thread or process uses at the same time; a left-over of an earlier one is told by
/// O_EXCL.
std::string nextHiddenName() {
    static std::atomic<uint32_t> counter{0};
    return ".fileimporter-" + std::to_string(getpid()) + "-" + std::to_string(counter.fetch_add(1));
}

constexpr int kMostAttempts = 100;

constexpr mode_t kPermissions = 0777;
constexpr mode_t kNewFile = 0666;  // less what the process masks

/// Waits until the bytes are on the disk. True as well where the file system has no way to say so.
bool isStored(int descriptor) {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path) : m_path(resolvingLinks(path)) {
    struct stat old {};
    const bool replaces = stat(m_path.c_str(), &old) == 0;
    if (replaces && !S_ISREG(old.st_mode)) return;
    openHidden(replaces ? (old.st_mode & kPermissions) | S_IWUSR : kNewFile);
    // A file system without permissions refuses this, and has none to keep.
    if (replaces && isOpen()) (void)fchmod(m_descriptor, old.st_mode & kPermissions);
}

void ReplacementFile::openHidden(uint32_t permissions) {
    const std::string folder(withoutLastPathComponent(m_path));
    for (int attempt = 0; attempt < kMostAttempts && m_descriptor < 0; ++attempt) {
        m_writtenPath = joinedPath(folder, nextHiddenName());
        m_descriptor = open(m_writtenPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
        m_error = m_descriptor < 0 ? errno : 0;
        if (m_descriptor < 0 && m_error != EEXIST) return;
    }
}

ReplacementFile::~ReplacementFile() {
    if (m_descriptor < 0) return;
    close(m_descriptor);
    unlink(m_writtenPath.c_str());
}

bool ReplacementFile::write(std::span<const uint8_t> bytes) {
    while (!bytes.empty() && isOpen() && m_error == 0) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            m_error = count < 0 ? errno : EIO;
        } else {
            bytes = bytes.subspan(static_cast<size_t>(count));
        }
    }
    return isOpen() && m_error == 0;
}

bool ReplacementFile::commit() {
    if (!isOpen()) return false;
    // Some file systems tell only here that the bytes did not fit; and a name that is changed before they
    // are stored could, after a power cut, be that of an empty file.
    if (m_error == 0 && !isStored(m_descriptor)) m_error = errno;
    const bool closed = close(m_descriptor) == 0;
    m_descriptor = -1;
    if (m_error == 0 && !closed) m_error = errno;
    if (m_error == 0 && rename(m_writtenPath.c_str(), m_path.c_str()) != 0) m_error = errno;
    if (m_error == 0) return true;
    unlink(m_writtenPath.c_str());
    return false;
}

std::string ReplacementFile::reason() const {
    return m_error == 0 ? std::string() : std::generic_category().message(m_error);
}

}  // namespace fi
