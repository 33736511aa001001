// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Text/PascalText.h"

#include <algorithm>
#include <cstring>

namespace fi {

std::string_view pascalView(const unsigned char* pascal) {
    return {reinterpret_cast<const char*>(pascal + 1), pascal[0]};
}

bool storePascal(std::string_view text, PascalBuffer& out) {
    if (text.size() >= out.size()) return false;
    out.fill(0);
    out[0] = static_cast<unsigned char>(text.size());
    std::copy(text.begin(), text.end(), out.begin() + 1);
    return true;
}

int compareBytes(std::string_view a, std::string_view b) {
    const size_t common = std::min(a.size(), b.size());
    const int difference = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common);
    if (difference != 0) return difference < 0 ? -1 : 1;
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

int32_t numberFromDigits(std::string_view digits) {
    uint32_t value = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9') break;
        value = value * 10 + static_cast<uint32_t>(c - '0');
    }
    return static_cast<int32_t>(value);
}

}  // namespace fi
