// SPDX-License-Identifier: Apache-2.0
// Catches the point where libjpeg gives up, keeps its words, and lets none of them reach stderr.
#pragma once

#include <memory>

#include "PlatformKit/Codecs/CodecTypes.h"

struct jpeg_error_mgr;
struct jpeg_common_struct;

namespace fi {

/// libjpeg leaves a failed call by longjmp. A step that runs in the trap must therefore hold only
/// trivial data, and so must every callback that it reaches.
class JpegTrap {
public:
    JpegTrap();
    ~JpegTrap();
    JpegTrap(const JpegTrap&) = delete;
    JpegTrap& operator=(const JpegTrap&) = delete;

    /// What `err` of a libjpeg structure is set to. Lives as long as the trap.
    [[nodiscard]] jpeg_error_mgr* manager();

    /// Calls `Step(state)`; false when libjpeg or giveUp() left it half way.
    template <auto Step, typename State>
    [[nodiscard]] bool run(State& state) {
        return runStep([](void* opaque) { Step(*static_cast<State*>(opaque)); }, &state);
    }

    /// Leaves the running step from a callback of ours. `text` is a literal.
    [[noreturn]] static void giveUp(jpeg_common_struct* info, CodecError code, const char* text);

    /// Why the last step was left.
    [[nodiscard]] CodecFailure failure() const;

    /// True when libjpeg met picture data that it had to guess.
    [[nodiscard]] bool guessed() const;

private:
    struct State;
    [[nodiscard]] bool runStep(void (*step)(void*), void* opaque);

    std::unique_ptr<State> m_state;
};

}  // namespace fi
