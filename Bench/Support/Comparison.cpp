// SPDX-License-Identifier: Apache-2.0
#include "Support/Comparison.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace fi::bench {

namespace {

double processorMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double timeOf(const std::function<void()>& work) {
    const double start = processorMilliseconds();
    work();
    return processorMilliseconds() - start;
}

double median(std::vector<double>& times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

}  // namespace

Size sizeFromArguments(int argc, char** argv) {
    return argc > 1 && std::strcmp(argv[1], "--tiny") == 0 ? Size::Tiny : Size::Full;
}

void printRow(const Comparison& comparison) {
    comparison.ours();
    comparison.reference();
    std::vector<double> ours;
    std::vector<double> reference;
    for (int round = 0; round < comparison.rounds; ++round) {
        ours.push_back(timeOf(comparison.ours));
        reference.push_back(timeOf(comparison.reference));
    }
    const double oursMedian = median(ours);
    const double referenceMedian = median(reference);
    std::printf("%-24.*s  %6.2f  %9.3f  %9.3f  %6.2f\n", static_cast<int>(comparison.name.size()),
                comparison.name.data(), oursMedian / referenceMedian, oursMedian, referenceMedian,
                comparison.bound);
}

}  // namespace fi::bench
