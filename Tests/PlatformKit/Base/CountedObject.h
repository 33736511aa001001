// SPDX-License-Identifier: Apache-2.0
// An object that tells when it is destroyed.
#pragma once

#include <functional>
#include <utility>

#include "PlatformKit/Object.h"

namespace fi::test {

class CountedObject : public NSObject {
public:
    explicit CountedObject(std::function<void()> atEnd = [] {}) : m_atEnd(std::move(atEnd)) {}

protected:
    ~CountedObject() override { m_atEnd(); }

private:
    std::function<void()> m_atEnd;
};

}  // namespace fi::test
