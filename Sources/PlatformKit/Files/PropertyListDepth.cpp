// SPDX-License-Identifier: Apache-2.0
// A strict scan over the tags of a property list: what looks like a tag in a comment must not count.
#include "PlatformKit/Files/PropertyListDepth.h"

#include <optional>

namespace fi {

namespace {

constexpr size_t kNowhere = std::string_view::npos;

/// Behind the `end` that follows `start`.
size_t behind(std::string_view xml, std::string_view end, size_t start) {
    const size_t found = xml.find(end, start);
    return found == kNowhere ? kNowhere : found + end.size();
}

/// Behind the first `end` outside of double quotes; nowhere when a "<" stands before it.
size_t behindUnquoted(std::string_view xml, std::string_view end, size_t start) {
    bool quoted = false;
    for (size_t at = start; at < xml.size() && xml[at] != '<'; ++at) {
        if (xml[at] == '"') quoted = !quoted;
        if (!quoted && xml.substr(at).starts_with(end)) return at + end.size();
    }
    return kNowhere;
}

/// Behind a comment, a section of plain text, an instruction or a plain document type that begins at
/// `at`; nothing when none begins there.
std::optional<size_t> behindSpecial(std::string_view xml, size_t at) {
    const std::string_view text = xml.substr(at);
    if (text.starts_with("<!--")) return behind(xml, "-->", at + 4);
    if (text.starts_with("<![CDATA[")) return behind(xml, "]]>", at + 9);
    if (text.starts_with("<?")) return behindUnquoted(xml, "?>", at + 2);
    if (!text.starts_with("<!")) return std::nullopt;
    const size_t end = behindUnquoted(xml, ">", at + 2);
    return xml.substr(at, end - at).find('[') == kNowhere ? end : kNowhere;
}

/// +1, -1 or 0 for the tag with this inside.
int levelsOpened(std::string_view tag) {
    const std::string_view name = tag.substr(0, tag.find_first_of(" \r\n\t"));
    if (name == "/dict" || name == "/array") return -1;
    const bool container = name == "dict" || name == "array";
    return container && !tag.ends_with('/') ? 1 : 0;
}

}  // namespace

bool nestsAtMost(std::string_view xml, int levels) {
    int depth = 0;
    for (size_t at = xml.find('<'); at != kNowhere; at = xml.find('<', at)) {
        const auto special = behindSpecial(xml, at);
        const size_t end = special ? *special : behindUnquoted(xml, ">", at + 1);
        if (end == kNowhere) return false;
        if (!special) depth += levelsOpened(xml.substr(at + 1, end - at - 2));
        if (depth > levels || depth < 0) return false;
        at = end;
    }
    return true;
}

}  // namespace fi
