// SPDX-License-Identifier: Apache-2.0
// A name of up to 79 letters and a NUL, the number of the compression, and the compressed profile.
#include "PlatformKit/Codecs/PngProfile.h"

#include <algorithm>

#include <zlib.h>

namespace fi {

namespace {

constexpr size_t kLongestName = 79;
constexpr uint32_t kShortestProfile = 132;  // its header and the number of its tags
constexpr uint32_t kMaximumProfileBytes = 16U << 20;
constexpr size_t kMostBytesPerByte = 1032;  // of deflate

/// The compressed bytes; empty when what stands in front of them is wrong.
ByteView packedBytes(ByteView chunk) {
    const auto bytes = chunk.cut(0, kLongestName + 1).bytes();
    const auto end = std::find(bytes.begin(), bytes.end(), uint8_t{0});
    if (end == bytes.end()) return {};
    const auto nameLength = static_cast<size_t>(end - bytes.begin());
    return chunk.u8(nameLength + 1) == 0 ? chunk.cut(nameLength + 2) : ByteView{};
}

/// True when exactly `out.size()` bytes come.
bool unpack(ByteView packed, std::span<uint8_t> out) {
    uLongf count = out.size();
    uLong used = packed.size();
    const int answer = uncompress2(out.data(), &count, packed.data(), &used);
    // A profile that goes on behind the length that it states is used up to there.
    return (answer == Z_OK || answer == Z_BUF_ERROR) && count == out.size();
}

}  // namespace

std::vector<uint8_t> unpackPngProfile(ByteView chunk) {
    const ByteView packed = packedBytes(chunk);
    uint8_t start[4] = {};
    if (packed.empty() || !unpack(packed, start)) return {};
    // A profile begins with its length, so nothing has to be guessed and nothing grows.
    const uint32_t length = ByteView(start, sizeof start, ByteOrder::Big).u32(0).value_or(0);
    if (length < kShortestProfile || length > kMaximumProfileBytes) return {};
    if (length / kMostBytesPerByte > packed.size()) return {};
    std::vector<uint8_t> profile(length);
    return unpack(packed, profile) ? profile : std::vector<uint8_t>{};
}

}  // namespace fi
