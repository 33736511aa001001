// SPDX-License-Identifier: Apache-2.0
// Ordered lists of objects. An array holds a reference to each of its elements.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "PlatformKit/Ref.h"

namespace fi {

class FI_EXPORT CFArray : public NSObject {
public:
    using Elements = std::vector<Ref<const NSObject>>;

    /// OWNED.
    static Ref<const CFArray> create(Elements elements);

    [[nodiscard]] size_t count() const noexcept { return m_elements.size(); }
    /// The element at a 0-based index, BORROWED; null beyond the end.
    [[nodiscard]] const NSObject* at(size_t index) const noexcept {
        return index < m_elements.size() ? m_elements[index].get() : nullptr;
    }
    /// The element as a type, BORROWED; null when it is of another type or beyond the end.
    template <typename T>
    [[nodiscard]] const T* at(size_t index) const noexcept {
        return dynamic_cast<const T*>(at(index));
    }
    [[nodiscard]] const Elements& elements() const noexcept { return m_elements; }

    /// Same length and pairwise equal elements.
    [[nodiscard]] bool isEqual(const NSObject* other) const override;
    [[nodiscard]] size_t hash() const override;

protected:
    CFArray() = default;
    explicit CFArray(Elements elements) noexcept : m_elements(std::move(elements)) {}
    ~CFArray() override = default;

    Elements m_elements;
};

/// A list that can change. One thread at a time.
class FI_EXPORT NSMutableArray final : public CFArray {
public:
    /// OWNED. An empty list.
    static Ref<NSMutableArray> create();
    /// OWNED. A list with the same elements.
    static Ref<NSMutableArray> createCopy(const CFArray& other);

    void append(Ref<const NSObject> element) { m_elements.push_back(std::move(element)); }
    /// Beyond the end these do nothing.
    void replaceAt(size_t index, Ref<const NSObject> element);
    void removeAt(size_t index);
    void removeAll() { m_elements.clear(); }

private:
    NSMutableArray() = default;
    explicit NSMutableArray(Elements elements) noexcept : CFArray(std::move(elements)) {}
    ~NSMutableArray() override = default;
};

using CFArrayRef = const CFArray*;
using NSArray = CFArray;

}  // namespace fi
