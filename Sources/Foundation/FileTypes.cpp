// SPDX-License-Identifier: Apache-2.0
#include "Foundation/FileTypes.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string>

#include "PlatformKit/Text/PascalText.h"
#include "PlatformKit/Text/PathText.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

const ExtensionEntry kJPEGExtensions[3] = {"\x04.JPG", "\x05.JPEG", ""};
const ExtensionEntry kTIFFExtensions[3] = {"\x04.TIF", "\x05.TIFF", ""};
const ExtensionEntry kPICTExtensions[4] = {"\x05.PICT", "\x04.PIC", "\x04.PCT", ""};
const ExtensionEntry kPDFExtensions[2] = {"\x04.PDF", ""};

namespace {

bool endsWithAny(CFStringRef path, std::initializer_list<std::string_view> suffixes) {
    if (path == nullptr) return false;
    const std::string_view name = lastPathComponent(path->view());
    return std::any_of(suffixes.begin(), suffixes.end(), [name](std::string_view suffix) {
        return name.size() >= suffix.size() &&
               equalIgnoringCase(name.substr(name.size() - suffix.size()), suffix);
    });
}

}  // namespace

bool isExtensionIn(std::string_view extension, const ExtensionEntry* table) {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): behind its text an entry is zero
    for (; (*table)[0] != 0; ++table) {
        const std::string_view entry = pascalView(*table);
        if (isValidUTF8(entry) && equalIgnoringCase(entry, extension)) return true;
    }
    return false;
}

bool isPascalExtensionIn(const unsigned char* extension, const ExtensionEntry* table) {
    const std::string_view text = pascalView(extension);
    return isValidUTF8(text) && isExtensionIn(text, table);
}

CFStringRef fileTypeOfName(CFStringRef name) {
    if (name == nullptr) return kUTTypeImage;
    const size_t dot = name->view().rfind('.');
    if (dot == std::string_view::npos) return kUTTypeImage;
    const std::string_view extension = name->view().substr(dot);
    if (isExtensionIn(extension, kJPEGExtensions)) return kUTTypeJPEG;
    if (isExtensionIn(extension, kTIFFExtensions)) return kUTTypeTIFF;
    if (isExtensionIn(extension, kPICTExtensions)) return kUTTypePICT;
    if (isExtensionIn(extension, kPDFExtensions)) return kUTTypePDF;
    return kUTTypeImage;
}

CFStringRef fileTypeOfPascalName(const unsigned char* name) {
    return fileTypeOfName(CFString::createFromPascal(name).get());
}

CFStringRef fileTypeOfURL(CFURLRef url) {
    if (url == nullptr) return kUTTypeImage;
    const auto name = url->copyLastPathComponent();
    return name ? fileTypeOfName(name.get()) : nullptr;
}

OSType osTypeOfString(CFStringRef text) {
    OSType code = 0;
    if (text == nullptr || text->view().size() >= sizeof code) return kUnknownOSType;
    std::memcpy(&code, text->view().data(), text->view().size());
    return code;
}

bool isSupportedFile(CFStringRef path) {
    return endsWithAny(path, {".jpg", ".jpeg", ".tif", ".tiff", ".bmp", ".pct", ".pict", ".qal"});
}

bool isJpegFile(CFStringRef path) {
    return endsWithAny(path, {".jpg", ".jpeg"});
}

bool isTiffFile(CFStringRef path) {
    return endsWithAny(path, {".tif", ".tiff"});
}

bool isPictFile(CFStringRef path) {
    return endsWithAny(path, {".pct", ".pict"});
}

bool isBMPFile(CFStringRef path) {
    return endsWithAny(path, {".bmp"});
}

bool isPDFFile(CFStringRef path) {
    return path != nullptr && equalIgnoringCase(pathExtension(path->view()), "pdf");
}

bool isQALFile(CFStringRef path) {
    if (path == nullptr) return false;
    // Asked of every photo that is read, so without Unicode: no other characters become these when lowered.
    constexpr std::string_view kQal = "qal";
    const std::string_view extension = pathExtension(path->view());
    return std::equal(extension.begin(), extension.end(), kQal.begin(), kQal.end(),
                      [](char c, char small) { return c == small || c == small - 'a' + 'A'; });
}

}  // namespace fi
