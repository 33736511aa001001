// SPDX-License-Identifier: Apache-2.0
// The bytes of a file, read piece by piece. Files on cards are never mapped: a pulled card would kill
// the process.
#pragma once

#include <memory>

#include "PlatformKit/Base/ByteSource.h"

namespace fi {

class FileSource final : public ByteSource {
public:
    /// Takes over an open descriptor of a regular file.
    FileSource(int descriptor, uint64_t size) : m_descriptor(descriptor), m_size(size) {}
    ~FileSource() override;

    [[nodiscard]] uint64_t size() const override { return m_size; }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override;
    [[nodiscard]] bool failed() const override { return m_failed; }

private:
    int m_descriptor;
    uint64_t m_size;
    bool m_failed = false;
};

/// Opens a regular file for reading, links followed; null for anything else (a folder, a pipe, a device)
/// and for what cannot be opened. Never waits for a writer.
[[nodiscard]] std::unique_ptr<FileSource> openFileSource(const char* path);

}  // namespace fi
