// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictPixelMap.h"

#include <utility>

#include "PlatformKit/Codecs/PictOpcodes.h"

namespace fi {

namespace {

constexpr uint32_t kPixelMapFlag = 0x8000;
constexpr uint32_t kDeviceColors = 0x8000;  // the colors stand in order; their numbers mean nothing
constexpr uint32_t kMaximumColors = 256;
constexpr uint32_t kLeastPackedRow = 8;  // shorter rows are never packed

bool isDirect(uint32_t bits) {
    return bits == 16 || bits == 32;
}
bool isIndexed(uint32_t bits) {
    return bits == 1 || bits == 2 || bits == 4 || bits == 8;
}

/// What the type of packing means for pixels of this depth; nullopt for what nobody defined.
std::optional<PictPacking> packingOf(uint32_t type, uint32_t bits, uint32_t rowBytes) {
    if (type == 1 || rowBytes < kLeastPackedRow) return PictPacking::None;
    if (bits <= 8) return PictPacking::Bytes;
    if (bits == 16) {
        if (type == 0 || type == 3 || type == 4) return PictPacking::Words;
        return std::nullopt;
    }
    if (type == 0 || type == 4) return PictPacking::Planes;
    if (type == 2) return PictPacking::DropAlpha;
    return std::nullopt;
}

/// Row bytes to planes of a pixel map; what has no meaning for the pixels is stepped over.
std::optional<PictPixelMap> readMap(PictInput& input, bool packed) {
    PictPixelMap map;
    map.rowBytes = input.u16() & ~kPixelMapFlag;
    map.bounds = input.rect();
    input.skip(2);  // version
    const uint16_t packType = input.u16();
    input.skip(4 + 8 + 2);  // packed size, resolution, pixel type
    map.bits = input.u16();
    map.planes = input.u16();
    input.skip(2 + 4 + 4 + 4);  // component size, distance of planes, table, reserved
    if (!isDirect(map.bits) && !isIndexed(map.bits)) return std::nullopt;
    if (map.bits == 32 && map.planes != 4) map.planes = 3;
    const auto packing = packingOf(packed ? packType : 1, map.bits, map.rowBytes);
    if (!packing) return std::nullopt;
    map.packing = *packing;
    return map;
}

/// Every row of the map takes bytes, so that a picture cannot ask for work that it has no data for.
bool isSound(const PictPixelMap& map) {
    return map.rowBytes > 0 || map.bounds.isEmpty();
}

bool readColors(PictInput& input, PictPixelMap& map) {
    input.skip(4);
    const uint16_t flags = input.u16();
    const uint32_t count = input.u16() + 1U;
    if (count > kMaximumColors && count != 0x10000) return false;
    // A last index of -1 is an empty table.
    std::vector<std::pair<uint32_t, PictColor>> entries(count <= kMaximumColors ? count : 0);
    // Some writers leave all numbers at zero.
    bool numbered = false;
    for (auto& [number, color] : entries) {
        number = input.u16();
        color = readPictColor(input);
        numbered = numbered || number != 0;
    }
    numbered = numbered && (flags & kDeviceColors) == 0;
    if (isIndexed(map.bits)) map.colors.assign(size_t{1} << map.bits, kPictBlack);
    for (uint32_t i = 0; i < entries.size(); ++i) {
        const uint32_t index = numbered ? entries[i].first : i;
        if (index < map.colors.size()) map.colors[index] = entries[i].second;
    }
    return !input.isCut();
}

PictPixelMap readBitMap(PictInput& input, bool packed) {
    PictPixelMap map;
    map.isBitMap = true;
    map.rowBytes = input.u16();
    map.bounds = input.rect();
    map.packing = packed && map.rowBytes >= kLeastPackedRow ? PictPacking::Bytes : PictPacking::None;
    return map;
}

std::optional<PictPixelMap> readAnyMap(PictInput& input, uint16_t opcode) {
    const bool packed = opcode >= kOpcodePackBitsRect;
    const bool direct = opcode >= kOpcodeDirectBitsRect;
    if (direct) {
        input.skip(4);  // an address of memory
        auto map = readMap(input, packed);
        return map && isDirect(map->bits) ? map : std::nullopt;
    }
    const uint64_t start = input.position();
    const bool isPixelMap = (input.u16() & kPixelMapFlag) != 0;
    input.seek(start);
    if (!isPixelMap) return readBitMap(input, packed);
    auto map = readMap(input, packed);
    return map && readColors(input, *map) ? map : std::nullopt;
}

}  // namespace

PictColor readPictColor(PictInput& input) {
    const uint32_t red = input.u16() >> 8;
    const uint32_t green = input.u16() >> 8;
    const uint32_t blue = input.u16() >> 8;
    return pictColor(red, green, blue);
}

std::optional<PictBits> readPictBits(PictInput& input, uint16_t opcode) {
    auto map = readAnyMap(input, opcode);
    if (!map || !isSound(*map)) return std::nullopt;
    PictBits bits;
    bits.map = std::move(*map);
    bits.source = input.rect();
    bits.target = input.rect();
    bits.mode = input.u16();
    if ((opcode & 1) != 0) {
        bits.mask = PictRegion::read(input);
        if (!bits.mask) return std::nullopt;
    }
    if (input.isCut()) return std::nullopt;
    return bits;
}

std::optional<PictPixelMap> readPatternMap(PictInput& input) {
    auto map = readMap(input, true);
    if (!map || !isSound(*map) || !readColors(input, *map)) return std::nullopt;
    return map;
}

}  // namespace fi
