// SPDX-License-Identifier: Apache-2.0
// What the tool tells the shell at its end.
#pragma once

namespace fi {

enum class ExitStatus : int {
    AllDone = 0,
    SomeFailed = 1,    ///< each named on standard error with its reason; the rest is done
    WrongUsage = 2,    ///< nothing was begun
    NothingFound = 3,  ///< no card, no photo
};

}  // namespace fi
