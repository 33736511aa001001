// SPDX-License-Identifier: Apache-2.0
// libjpeg's error manager: longjmp for what is fatal, a note for what is not.
#include "PlatformKit/Codecs/JpegTrap.h"

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>
// After jpeglib.h, which it builds on.
#include <jerror.h>

namespace fi {

struct JpegTrap::State {
    jpeg_error_mgr manager;  // first: libjpeg hands it back as the address of the whole
    std::jmp_buf escape;
    CodecError code;
    char text[JMSG_LENGTH_MAX + 64];
    bool guessed;

    static State& of(jpeg_common_struct* info) { return *reinterpret_cast<State*>(info->err); }
};

namespace {

CodecError meaning(int messageCode) {
    switch (messageCode) {
        case JERR_OUT_OF_MEMORY:
            return CodecError::NoMemory;
        case JERR_NO_SOI:
            return CodecError::NotThisFormat;
        case JERR_NO_BACKING_STORE:
        case JERR_IMAGE_TOO_BIG:
        case JERR_WIDTH_OVERFLOW:
            return CodecError::LimitExceeded;
        case JERR_SOF_UNSUPPORTED:
        case JERR_BAD_PRECISION:
        case JERR_COMPONENT_COUNT:
        case JERR_CONVERSION_NOTIMPL:
        case JERR_CCIR601_NOTIMPL:
        case JERR_FRACT_SAMPLE_NOTIMPL:
            return CodecError::Unsupported;
        default:
            return CodecError::Damaged;
    }
}

/// Remarks that leave every pixel as it was meant. Stray bytes between two markers are padding that
/// several cameras write.
bool isHarmless(int messageCode) {
    return messageCode == JWRN_ADOBE_XFORM || messageCode == JWRN_JFIF_MAJOR ||
           messageCode == JWRN_EXTRANEOUS_DATA || messageCode == JWRN_TOO_MUCH_DATA;
}

}  // namespace

JpegTrap::JpegTrap() : m_state(new State{}) {
    jpeg_error_mgr& manager = m_state->manager;
    jpeg_std_error(&manager);
    manager.error_exit = [](j_common_ptr info) {
        State& state = State::of(info);
        state.code = meaning(info->err->msg_code);
        char words[JMSG_LENGTH_MAX];
        info->err->format_message(info, words);
        std::snprintf(state.text, sizeof state.text, "The JPEG data cannot be used: %s.", words);
        std::longjmp(state.escape, 1);
    };
    manager.emit_message = [](j_common_ptr info, int level) {
        if (level >= 0) return;
        ++info->err->num_warnings;
        if (!isHarmless(info->err->msg_code)) State::of(info).guessed = true;
    };
    manager.output_message = [](j_common_ptr) {};
}

JpegTrap::~JpegTrap() = default;

jpeg_error_mgr* JpegTrap::manager() {
    return &m_state->manager;
}

bool JpegTrap::runStep(void (*step)(void*), void* opaque) {
    if (setjmp(m_state->escape) != 0) return false;
    step(opaque);
    return true;
}

void JpegTrap::giveUp(jpeg_common_struct* info, CodecError code, const char* text) {
    State& state = State::of(info);
    state.code = code;
    std::snprintf(state.text, sizeof state.text, "%s", text);
    std::longjmp(state.escape, 1);
}

CodecFailure JpegTrap::failure() const {
    return CodecFailure{m_state->code, m_state->text};
}

bool JpegTrap::guessed() const {
    return m_state->guessed;
}

}  // namespace fi
