// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Data.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace fi {

Ref<const CFData> CFData::create(std::span<const uint8_t> bytes) {
    return adopting(std::vector<uint8_t>(bytes.begin(), bytes.end()));
}

Ref<const CFData> CFData::adopting(std::vector<uint8_t> bytes) {
    return adopt(new CFData(std::move(bytes)));
}

bool CFData::isEqual(const NSObject* other) const {
    const auto* data = dynamic_cast<const CFData*>(other);
    return data != nullptr && data->m_bytes == m_bytes;
}

size_t CFData::hash() const {
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size()});
}

}  // namespace fi
