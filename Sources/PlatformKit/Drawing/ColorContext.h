// SPDX-License-Identifier: Apache-2.0
// A context of the colour library's own: nothing global, no messages, bounded memory.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

namespace fi {

class ColorContext {
public:
    /// Nullptr when memory is short.
    [[nodiscard]] static std::unique_ptr<ColorContext> create();
    ~ColorContext();
    ColorContext(const ColorContext&) = delete;
    ColorContext& operator=(const ColorContext&) = delete;

    /// The library's cmsContext.
    [[nodiscard]] void* handle() const { return m_handle; }

    /// True once the system had no memory, false as long as at most the bound was reached.
    [[nodiscard]] bool ranOut() const { return m_ranOut.load(std::memory_order_relaxed); }

    /// Whether `bytes` more may be asked for. What was freed is not taken back, so this bounds the work
    /// that a profile can make as well.
    [[nodiscard]] bool take(size_t bytes);
    void noteShortage() { m_ranOut.store(true, std::memory_order_relaxed); }

private:
    ColorContext() = default;

    void* m_handle = nullptr;
    std::atomic<size_t> m_taken = 0;
    std::atomic<bool> m_ranOut = false;
};

}  // namespace fi
