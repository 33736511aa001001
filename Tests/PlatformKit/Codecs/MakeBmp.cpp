// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/MakeBmp.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

void add(Bytes& out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void add(Bytes& out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

Bytes paletteOf(const BmpRecipe& recipe) {
    Bytes out;
    for (const StoredColor& color : recipe.palette) {
        add(out, Bytes{color.blue, color.green, color.red});
        if (recipe.headerBytes != 12) out.push_back(0);
    }
    return out;
}

Bytes headerOf(const BmpRecipe& recipe, uint32_t profileOffset) {
    const bool core = recipe.headerBytes == 12;
    Bytes out;
    add(out, recipe.headerBytes, 4);
    add(out, static_cast<uint32_t>(recipe.width), core ? 2 : 4);
    add(out, static_cast<uint32_t>(recipe.height), core ? 2 : 4);
    add(out, recipe.planes, 2);
    add(out, recipe.bits, 2);
    if (core) return out;
    add(out, recipe.compression, 4);
    add(out, recipe.pixels.size(), 4);
    add(out, static_cast<uint32_t>(recipe.perMetreX), 4);
    add(out, static_cast<uint32_t>(recipe.perMetreY), 4);
    add(out, recipe.colorsUsed.value_or(static_cast<uint32_t>(recipe.palette.size())), 4);
    add(out, 0, 4);
    if (recipe.headerBytes > 40) {
        for (const uint32_t mask : recipe.masks)
            add(out, mask, 4);
    }
    if (recipe.headerBytes == 124) {
        out.resize(56);
        add(out, recipe.profile.empty() ? 0x73524742 : 0x4D424544, 4);  // "sRGB" or "MBED"
        out.resize(112);
        add(out, profileOffset, 4);
        add(out, recipe.profile.size(), 4);
    }
    out.resize(recipe.headerBytes);
    return out;
}

Bytes masksBehind(const BmpRecipe& recipe) {
    Bytes out;
    if (recipe.headerBytes != 40) return out;
    for (const uint32_t mask : recipe.masks)
        add(out, mask, 4);
    return out;
}

}  // namespace

std::vector<uint8_t> makeBmp(const BmpRecipe& recipe) {
    const Bytes palette = paletteOf(recipe);
    const Bytes masks = masksBehind(recipe);
    const auto behindHeader = static_cast<uint32_t>(masks.size() + palette.size());
    const auto pixelBytes = static_cast<uint32_t>(recipe.pixels.size());
    const uint32_t start = (recipe.array ? 28U : 14U) + recipe.headerBytes + behindHeader;
    const uint32_t end = start + pixelBytes + static_cast<uint32_t>(recipe.profile.size());
    Bytes out;
    if (recipe.array) {
        add(out, Bytes{'B', 'A'});
        add(out, 40, 4);
        add(out, 0, 8);
    }
    add(out, Bytes{'B', 'M'});
    add(out, recipe.fileBytes.value_or(end), 4);
    add(out, 0, 4);
    add(out, recipe.pixelOffset.value_or(start), 4);
    add(out, headerOf(recipe, recipe.headerBytes + behindHeader + pixelBytes));
    add(out, masks);
    add(out, palette);
    add(out, recipe.pixels);
    add(out, recipe.profile);
    return out;
}

}  // namespace fi::test
