// SPDX-License-Identifier: Apache-2.0
// Operations as values: the text of a selector and how to perform it.
#pragma once

#include <string_view>
#include <type_traits>

#include "PlatformKit/Object.h"

namespace fi {

/// An interned pair of text and invoker; one word, compared by address, valid for ever.
struct SelectorInfo {
    using Invoker = id (*)(NSObject* target, NSObject* argument);
    const char* name;
    Invoker invoke;
};
using SEL = const SelectorInfo*;

/// The one selector with this text and invoker. Any thread.
FI_EXPORT SEL internSelector(std::string_view name, SelectorInfo::Invoker invoke);

/// Performs a selector on a target with an argument, at once and on the calling thread. A null target or
/// selector does nothing; so does a target of a class without the operation. Returns what the operation
/// returned, or null.
FI_EXPORT id performSelector(NSObject* target, SEL selector, NSObject* argument);

namespace detail {

template <typename Method>
struct MethodTraits;
template <typename R, typename C>
struct MethodTraits<R (C::*)()> {
    using Class = C;
    using Argument = void;
};
template <typename R, typename C, typename A>
struct MethodTraits<R (C::*)(A*)> {
    using Class = C;
    using Argument = A;
};

template <auto Method>
id invokeMethod(NSObject* target, [[maybe_unused]] NSObject* argument) {
    using Traits = MethodTraits<decltype(Method)>;
    auto* receiver = dynamic_cast<typename Traits::Class*>(target);
    if (receiver == nullptr) return nullptr;
    const auto call = [&] {
        if constexpr (std::is_void_v<typename Traits::Argument>) {
            return (receiver->*Method)();
        } else {
            return (receiver->*Method)(dynamic_cast<typename Traits::Argument*>(argument));
        }
    };
    if constexpr (std::is_convertible_v<decltype(call()), id>) {
        return call();
    } else {
        call();
        return nullptr;
    }
}

}  // namespace detail

/// The selector of a member function with no argument or one object: `selector<&View::ready>("ready:")`.
template <auto Method>
SEL selector(std::string_view name) {
    return internSelector(name, &detail::invokeMethod<Method>);
}

}  // namespace fi
