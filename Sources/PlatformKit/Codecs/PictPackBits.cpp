// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictPackBits.h"

#include <algorithm>
#include <cstring>

namespace fi {

namespace {
constexpr uint8_t kNoOperation = 128;

void repeat(const uint8_t* unit, size_t unitBytes, std::span<uint8_t> out) {
    if (unitBytes == 1) {
        std::memset(out.data(), *unit, out.size());
        return;
    }
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = unit[i % unitBytes];
}
}  // namespace

size_t unpackPictBits(std::span<const uint8_t> packed, size_t unitBytes, std::span<uint8_t> out) {
    size_t in = 0;
    size_t filled = 0;
    while (in < packed.size() && filled < out.size()) {
        const uint8_t code = packed[in++];
        if (code == kNoOperation) continue;
        const size_t left = packed.size() - in;
        if (code < kNoOperation) {
            const size_t literal = (code + size_t{1}) * unitBytes;
            const size_t count = std::min({literal, left, out.size() - filled});
            if (count > 0) std::memcpy(out.data() + filled, packed.data() + in, count);
            in += std::min(literal, left);
            filled += count;
        } else {
            if (left < unitBytes) break;
            const size_t count = std::min((257 - size_t{code}) * unitBytes, out.size() - filled);
            repeat(packed.data() + in, unitBytes, out.subspan(filled, count));
            in += unitBytes;
            filled += count;
        }
    }
    if (filled < out.size()) std::memset(out.data() + filled, 0, out.size() - filled);
    return filled;
}

}  // namespace fi
