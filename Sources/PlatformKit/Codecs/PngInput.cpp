// SPDX-License-Identifier: Apache-2.0
// The callback runs inside libpng, so it holds only trivial data.
#include "PlatformKit/Codecs/PngInput.h"

#include <algorithm>
#include <cstring>

#include <png.h>

namespace fi {

namespace {
constexpr size_t kPieceBytes = size_t{64} * 1024;
constexpr uint64_t kMaximumBytesBeforePixels = uint64_t{32} << 20;
}  // namespace

struct PngInput::State {
    ByteSource* source;
    uint64_t next;    // offset of the piece after this one
    uint64_t budget;  // bytes that may still be read
    size_t at;        // of the piece: what libpng has taken
    size_t count;     // bytes of the piece
    uint8_t piece[kPieceBytes];

    /// False when no byte is left.
    bool fill() {
        const size_t wanted = static_cast<size_t>(std::min<uint64_t>(budget, kPieceBytes));
        count = source->read(next, std::span<uint8_t>(piece, wanted));
        next += count;
        budget -= count;
        at = 0;
        return count > 0;
    }

    void take(png_structp reader, uint8_t* out, size_t wanted) {
        while (wanted > 0) {
            if (at == count && !fill()) png_error(reader, "the file ends too early");
            const size_t some = std::min(wanted, count - at);
            std::memcpy(out, piece + at, some);
            at += some;
            out += some;
            wanted -= some;
        }
    }
};

PngInput::PngInput(ByteSource& source) : m_state(new State) {
    m_state->source = &source;
    m_state->next = 0;
    m_state->budget = kMaximumBytesBeforePixels;
    m_state->at = 0;
    m_state->count = 0;
}

PngInput::~PngInput() = default;

void PngInput::feed(png_struct_def* reader) {
    png_set_read_fn(reader, m_state.get(), [](png_structp png, png_bytep out, size_t wanted) {
        static_cast<State*>(png_get_io_ptr(png))->take(png, out, wanted);
    });
}

uint64_t PngInput::remaining() const {
    const uint64_t taken = m_state->next - (m_state->count - m_state->at);
    return m_state->source->size() - std::min(taken, m_state->source->size());
}

void PngInput::expectPixels() {
    m_state->budget = UINT64_MAX;
}

}  // namespace fi
