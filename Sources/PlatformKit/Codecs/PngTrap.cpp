// SPDX-License-Identifier: Apache-2.0
// libpng's error and warning functions: longjmp for what is fatal, a note for a wrong checksum.
#include "PlatformKit/Codecs/PngTrap.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <png.h>

namespace fi {

struct PngTrap::State {
    png_structp reader;
    png_infop info;
    std::jmp_buf escape;
    char text[256];
    bool wrongChecksum;

    static State& of(png_structp reader) { return *static_cast<State*>(png_get_error_ptr(reader)); }
};

namespace {

// libpng tells its errors apart by nothing but their words.
bool speaksOf(const char* text, const char* what) {
    return std::strstr(text, what) != nullptr;
}

}  // namespace

PngTrap::PngTrap() : m_state(new State{}) {
    State& state = *m_state;
    const png_error_ptr leave = [](png_structp reader, png_const_charp words) {
        State& trap = State::of(reader);
        std::snprintf(trap.text, sizeof trap.text, "%s", words);
        std::longjmp(trap.escape, 1);
    };
    const png_error_ptr note = [](png_structp reader, png_const_charp words) {
        if (speaksOf(words, "CRC error")) State::of(reader).wrongChecksum = true;
    };
    // Neither call leaves by longjmp: without memory they answer null.
    state.reader = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, leave, note);
    if (state.reader == nullptr) return;
    state.info = png_create_info_struct(state.reader);
    if (state.info == nullptr) png_destroy_read_struct(&state.reader, nullptr, nullptr);
}

PngTrap::~PngTrap() {
    png_destroy_read_struct(&m_state->reader, &m_state->info, nullptr);
}

png_struct_def* PngTrap::reader() {
    return m_state->reader;
}

png_info_def* PngTrap::info() {
    return m_state->info;
}

bool PngTrap::runStep(void (*step)(void*), void* opaque) {
    if (setjmp(m_state->escape) != 0) return false;
    step(opaque);
    return true;
}

CodecFailure PngTrap::failure() const {
    const bool memory = speaksOf(m_state->text, "memory");
    return CodecFailure{memory ? CodecError::NoMemory : CodecError::Damaged,
                        std::string("The PNG data cannot be used: ") + m_state->text + "."};
}

bool PngTrap::sawWrongChecksum() const {
    return m_state->wrongChecksum;
}

}  // namespace fi
