// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/URLText.h"

#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

constexpr std::string_view kFileScheme = "file:";
constexpr std::string_view kUnreserved = "-._~/!$&'()*+,=:@";
constexpr char kHexDigits[] = "0123456789ABCDEF";

bool needsNoEncoding(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kUnreserved.find(c) != std::string_view::npos;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// A "%" that two hexadecimal digits do not follow stands for itself, as in names typed by hand.
std::string percentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexValue(text[i + 1]) : -1;
        const int low = high >= 0 ? hexValue(text[i + 2]) : -1;
        if (low < 0) {
            out.push_back(text[i]);
            continue;
        }
        out.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return out;
}

}  // namespace

bool isFileURLText(std::string_view text) {
    return text.size() >= kFileScheme.size() &&
           equalIgnoringCase(text.substr(0, kFileScheme.size()), kFileScheme);
}

std::optional<std::string> pathOfFileURLText(std::string_view text) {
    if (!isFileURLText(text)) return std::nullopt;
    text.remove_prefix(kFileScheme.size());
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const std::string_view host = text.substr(0, text.find('/'));
        if (!host.empty() && !equalIgnoringCase(host, "localhost")) return std::nullopt;
        text.remove_prefix(host.size());
    }
    if (text.empty() || text.front() != '/') return std::nullopt;
    std::string path = percentDecoded(text);
    if (path.find('\0') != std::string::npos) return std::nullopt;
    return path;
}

std::string percentEncodedPath(std::string_view path) {
    std::string out;
    out.reserve(path.size());
    for (const char c : path) {
        if (needsNoEncoding(c)) {
            out.push_back(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        out.push_back('%');
        out.push_back(kHexDigits[byte >> 4U]);
        out.push_back(kHexDigits[byte & 15U]);
    }
    return out;
}

}  // namespace fi
