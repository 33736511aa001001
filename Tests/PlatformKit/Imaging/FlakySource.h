// SPDX-License-Identifier: Apache-2.0
// Bytes of which a single read fails, as on a card with a loose contact.
#pragma once

#include <memory>

#include "PlatformKit/Imaging/SourceReader.h"
#include "Support/MakePictures.h"

namespace fi::test {

class FlakySource final : public ByteSource {
public:
    FlakySource(std::span<const uint8_t> bytes, int failing, bool& failed)
        : m_bytes(bytes), m_left(failing), m_failed(failed) {}

    [[nodiscard]] uint64_t size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        if (m_left-- != 0) return m_bytes.read(offset, out);
        m_failed = true;
        return 0;
    }
    [[nodiscard]] bool failed() const override { return m_failed; }

private:
    MemorySource m_bytes;
    int m_left;
    bool& m_failed;
};

/// A source on `file` whose read number `failing` (the first is 0) fails; `failed` tells that it did.
inline Ref<ImageSource> flakySource(const Bytes& file, int failing, bool& failed, ImageFailure* failure) {
    failed = false;
    return SourceReader::makeSource(std::make_unique<FlakySource>(file, failing, failed), failure);
}

}  // namespace fi::test
