// SPDX-License-Identifier: Apache-2.0
// Marks what the shared library offers; everything else stays hidden.
#pragma once

#define FI_EXPORT __attribute__((visibility("default")))
