// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Object.h"

namespace fi {

NSObject::~NSObject() = default;

bool NSObject::isEqual(const NSObject* other) const {
    return this == other;
}

size_t NSObject::hash() const {
    return reinterpret_cast<uintptr_t>(this) >> 4U;
}

}  // namespace fi
