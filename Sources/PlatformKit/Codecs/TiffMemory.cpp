// SPDX-License-Identifier: Apache-2.0
// The client procedures that grow a vector.
#include "PlatformKit/Codecs/TiffMemory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>

#include <tiffio.h>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/TiffMessages.h"

namespace fi {

struct TiffMemory::State {
    TIFF* tiff = nullptr;
    std::vector<uint8_t> bytes;
    uint64_t position = 0;
    TiffMessages messages;

    static State& of(thandle_t handle) { return *static_cast<State*>(handle); }

    size_t read(uint8_t* out, size_t wanted) {
        if (position >= bytes.size()) return 0;
        const size_t start = static_cast<size_t>(position);
        const size_t count = std::min(wanted, bytes.size() - start);
        std::memcpy(out, bytes.data() + start, count);
        position += count;
        return count;
    }

    bool write(const uint8_t* in, size_t count) noexcept {
        const auto end = checkedAdd<uint64_t>(position, count);
        if (!end || *end > bytes.max_size()) return false;
        try {
            if (*end > bytes.size()) bytes.resize(static_cast<size_t>(*end));
        } catch (const std::exception&) {
            return false;
        }
        std::memcpy(bytes.data() + position, in, count);
        position = *end;
        return true;
    }
};

namespace {
int closeNothing(thandle_t) {
    return 0;
}
}  // namespace

TiffMemory::TiffMemory() : m_state(new State) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (options == nullptr) return;
    m_state->messages.listenTo(options);
    const TIFFReadWriteProc read = [](thandle_t handle, void* out, tmsize_t wanted) -> tmsize_t {
        if (wanted <= 0) return 0;
        return static_cast<tmsize_t>(
            State::of(handle).read(static_cast<uint8_t*>(out), static_cast<size_t>(wanted)));
    };
    const TIFFReadWriteProc write = [](thandle_t handle, void* in, tmsize_t count) -> tmsize_t {
        if (count <= 0) return 0;
        State& state = State::of(handle);
        if (state.write(static_cast<const uint8_t*>(in), static_cast<size_t>(count))) return count;
        state.messages.addError();
        return 0;
    };
    const TIFFSeekProc seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
        State& state = State::of(handle);
        if (whence == SEEK_CUR) offset += state.position;
        if (whence == SEEK_END) offset += state.bytes.size();
        return state.position = offset;
    };
    const TIFFSizeProc size = [](thandle_t handle) -> toff_t { return State::of(handle).bytes.size(); };
    m_state->tiff = TIFFClientOpenExt("picture", "wm", m_state.get(), read, write, seek, closeNothing, size,
                                      nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
}

TiffMemory::~TiffMemory() {
    if (m_state->tiff != nullptr) TIFFClose(m_state->tiff);
}

tiff* TiffMemory::get() const {
    return m_state->tiff;
}

std::vector<uint8_t> TiffMemory::finish() {
    if (m_state->tiff != nullptr) TIFFClose(m_state->tiff);
    m_state->tiff = nullptr;
    if (m_state->messages.errors() > 0) return {};
    return std::move(m_state->bytes);
}

std::string TiffMemory::lastError() const {
    return m_state->messages.lastError();
}

}  // namespace fi
