// SPDX-License-Identifier: Apache-2.0
// Property lists (in XML) as kit objects.
#pragma once

#include "PlatformKit/Ref.h"
#include "PlatformKit/URL.h"

namespace fi {

/// OWNED. The root object of a property list file: arrays, dictionaries, strings, numbers and
/// data; elements of other kinds are left out. Null when the file cannot be read, is larger than 64 MiB,
/// nests deeper than 64 levels or is no XML property list. Any thread.
FI_EXPORT Ref<const NSObject> readPropertyList(CFURLRef file);

}  // namespace fi
