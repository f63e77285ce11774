// Peak memory of a program that measures itself.
#pragma once

#include <sys/resource.h>

/// Of the process so far, in MB.
inline double PeakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}
