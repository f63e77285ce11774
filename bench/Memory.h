// The memory of a program that measures itself.
#pragma once

#include <sys/resource.h>

#include <fstream>
#include <string>

/// Its peak so far, in MB.
inline double PeakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// A line of a "status" file in /proc that is told in kB, with its colon; 0 where it is not there.
inline double StatusKilobytes(const std::string& key, const std::string& folder = "/proc/self") {
    std::ifstream status(folder + "/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == key && status >> kilobytes) {
            return kilobytes;
        }
    }
    return 0;
}
