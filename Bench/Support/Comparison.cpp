// SPDX-License-Identifier: Apache-2.0
#include "Support/Comparison.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace fi::bench {

namespace {

double milliseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

/// Of this process and of the programs that it has run and waited for.
double processorMilliseconds() {
    double sum = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        sum += milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
    }
    return sum;
}

double elapsedMilliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

using Clock = double (*)();

double timeOf(Clock clock, const std::function<void()>& before, const std::function<void()>& work) {
    if (before) before();
    const double start = clock();
    work();
    return clock() - start;
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

bool printRow(const Comparison& comparison) {
    const Clock clock = comparison.elapsed ? &elapsedMilliseconds : &processorMilliseconds;
    (void)timeOf(clock, comparison.beforeOurs, comparison.ours);
    (void)timeOf(clock, comparison.beforeReference, comparison.reference);
    std::vector<double> ours;
    std::vector<double> reference;
    for (int round = 0; round < comparison.rounds; ++round) {
        ours.push_back(timeOf(clock, comparison.beforeOurs, comparison.ours));
        reference.push_back(timeOf(clock, comparison.beforeReference, comparison.reference));
    }
    const double oursMedian = median(ours);
    const double referenceMedian = median(reference);
    std::printf("%-28.*s  %6.2f  %9.3f  %9.3f  %6.2f\n", static_cast<int>(comparison.name.size()),
                comparison.name.data(), oursMedian / referenceMedian, oursMedian, referenceMedian,
                comparison.bound);
    return oursMedian <= referenceMedian * comparison.bound;
}

bool printMemoryRow(std::string_view name, double megabytes, double bound) {
    std::printf("%-28.*s  %6s  %6.0f MB  %9s  %3.0f MB\n", static_cast<int>(name.size()), name.data(), "",
                megabytes, "", bound);
    return megabytes <= bound;
}

}  // namespace fi::bench
