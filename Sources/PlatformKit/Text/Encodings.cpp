// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Text/Encodings.h"

#include <errno.h>
#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <bit>
#include <memory>

#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

std::string nameOf(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::UTF8:
            return "UTF-8";
        case TextEncoding::ASCII:
            return "ASCII";
        case TextEncoding::UTF16:
            return std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
        case TextEncoding::ShiftJIS:
            return "CP932";
        case TextEncoding::SystemDefault:
            return systemCharacterSet();
    }
    return "UTF-8";
}

/// Closes the descriptor at the end of its scope.
class Converter {
public:
    Converter(const std::string& to, const std::string& from)
        : m_descriptor(iconv_open(to.c_str(), from.c_str())) {}
    ~Converter() {
        if (valid()) iconv_close(m_descriptor);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    [[nodiscard]] bool valid() const { return m_descriptor != reinterpret_cast<iconv_t>(-1); }

    [[nodiscard]] std::optional<std::string> convert(std::string_view bytes) {
        std::string out;
        char* in = const_cast<char*>(bytes.data());  // iconv reads only
        size_t left = bytes.size();
        while (left > 0) {
            char buffer[512];
            char* to = buffer;
            size_t room = sizeof buffer;
            const size_t result = iconv(m_descriptor, &in, &left, &to, &room);
            out.append(buffer, sizeof buffer - room);
            if (result == static_cast<size_t>(-1) && errno != E2BIG) return std::nullopt;
        }
        return out;
    }

private:
    iconv_t m_descriptor;
};

std::optional<std::string> converted(std::string_view bytes, const std::string& to,
                                     const std::string& from) {
    Converter converter(to, from);
    if (!converter.valid()) return std::nullopt;
    return converter.convert(bytes);
}

}  // namespace

std::string systemCharacterSet() {
    const std::unique_ptr<std::remove_pointer_t<locale_t>, decltype(&freelocale)> environment(
        newlocale(LC_CTYPE_MASK, "", nullptr), &freelocale);
    if (!environment) return "UTF-8";
    const std::string name = nl_langinfo_l(CODESET, environment.get());
    // The "C" locale names no character set of its own; names on today's systems are UTF-8.
    return name.empty() || name == "ANSI_X3.4-1968" ? "UTF-8" : name;
}

std::optional<std::string> toUTF8(std::string_view bytes, TextEncoding encoding) {
    if (encoding == TextEncoding::ASCII && !isASCII(bytes)) return std::nullopt;
    if (encoding == TextEncoding::UTF8 && !isValidUTF8(bytes)) return std::nullopt;
    if (encoding == TextEncoding::ASCII || encoding == TextEncoding::UTF8) return std::string(bytes);
    return converted(bytes, "UTF-8", nameOf(encoding));
}

std::optional<std::string> fromUTF8(std::string_view text, TextEncoding encoding) {
    return converted(text, nameOf(encoding), "UTF-8");
}

}  // namespace fi
