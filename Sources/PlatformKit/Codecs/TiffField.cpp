// SPDX-License-Identifier: Apache-2.0
// Values of directory entries, read through the checked view.
#include "PlatformKit/Codecs/TiffField.h"

#include <algorithm>
#include <array>
#include <bit>

namespace fi {

namespace {

constexpr std::array<uint8_t, 19> kTypeBytes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

bool isSignedInteger(uint16_t type) {
    return type == kTiffSByte || type == kTiffSShort || type == kTiffSLong || type == kTiffSLong8;
}

bool isInteger(uint16_t type) {
    switch (type) {
        case kTiffByte:
        case kTiffShort:
        case kTiffLong:
        case kTiffUndefined:
        case kTiffIfd:
        case kTiffLong8:
        case kTiffIfd8:
            return true;
        default:
            return isSignedInteger(type);
    }
}

/// The value's bits, widened with its sign where the type has one.
std::optional<uint64_t> integerBits(ByteView data, uint16_t type, uint64_t at) {
    const bool negative = isSignedInteger(type);
    switch (tiffTypeBytes(type)) {
        case 1:
            if (const auto v = data.u8(at))
                return negative ? static_cast<uint64_t>(static_cast<int8_t>(*v)) : *v;
            return std::nullopt;
        case 2:
            if (const auto v = data.u16(at)) {
                return negative ? static_cast<uint64_t>(static_cast<int16_t>(*v)) : *v;
            }
            return std::nullopt;
        case 4:
            if (const auto v = data.u32(at)) {
                return negative ? static_cast<uint64_t>(static_cast<int32_t>(*v)) : *v;
            }
            return std::nullopt;
        default:
            return data.u64(at);
    }
}

std::optional<double> quotient(ByteView data, uint64_t at, bool isSigned) {
    const auto top = data.u32(at);
    const auto bottom = data.u32(at + 4);
    if (!top || !bottom || *bottom == 0) return std::nullopt;
    if (isSigned) return static_cast<double>(static_cast<int32_t>(*top)) / static_cast<int32_t>(*bottom);
    return static_cast<double>(*top) / *bottom;
}

}  // namespace

uint32_t tiffTypeBytes(uint16_t type) {
    return type < kTypeBytes.size() ? kTypeBytes[type] : 0;
}

std::string TiffField::asText() const {
    return std::string(data.begin(), std::find(data.begin(), data.end(), 0));
}

std::optional<uint64_t> TiffField::asUnsigned(size_t index) const {
    if (!isInteger(type) || index >= count) return std::nullopt;
    const auto bits = integerBits(ByteView(data, order), type, uint64_t{index} * tiffTypeBytes(type));
    if (bits && isSignedInteger(type) && static_cast<int64_t>(*bits) < 0) return std::nullopt;
    return bits;
}

std::optional<int64_t> TiffField::asSigned(size_t index) const {
    if (!isInteger(type) || index >= count) return std::nullopt;
    const auto bits = integerBits(ByteView(data, order), type, uint64_t{index} * tiffTypeBytes(type));
    if (!bits) return std::nullopt;
    const auto value = static_cast<int64_t>(*bits);
    if (value < 0 && !isSignedInteger(type)) return std::nullopt;
    return value;
}

std::optional<double> TiffField::asRational(size_t index) const {
    if (index >= count) return std::nullopt;
    const ByteView view(data, order);
    const uint64_t at = uint64_t{index} * tiffTypeBytes(type);
    switch (type) {
        case kTiffRational:
        case kTiffSRational:
            return quotient(view, at, type == kTiffSRational);
        case kTiffFloat:
            if (const auto bits = view.u32(at)) return static_cast<double>(std::bit_cast<float>(*bits));
            return std::nullopt;
        case kTiffDouble:
            if (const auto bits = view.u64(at)) return std::bit_cast<double>(*bits);
            return std::nullopt;
        default:
            break;
    }
    if (const auto value = asSigned(index)) return static_cast<double>(*value);
    if (const auto value = asUnsigned(index)) return static_cast<double>(*value);
    return std::nullopt;
}

}  // namespace fi
