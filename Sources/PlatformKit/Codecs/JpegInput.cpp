// SPDX-License-Identifier: Apache-2.0
// The source manager's five callbacks. They run inside libjpeg, so they hold only trivial data.
#include "PlatformKit/Codecs/JpegInput.h"

#include <cstdio>

#include <jpeglib.h>

namespace fi {

namespace {
constexpr size_t kPieceBytes = size_t{64} * 1024;
constexpr uint64_t kMaximumBytesBeforePixels = uint64_t{32} << 20;
constexpr JOCTET kEndOfImage[] = {0xFF, 0xD9};
}  // namespace

struct JpegInput::State {
    jpeg_source_mgr manager;  // first: libjpeg hands it back as the address of the whole
    ByteSource* source;
    uint64_t next;    // offset of the piece after this one
    uint64_t budget;  // bytes that may still be read
    bool ranDry;
    JOCTET piece[kPieceBytes];

    static State& of(jpeg_decompress_struct* info) { return *reinterpret_cast<State*>(info->src); }

    void fill() {
        const size_t wanted = budget < kPieceBytes ? static_cast<size_t>(budget) : kPieceBytes;
        const size_t count = source->read(next, std::span<uint8_t>(piece, wanted));
        next += count;
        budget -= count;
        if (count == 0) ranDry = true;
        manager.next_input_byte = count > 0 ? piece : kEndOfImage;
        manager.bytes_in_buffer = count > 0 ? count : sizeof kEndOfImage;
    }

    void skip(uint64_t count) {
        if (count <= manager.bytes_in_buffer) {
            manager.next_input_byte += count;
            manager.bytes_in_buffer -= static_cast<size_t>(count);
            return;
        }
        // Cannot wrap: `next` lies in the file, and one skip is at most a segment's 65,533 bytes.
        next += count - manager.bytes_in_buffer;
        manager.bytes_in_buffer = 0;
    }
};

JpegInput::JpegInput(ByteSource& source) : m_state(new State) {
    m_state->source = &source;
    m_state->next = 0;
    m_state->budget = kMaximumBytesBeforePixels;
    m_state->ranDry = false;
    jpeg_source_mgr& manager = m_state->manager;
    manager.next_input_byte = nullptr;
    manager.bytes_in_buffer = 0;
    manager.init_source = [](j_decompress_ptr) {};
    manager.fill_input_buffer = [](j_decompress_ptr info) -> boolean {
        State::of(info).fill();
        return TRUE;
    };
    manager.skip_input_data = [](j_decompress_ptr info, long count) {
        if (count > 0) State::of(info).skip(static_cast<uint64_t>(count));
    };
    manager.resync_to_restart = jpeg_resync_to_restart;
    manager.term_source = [](j_decompress_ptr) {};
}

JpegInput::~JpegInput() = default;

jpeg_source_mgr* JpegInput::manager() {
    return &m_state->manager;
}

bool JpegInput::ranDry() const {
    return m_state->ranDry;
}

bool JpegInput::atEnd() const {
    return m_state->manager.bytes_in_buffer == 0 && m_state->next >= m_state->source->size();
}

void JpegInput::expectPixels() {
    m_state->budget = UINT64_MAX;
}

}  // namespace fi
