// SPDX-License-Identifier: Apache-2.0
// The limits under the name that readers of foreign bytes include.
#pragma once

#include "PlatformKit/Limits.h"
