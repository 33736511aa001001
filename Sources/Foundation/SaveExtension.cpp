// SPDX-License-Identifier: Apache-2.0
#include "Foundation/SaveExtension.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "Foundation/FileTypes.h"
#include "Foundation/ImageFacts.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

constexpr int32_t kUnknownDepth = 32;
constexpr int32_t kDeepestLineArt = 2;

struct SavedType {
    CFStringRef const* code;
    std::string_view extension;
};

// A generic image is saved as PICT.
constexpr SavedType kSavedTypes[] = {
    {&kUTTypeJPEG, ".JPG"}, {&kUTTypeTIFF, ".TIF"}, {&kUTTypeImage, ".PCT"}, {&kUTTypePDF, ".PDF"}};

bool sameCode(CFStringRef a, CFStringRef b) {
    return a != nullptr && b != nullptr && equalIgnoringCase(a->view(), b->view());
}

CFStringRef chooseCode(const CFStringRef (&accepted)[3], CFStringRef fileType, int32_t depth) {
    if (depth > kDeepestLineArt || fileType != kUTTypeJPEG) {
        const auto* same = std::find(std::begin(accepted), std::end(accepted), fileType);
        if (fileType != nullptr && same != std::end(accepted)) return *same;
    }
    if (depth <= kDeepestLineArt) {
        const auto* jpeg = std::find_if(std::begin(accepted), std::end(accepted),
                                        [](CFStringRef code) { return sameCode(code, kUTTypeJPEG); });
        if (jpeg != std::end(accepted)) return *jpeg;
    }
    return accepted[0];
}

/// The part of the name from its last dot on. Without a dot the scan ends on the length byte, so that the
/// output is the length byte and the name, and its own length is one more, modulo 256.
void keepOwnExtension(const PascalBuffer& name, PascalBuffer& extension) {
    const size_t length = name[0];
    size_t dot = length;
    while (dot > 0 && name[dot] != '.')
        --dot;
    const size_t count = length - dot + 1;
    extension[0] = static_cast<unsigned char>(count);
    std::copy_n(name.begin() + static_cast<ptrdiff_t>(dot), std::min(count, extension.size() - 1),
                extension.begin() + 1);
}

}  // namespace

void chooseSaveExtension(CFURLRef url, const CFStringRef (&accepted)[3], PascalBuffer& extension) {
    extension.fill(0);
    PascalBuffer name{};
    CFStringRef fileType = nullptr;
    const auto component = url != nullptr ? url->copyLastPathComponent() : nullptr;
    if (component) {
        (void)storePascal(component->view(), name);
        fileType = fileTypeOfName(component.get());
    }
    int32_t depth = kUnknownDepth;
    (void)imageDepthAt(url, &depth);

    const CFStringRef chosen = chooseCode(accepted, fileType, depth);
    for (const SavedType& saved : kSavedTypes) {
        if (sameCode(chosen, *saved.code)) {
            (void)storePascal(saved.extension, extension);
            return;
        }
    }
    keepOwnExtension(name, extension);
}

}  // namespace fi
