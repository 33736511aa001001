// SPDX-License-Identifier: Apache-2.0
#include "Signals.h"

#include <signal.h>
#include <unistd.h>

#include <array>

namespace fi {

namespace {

constexpr std::array kStopSignals = {SIGINT, SIGTERM, SIGHUP};
constexpr int kShellBase = 128;  // how shells number deaths by signal

volatile sig_atomic_t receivedSignal = 0;

void remember(int signal) {
    receivedSignal = signal;
}

}  // namespace

void watchSignals() {
    for (const int signal : kStopSignals) {
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
        struct sigaction action {};
        action.sa_handler = remember;
        action.sa_flags = SA_RESTART;
        sigemptyset(&action.sa_mask);
        sigaction(signal, &action, nullptr);
    }
}

int stopSignal() {
    return receivedSignal;
}

void dieOfSignal(int signal) {
    ::signal(signal, SIG_DFL);
    raise(signal);
    _exit(kShellBase + signal);
}

}  // namespace fi
