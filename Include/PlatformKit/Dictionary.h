// SPDX-License-Identifier: Apache-2.0
// Objects found by name. A dictionary holds a reference to each of its keys and values.
#pragma once

#include <functional>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "PlatformKit/String.h"

namespace fi {

class FI_EXPORT CFDictionary : public NSObject {
public:
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>{}(text);
        }
        size_t operator()(const Ref<const CFString>& text) const noexcept { return (*this)(text->view()); }
    };
    struct Equal {
        using is_transparent = void;
        static std::string_view text(std::string_view key) noexcept { return key; }
        static std::string_view text(const Ref<const CFString>& key) noexcept { return key->view(); }
        template <typename A, typename B>
        bool operator()(const A& a, const B& b) const noexcept {
            return text(a) == text(b);
        }
    };
    using Entries = std::unordered_map<Ref<const CFString>, Ref<const NSObject>, Hash, Equal>;

    /// OWNED.
    static Ref<const CFDictionary> create(Entries entries);

    [[nodiscard]] virtual size_t count() const;
    /// OWNED. The value of a key; null when there is none.
    [[nodiscard]] virtual Ref<const NSObject> copyValue(std::string_view key) const;
    /// OWNED. A snapshot of all entries.
    [[nodiscard]] virtual Entries copyEntries() const;

    /// The value of a key, BORROWED: valid while nobody changes the entry. Null when there is none.
    [[nodiscard]] virtual const NSObject* value(std::string_view key) const;
    [[nodiscard]] const NSObject* value(CFStringRef key) const { return value(key->view()); }
    /// The value as a type; null when it is of another type or missing.
    template <typename T, typename Key>
    [[nodiscard]] const T* value(const Key& key) const {
        return dynamic_cast<const T*>(value(key));
    }

    /// Same keys and pairwise equal values.
    [[nodiscard]] bool isEqual(const NSObject* other) const override;
    [[nodiscard]] size_t hash() const override;

protected:
    CFDictionary() = default;
    explicit CFDictionary(Entries entries) noexcept : m_entries(std::move(entries)) {}
    ~CFDictionary() override = default;

    Entries m_entries;
};

/// A dictionary that can change. It may be written by one thread while another reads it.
class FI_EXPORT NSMutableDictionary final : public CFDictionary {
public:
    /// OWNED. An empty dictionary.
    static Ref<NSMutableDictionary> create();
    /// OWNED. A dictionary with the same entries.
    static Ref<NSMutableDictionary> createCopy(const CFDictionary& other);

    [[nodiscard]] size_t count() const override;
    [[nodiscard]] Ref<const NSObject> copyValue(std::string_view key) const override;
    using CFDictionary::value;
    [[nodiscard]] const NSObject* value(std::string_view key) const override;
    [[nodiscard]] Entries copyEntries() const override;

    /// Sets or replaces; a null value removes the entry.
    void set(CFStringRef key, Ref<const NSObject> value);
    void set(std::string_view key, Ref<const NSObject> value);
    void remove(std::string_view key);
    void removeAll();

private:
    NSMutableDictionary() = default;
    explicit NSMutableDictionary(Entries entries) noexcept : CFDictionary(std::move(entries)) {}
    ~NSMutableDictionary() override = default;

    mutable std::mutex m_mutex;
};

using CFDictionaryRef = const CFDictionary*;
using NSDictionary = CFDictionary;

}  // namespace fi
