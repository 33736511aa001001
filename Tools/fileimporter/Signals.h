// SPDX-License-Identifier: Apache-2.0
// Being asked to stop (Ctrl-C, kill, a closed terminal): a command that has something to clean up ends its
// work at the next photo, and the process then dies of the signal as its parent expects.
#pragma once

namespace fi {

/// From now on such a signal is only remembered. One that the parent had ignored stays ignored.
void watchSignals();

/// The signal that asked to stop; 0 while none has.
[[nodiscard]] int stopSignal();

/// Ends the process by that signal, after whatever had to be cleaned up.
[[noreturn]] void dieOfSignal(int signal);

}  // namespace fi
