// SPDX-License-Identifier: Apache-2.0
// Turns the value of a tag into an object for a dictionary.
#pragma once

#include "PlatformKit/Codecs/TiffField.h"
#include "PlatformKit/Imaging/MetadataTags.h"
#include "PlatformKit/Object.h"
#include "PlatformKit/Ref.h"

namespace fi {

/// OWNED. Null when the field holds nothing that fits the kind.
[[nodiscard]] Ref<const NSObject> metadataValue(const TiffField& field, MetadataKind kind);

}  // namespace fi
