// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/ReplacementFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

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

bool mayBeReplaced(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

}  // namespace

ReplacementFile::ReplacementFile(const std::string& path) : m_path(resolvingLinks(path)) {
    if (!mayBeReplaced(m_path)) return;
    const std::string folder(withoutLastPathComponent(m_path));
    for (int attempt = 0; attempt < kMostAttempts && m_descriptor < 0; ++attempt) {
        m_writtenPath = joinedPath(folder, nextHiddenName());
        m_descriptor = open(m_writtenPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_descriptor < 0 && errno != EEXIST) return;
    }
}

ReplacementFile::~ReplacementFile() {
    if (m_descriptor < 0) return;
    close(m_descriptor);
    unlink(m_writtenPath.c_str());
}

bool ReplacementFile::write(std::span<const uint8_t> bytes) {
    while (!bytes.empty() && isOpen() && !m_failed) {
        const ssize_t count = ::write(m_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            m_failed = true;
        } else {
            bytes = bytes.subspan(static_cast<size_t>(count));
        }
    }
    return isOpen() && !m_failed;
}

bool ReplacementFile::commit() {
    if (!isOpen()) return false;
    // Some file systems tell only here that the bytes did not fit.
    const bool written = close(m_descriptor) == 0 && !m_failed;
    m_descriptor = -1;
    if (written && rename(m_writtenPath.c_str(), m_path.c_str()) == 0) return true;
    unlink(m_writtenPath.c_str());
    return false;
}

}  // namespace fi
