// SPDX-License-Identifier: Apache-2.0
// Makes the dictionary of a picture's properties out of its headers.
#pragma once

#include "PlatformKit/Dictionary.h"
#include "PlatformKit/ImageFailure.h"
#include "PlatformKit/Imaging/ImageReader.h"

namespace fi {

/// OWNED. Of a picture that the file has; null when its header cannot be read.
Ref<const CFDictionary> buildProperties(ImageReader& reader, uint32_t index, ImageFailure* failure);

}  // namespace fi
