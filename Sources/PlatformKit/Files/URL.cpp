// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/URL.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "PlatformKit/Files/URLText.h"
#include "PlatformKit/Text/PathText.h"

namespace fi {

namespace {

std::string absolutePath(std::string_view path) {
    if (path.front() == '/') return std::string(path);
    char* folder = getcwd(nullptr, 0);
    if (folder == nullptr) return {};
    std::string result = joinedPath(folder, path);
    std::free(folder);
    return result;
}

bool isSchemeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '-' || c == '.';
}

bool hasScheme(std::string_view text) {
    const size_t colon = text.find(':');
    return colon != std::string_view::npos && colon > 0 &&
           std::all_of(text.begin(), text.begin() + static_cast<ptrdiff_t>(colon), isSchemeCharacter);
}

}  // namespace

Ref<const CFURL> CFURL::createFromPath(std::string_view path) {
    if (path.empty() || path.find('\0') != std::string_view::npos) return nullptr;
    const std::string absolute = absolutePath(path);
    if (absolute.empty()) return nullptr;
    const std::string_view item = withoutTrailingSlashes(absolute);
    return adopt(new CFURL(CFString::create("file://" + percentEncodedPath(item)), CFString::create(item)));
}

Ref<const CFURL> CFURL::createFromString(std::string_view text) {
    if (!hasScheme(text)) return nullptr;
    auto path = pathOfFileURLText(text);
    return adopt(new CFURL(CFString::create(text),
                           path ? CFString::create(withoutTrailingSlashes(*path)) : nullptr));
}

Ref<const CFString> CFURL::copyLastPathComponent() const {
    return m_path ? CFString::create(lastPathComponent(m_path->view())) : nullptr;
}

Ref<const CFString> CFURL::copyPathExtension() const {
    const std::string_view extension = m_path ? pathExtension(m_path->view()) : std::string_view();
    return extension.empty() ? nullptr : CFString::create(extension);
}

Ref<const CFURL> CFURL::createAppending(std::string_view component) const {
    return m_path ? createFromPath(joinedPath(m_path->view(), component)) : nullptr;
}

Ref<const CFURL> CFURL::createWithoutLastPathComponent() const {
    return m_path ? createFromPath(withoutLastPathComponent(m_path->view())) : nullptr;
}

bool CFURL::fileSystemRepresentation(char* buffer, size_t size) const noexcept {
    if (!m_path || m_path->view().size() >= size) return false;
    std::memcpy(buffer, m_path->c_str(), m_path->view().size() + 1);
    return true;
}

bool CFURL::isEqual(const NSObject* other) const {
    const auto* url = dynamic_cast<const CFURL*>(other);
    return url != nullptr && url->m_string->view() == m_string->view();
}

size_t CFURL::hash() const {
    return m_string->hash();
}

}  // namespace fi
