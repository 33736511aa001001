// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictHead.h"

#include <array>
#include <cmath>

#include "PlatformKit/Codecs/PictOpcodes.h"

namespace fi {

namespace {

constexpr double kPointsPerInch = 72;
constexpr double kLargestDensity = 32767;
constexpr int16_t kExtendedHeader = -2;
constexpr size_t kHeadBytes = static_cast<size_t>(kPictFileHeader) + 14;
constexpr std::string_view kVersionTwo("\x00\x11\x02\xFF", 4);
constexpr std::string_view kVersionOne("\x11\x01", 2);

PictRect rectAt(ByteView bytes, uint64_t offset) {
    const auto word = [&](uint64_t i) {
        return static_cast<int32_t>(static_cast<int16_t>(bytes.u16(offset + 2 * i).value_or(0)));
    };
    return {word(0), word(1), word(2), word(3)};
}

bool isPictAt(ByteView head, uint64_t start) {
    if (rectAt(head, start + 2).isEmpty()) return false;
    if (head.startsWith(kVersionTwo, start + 10)) return true;
    const auto next = head.u8(start + 12);
    // Two bytes are little to go by: what follows must be an opcode that the first version has.
    return head.startsWith(kVersionOne, start + 10) && next && isOpcodeOfVersionOne(*next);
}

struct Resolution {
    double x = 0;
    double y = 0;
    PictRect space;  ///< empty when it is not stated
};

/// Steps over the header, when there is one. Nullopt when it states no resolution.
std::optional<Resolution> readResolution(PictInput& input) {
    const uint64_t start = input.position();
    if (input.u16() != kOpcodeHeader) {
        input.seek(start);
        return std::nullopt;
    }
    const int16_t kind = input.s16();
    input.skip(2);
    Resolution resolution;
    resolution.x = static_cast<int32_t>(input.u32()) / 65536.0;
    resolution.y = static_cast<int32_t>(input.u32()) / 65536.0;
    resolution.space = input.rect();
    input.skip(4);
    return kind == kExtendedHeader ? std::optional(resolution) : std::nullopt;
}

bool isSensible(double density) {
    return density >= 1 && density <= kLargestDensity;
}

uint32_t pixelsFor(uint32_t points, double density) {
    return static_cast<uint32_t>(std::max(std::lround(points * density / kPointsPerInch), 1L));
}

/// The stated density, unless the points that come out of it are not those of the frame.
double densityFor(uint32_t pixels, uint32_t points, double stated) {
    const bool agrees = std::lround(pixels * kPointsPerInch / stated) == static_cast<long>(points);
    return agrees ? stated : pixels * kPointsPerInch / points;
}

void applyResolution(PictHead& head, const Resolution& resolution) {
    const bool stated = isSensible(resolution.x) && isSensible(resolution.y);
    if (!resolution.space.isEmpty()) {
        head.space = resolution.space;
        head.width = head.space.width();
        head.height = head.space.height();
    } else if (stated) {
        head.width = pixelsFor(head.frame.width(), resolution.x);
        head.height = pixelsFor(head.frame.height(), resolution.y);
    }
    const bool framed = head.width == head.frame.width() && head.height == head.frame.height();
    if (!stated && framed) return;
    head.density =
        Density{densityFor(head.width, head.frame.width(), stated ? resolution.x : kPointsPerInch),
                densityFor(head.height, head.frame.height(), stated ? resolution.y : kPointsPerInch)};
}

}  // namespace

std::optional<uint64_t> findPict(ByteView head) {
    const ByteView bytes = head.withOrder(ByteOrder::Big);
    for (const uint64_t start : {uint64_t{0}, kPictFileHeader}) {
        if (isPictAt(bytes, start)) return start;
    }
    return std::nullopt;
}

CodecResult<PictHead> readPictHead(ByteSource& source) {
    std::array<uint8_t, kHeadBytes> bytes;
    const ByteView view(bytes.data(), source.read(0, bytes), ByteOrder::Big);
    const auto start = findPict(view);
    if (!start) {
        if (source.failed())
            return Failure{CodecFailure{CodecError::ReadFailed, "The file cannot be read."}};
        return Failure{CodecFailure{CodecError::NotThisFormat, "The file is not a PICT file."}};
    }
    PictHead head;
    head.start = *start;
    head.frame = rectAt(view, *start + 2);
    head.space = head.frame;
    head.width = head.frame.width();
    head.height = head.frame.height();
    head.version = view.startsWith(kVersionTwo, *start + 10) ? 2 : 1;
    head.opcodes = *start + 10 + (head.version == 2 ? kVersionTwo : kVersionOne).size();
    if (head.version == 2) {
        PictInput input(source, head.opcodes);
        if (const auto resolution = readResolution(input)) applyResolution(head, *resolution);
        head.opcodes = input.position();
    }
    return head;
}

}  // namespace fi
