// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Array.h"

namespace fi {

Ref<const CFArray> CFArray::create(Elements elements) {
    return adopt(new CFArray(std::move(elements)));
}

bool CFArray::isEqual(const NSObject* other) const {
    const auto* array = dynamic_cast<const CFArray*>(other);
    if (array == nullptr || array->count() != count()) return false;
    for (size_t i = 0; i < count(); ++i) {
        if (!CFEqual(at(i), array->at(i))) return false;
    }
    return true;
}

size_t CFArray::hash() const {
    return count();
}

Ref<NSMutableArray> NSMutableArray::create() {
    return adopt(new NSMutableArray());
}

Ref<NSMutableArray> NSMutableArray::createCopy(const CFArray& other) {
    return adopt(new NSMutableArray(other.elements()));
}

void NSMutableArray::replaceAt(size_t index, Ref<const NSObject> element) {
    if (index < m_elements.size()) m_elements[index] = std::move(element);
}

void NSMutableArray::removeAt(size_t index) {
    if (index < m_elements.size()) m_elements.erase(m_elements.begin() + static_cast<ptrdiff_t>(index));
}

}  // namespace fi
