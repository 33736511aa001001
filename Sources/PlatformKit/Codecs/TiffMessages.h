// SPDX-License-Identifier: Apache-2.0
// Keeps what libtiff says about one file, so that none of it reaches stderr.
#pragma once

#include <cstdint>
#include <string>

struct TIFFOpenOptions;

namespace fi {

class TiffMessages {
public:
    TiffMessages() = default;
    TiffMessages(const TiffMessages&) = delete;
    TiffMessages& operator=(const TiffMessages&) = delete;

    /// A file that is opened with the options speaks to this object, which must outlive it.
    void listenTo(TIFFOpenOptions* options);

    /// For errors that libtiff does not tell itself.
    void addError() { ++m_errors; }

    /// Errors so far; warnings are dropped.
    [[nodiscard]] uint32_t errors() const { return m_errors; }
    /// The words of the last error; empty when there was none.
    [[nodiscard]] std::string lastError() const { return m_text; }

private:
    struct Handlers;

    uint32_t m_errors = 0;
    char m_text[256] = "";
};

}  // namespace fi
