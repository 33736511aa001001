// SPDX-License-Identifier: Apache-2.0
// The destination manager's three callbacks. They run inside libjpeg, so they hold only trivial data.
#include "PlatformKit/Codecs/JpegOutput.h"

#include <cstdio>

#include <jpeglib.h>

#include "PlatformKit/Codecs/JpegTrap.h"

namespace fi {

namespace {
constexpr size_t kPieceBytes = size_t{64} * 1024;
}

struct JpegOutput::State {
    jpeg_destination_mgr manager;  // first: libjpeg hands it back as the address of the whole
    const ByteSink* sink;
    JOCTET piece[kPieceBytes];

    static State& of(jpeg_compress_struct* info) { return *reinterpret_cast<State*>(info->dest); }

    void reset() {
        manager.next_output_byte = piece;
        manager.free_in_buffer = kPieceBytes;
    }

    bool put(size_t count) noexcept {
        try {
            return (*sink)(std::span<const uint8_t>(piece, count));
        } catch (...) {
            return false;
        }
    }

    static void send(jpeg_compress_struct* info, size_t count) {
        State& state = of(info);
        if (count > 0 && !state.put(count)) {
            JpegTrap::giveUp(reinterpret_cast<j_common_ptr>(info), CodecError::WriteFailed,
                             "The picture could not be written.");
        }
        state.reset();
    }
};

JpegOutput::JpegOutput(const ByteSink& sink) : m_state(new State) {
    m_state->sink = &sink;
    jpeg_destination_mgr& manager = m_state->manager;
    manager.init_destination = [](j_compress_ptr info) { State::of(info).reset(); };
    manager.empty_output_buffer = [](j_compress_ptr info) -> boolean {
        State::send(info, kPieceBytes);
        return TRUE;
    };
    manager.term_destination = [](j_compress_ptr info) {
        State::send(info, kPieceBytes - info->dest->free_in_buffer);
    };
}

JpegOutput::~JpegOutput() = default;

jpeg_destination_mgr* JpegOutput::manager() {
    return &m_state->manager;
}

}  // namespace fi
