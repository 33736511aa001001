// SPDX-License-Identifier: Apache-2.0
// libpng's structures for reading, and a catch for the point where it gives up; its words go nowhere else.
#pragma once

#include <memory>

#include "PlatformKit/Codecs/CodecTypes.h"

struct png_info_def;
struct png_struct_def;

namespace fi {

/// libpng leaves a failed call by longjmp. A step that runs in the trap must therefore hold only trivial
/// data, and so must every callback that it reaches.
class PngTrap {
public:
    PngTrap();
    ~PngTrap();
    PngTrap(const PngTrap&) = delete;
    PngTrap& operator=(const PngTrap&) = delete;

    /// BORROWED. Null without memory, and then info() is of no use.
    [[nodiscard]] png_struct_def* reader();
    [[nodiscard]] png_info_def* info();

    /// Calls `Step(state)`; false when libpng left it half way.
    template <auto Step, typename State>
    [[nodiscard]] bool run(State& state) {
        return runStep([](void* opaque) { Step(*static_cast<State*>(opaque)); }, &state);
    }

    /// Why the last step was left.
    [[nodiscard]] CodecFailure failure() const;

    /// True when a checksum did not fit its data.
    [[nodiscard]] bool sawWrongChecksum() const;

private:
    struct State;
    [[nodiscard]] bool runStep(void (*step)(void*), void* opaque);

    std::unique_ptr<State> m_state;
};

}  // namespace fi
