// SPDX-License-Identifier: Apache-2.0
// The client procedures that libtiff calls.
#include "PlatformKit/Codecs/TiffHandle.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <tiffio.h>

#include "PlatformKit/Codecs/TiffMessages.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {
constexpr uint64_t kMaximumFill = uint64_t{64} << 20;
}

struct TiffHandle::State {
    ByteSource* source = nullptr;
    TIFF* tiff = nullptr;
    uint64_t position = 0;
    uint64_t filledTo = 0;    // where the last fill ended: a read that goes on there is filled as well
    uint64_t fillBudget = 0;  // zeros that may still be given out
    TiffMessages messages;

    static State& of(thandle_t handle) { return *static_cast<State*>(handle); }

    size_t read(uint8_t* out, size_t wanted) {
        size_t count = source->read(position, std::span<uint8_t>(out, wanted));
        const bool begun = count > 0 || (filledTo != 0 && position == filledTo);
        if (count < wanted && begun && wanted - count <= fillBudget) {
            std::memset(out + count, 0, wanted - count);
            fillBudget -= wanted - count;
            count = wanted;
            filledTo = position + count;
            messages.addError();
        }
        position += count;
        return count;
    }
};

namespace {

tmsize_t writeNothing(thandle_t, void*, tmsize_t) {
    return 0;
}

int closeNothing(thandle_t) {
    return 0;
}

}  // namespace

TiffHandle::TiffHandle(ByteSource& source, uint64_t directory) : m_state(new State) {
    m_state->source = &source;
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (options == nullptr) return;
    const uint64_t limit = std::min<uint64_t>(decodeLimits().maximumBytes, INT64_MAX);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(limit));
    m_state->messages.listenTo(options);
    const TIFFReadWriteProc read = [](thandle_t handle, void* out, tmsize_t wanted) -> tmsize_t {
        if (wanted <= 0) return 0;
        return static_cast<tmsize_t>(
            State::of(handle).read(static_cast<uint8_t*>(out), static_cast<size_t>(wanted)));
    };
    const TIFFSeekProc seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
        State& state = State::of(handle);
        if (whence == SEEK_CUR) offset += state.position;
        if (whence == SEEK_END) offset += state.source->size();
        return state.position = offset;
    };
    const TIFFSizeProc size = [](thandle_t handle) -> toff_t { return State::of(handle).source->size(); };
    // "m": never map. "h": the head only, since the page that is wanted may not be the first.
    m_state->tiff = TIFFClientOpenExt("picture", "rmh", m_state.get(), read, writeNothing, seek,
                                      closeNothing, size, nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
    if (m_state->tiff != nullptr && TIFFSetSubDirectory(m_state->tiff, directory) == 0) {
        TIFFClose(m_state->tiff);
        m_state->tiff = nullptr;
    }
}

TiffHandle::~TiffHandle() {
    if (m_state->tiff != nullptr) TIFFClose(m_state->tiff);
}

tiff* TiffHandle::get() const {
    return m_state->tiff;
}

uint64_t TiffHandle::fileBytes() const {
    return m_state->source->size();
}

void TiffHandle::fillUpCutData() {
    m_state->fillBudget = kMaximumFill;
}

uint32_t TiffHandle::errors() const {
    return m_state->messages.errors();
}

std::string TiffHandle::lastError() const {
    return m_state->messages.lastError();
}

}  // namespace fi
