// SPDX-License-Identifier: Apache-2.0
// The two halves of the assertion service: a failed condition stops, a retired entry point reports.
#pragma once

namespace fi {

/// Hands a failed condition to the installed handler. By default it logs `message` and aborts, naming
/// the place.
void assertionFailed(const char* function, const char* file, unsigned line, const char* message);

/// Hands the text of a retired entry point to the installed handler. By default it is logged; the
/// caller goes on and returns its failure.
void reportRetired(const char* message);

}  // namespace fi
