// SPDX-License-Identifier: Apache-2.0
// libtiff's handlers of one file; each says that the message is dealt with.
#include "PlatformKit/Codecs/TiffMessages.h"

#include <cstdarg>
#include <cstdio>

#include <tiffio.h>

namespace fi {

struct TiffMessages::Handlers {
    [[gnu::format(printf, 4, 0)]] static int error(TIFF*, void* user, const char*, const char* format,
                                                   va_list words) {
        TiffMessages& messages = *static_cast<TiffMessages*>(user);
        std::vsnprintf(messages.m_text, sizeof messages.m_text, format, words);
        messages.addError();
        return 1;
    }
    static int warning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
};

void TiffMessages::listenTo(TIFFOpenOptions* options) {
    TIFFOpenOptionsSetErrorHandlerExtR(options, Handlers::error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, Handlers::warning, nullptr);
}

}  // namespace fi
