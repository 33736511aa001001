// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Selector.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace fi {

SEL internSelector(std::string_view name, SelectorInfo::Invoker invoke) {
    using Key = std::pair<SelectorInfo::Invoker, std::string>;
    struct Table {
        std::mutex mutex;
        std::map<Key, SelectorInfo> selectors;
    };
    // Never destroyed: selectors are compared by address until the last thread ends.
    static Table& table = *new Table;
    const std::lock_guard lock(table.mutex);
    const auto [entry, added] = table.selectors.try_emplace(Key(invoke, name));
    if (added) entry->second = {entry->first.second.c_str(), invoke};
    return &entry->second;
}

id performSelector(NSObject* target, SEL selector, NSObject* argument) {
    if (target == nullptr || selector == nullptr) return nullptr;
    return selector->invoke(target, argument);
}

}  // namespace fi
