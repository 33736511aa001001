// SPDX-License-Identifier: Apache-2.0
// An immutable block of bytes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "PlatformKit/Ref.h"

namespace fi {

class FI_EXPORT CFData final : public NSObject {
public:
    /// OWNED. A copy of the bytes.
    static Ref<const CFData> create(std::span<const uint8_t> bytes);
    /// OWNED. The bytes themselves, taken over.
    static Ref<const CFData> adopting(std::vector<uint8_t> bytes);

    /// BORROWED, valid as long as the object.
    [[nodiscard]] std::span<const uint8_t> bytes() const noexcept { return m_bytes; }
    [[nodiscard]] size_t length() const noexcept { return m_bytes.size(); }

    /// Equality of the bytes.
    [[nodiscard]] bool isEqual(const NSObject* other) const override;
    [[nodiscard]] size_t hash() const override;

private:
    explicit CFData(std::vector<uint8_t> bytes) noexcept : m_bytes(std::move(bytes)) {}
    ~CFData() override = default;

    std::vector<uint8_t> m_bytes;
};

using CFDataRef = const CFData*;
using NSData = CFData;

}  // namespace fi
