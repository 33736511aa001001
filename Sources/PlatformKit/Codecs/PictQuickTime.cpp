// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictQuickTime.h"

#include <array>
#include <cmath>

#include "PlatformKit/Codecs/PictOpcodes.h"

namespace fi {

namespace {

constexpr uint32_t kDescriptionBytes = 86;  // without extensions
constexpr double kLargestCoordinate = 65535;

/// A scale and a distance in each direction.
struct Placing {
    double scaleX = 1;
    double scaleY = 1;
    double moveX = 0;
    double moveY = 0;

    [[nodiscard]] PictRect apply(const PictRect& rect) const {
        const auto place = [](double value, double scale, double move) {
            const double moved = value * scale + move;
            return static_cast<int32_t>(
                std::lround(std::clamp(moved, -kLargestCoordinate, kLargestCoordinate)));
        };
        return {place(rect.top, scaleY, moveY), place(rect.left, scaleX, moveX),
                place(rect.bottom, scaleY, moveY), place(rect.right, scaleX, moveX)};
    }
};

/// Nullopt for a matrix that turns, skews or mirrors.
std::optional<Placing> readMatrix(PictInput& input) {
    std::array<int32_t, 9> matrix;
    for (int32_t& element : matrix)
        element = static_cast<int32_t>(input.u32());
    if (matrix[1] != 0 || matrix[2] != 0 || matrix[3] != 0 || matrix[5] != 0) return std::nullopt;
    if (matrix[0] <= 0 || matrix[4] <= 0) return std::nullopt;
    return Placing{matrix[0] / 65536.0, matrix[4] / 65536.0, matrix[6] / 65536.0, matrix[7] / 65536.0};
}

/// Codec to depth; the input is left where the data begin.
bool readDescription(PictInput& input, PictImage& image) {
    const uint64_t start = input.position();
    const uint32_t size = input.u32();
    if (size < kDescriptionBytes || size > input.left()) return false;
    image.codec = input.u32();
    input.skip(24);
    image.width = input.u16();
    image.height = input.u16();
    input.skip(8);
    const uint32_t dataSize = input.u32();
    input.skip(34);
    image.depth = input.u16();
    input.seek(start + size);
    image.start = input.position();
    // A size of zero is one that the writer did not know.
    image.end = dataSize == 0 ? input.end() : std::min(input.end(), image.start + dataSize);
    return image.width > 0 && image.height > 0;
}

}  // namespace

bool PictImage::isRead() const {
    if (codec == kQuickTimeRaw) return depth == 16 || depth == 24 || depth == 32;
    return codec == kQuickTimeJpeg;
}

PictPixelMap PictImage::rawMap() const {
    PictPixelMap map;
    map.bounds = {0, 0, static_cast<int32_t>(height), static_cast<int32_t>(width)};
    map.bits = depth == 16 ? 16 : 32;
    map.rowBytes = width * map.bits / 8;
    map.packing = depth == 24 ? PictPacking::DropAlpha : PictPacking::None;
    return map;
}

std::optional<PictImage> readPictImage(PictInput& input) {
    PictImage image;
    input.skip(2);  // version
    const auto placing = readMatrix(input);
    const uint32_t matteBytes = input.u32();
    input.skip(8);
    image.mode = input.u16();
    image.source = input.rect();
    input.skip(4);  // accuracy
    const uint32_t maskBytes = input.u32();
    input.skip(matteBytes);
    if (maskBytes > 0) {
        const uint64_t behind = input.position() + maskBytes;
        image.mask = PictRegion::read(input);
        if (!image.mask) return std::nullopt;
        input.seek(behind);
    }
    if (!placing || input.isCut() || !readDescription(input, image)) return std::nullopt;
    if (image.source.isEmpty()) {
        image.source = {0, 0, static_cast<int32_t>(image.height), static_cast<int32_t>(image.width)};
    }
    image.target = placing->apply(image.source);
    return image;
}

std::optional<PictBits> readPictImageBits(PictInput& input) {
    input.skip(2);
    const auto placing = readMatrix(input);
    const uint32_t matteBytes = input.u32();
    input.skip(8);
    input.skip(matteBytes);
    const uint16_t opcode = input.u16();
    if (!placing || input.isCut() || !isBits(opcode)) return std::nullopt;
    auto bits = readPictBits(input, opcode);
    if (bits) bits->target = placing->apply(bits->target);
    return bits;
}

}  // namespace fi
